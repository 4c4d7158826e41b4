#pragma once

#include <functional>
#include <string>
#include <vector>

namespace ccrypto {

/// Everything the process writes while one lives: the texts of the lines, without time, numbers, tag and indentation, and without
/// the rules between operations. Logging is on with level 255 meanwhile, and off afterwards.
class CapturedLog {
public:
    /// `onLine`, when given, is called with every text, by the thread that writes it.
    explicit CapturedLog(std::function<void(const std::string&)> onLine = {});
    ~CapturedLog();
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    std::vector<std::string> texts() const;
};

} // namespace ccrypto
