#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ccrypto {

/// The log of this process while one lives, as its callback receives it; with a file where one is named. Off afterwards.
class CollectedLog {
public:
    static constexpr std::string_view tag = "collected";

    explicit CollectedLog(std::uint32_t level, const std::string& path = {}, bool profiling = false);
    ~CollectedLog();
    CollectedLog(const CollectedLog&) = delete;
    CollectedLog& operator=(const CollectedLog&) = delete;

    /// For a process logger: it hands its lines over, too.
    static void Callback(const char* line);

    void setLevel(std::uint32_t level) const;
    void clear() const;
    /// Whole lines.
    std::vector<std::string> lines() const;
    /// What follows the tag: indentation and text.
    std::vector<std::string> texts() const;
};

/// What follows the tag of a line.
std::string TextOfLine(const std::string& line, std::string_view tag);

/// What follows the tag of each line of a file.
std::vector<std::string> TextsOfFile(const std::string& path, std::string_view tag);

} // namespace ccrypto
