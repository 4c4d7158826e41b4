#pragma once

#include <string>
#include <vector>

namespace ccrypto {

/// A folder of empty files that lives as long as the object.
class TemporaryFiles {
public:
    TemporaryFiles();
    ~TemporaryFiles();
    TemporaryFiles(const TemporaryFiles&) = delete;
    TemporaryFiles& operator=(const TemporaryFiles&) = delete;

    /// Makes the file, and the one folder its name may lie in. \return its full path.
    std::wstring create(const std::wstring& name);

private:
    std::wstring folder_;
    std::vector<std::wstring> files_;
    std::vector<std::wstring> folders_;
};

} // namespace ccrypto
