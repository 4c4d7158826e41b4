#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace ccrypto {

/// A new empty folder that goes, with all it holds, at the end of the scope.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }
    /// Makes an empty file and, where they are missing, the folders of its name. \return its full path.
    std::filesystem::path create(const std::filesystem::path& name) const;
    /// The UTF-8 path of `name` in the folder, as the library takes it.
    std::string operator/(std::u8string_view name) const;

private:
    std::filesystem::path path_;
};

} // namespace ccrypto
