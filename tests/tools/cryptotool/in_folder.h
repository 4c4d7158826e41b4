#pragma once

#include <filesystem>

namespace ccrypto {

/// Makes a folder the current one for a scope.
class InFolder {
public:
    explicit InFolder(const std::filesystem::path& path) : before_(std::filesystem::current_path())
    {
        std::filesystem::current_path(path);
    }
    ~InFolder() { std::filesystem::current_path(before_); }
    InFolder(const InFolder&) = delete;
    InFolder& operator=(const InFolder&) = delete;

private:
    std::filesystem::path before_;
};

} // namespace ccrypto
