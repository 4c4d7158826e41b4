#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace ccrypto {

/// A file of bytes, its name in UTF-8.
inline std::filesystem::path FilePath(const std::string& name)
{
    return {std::u8string(name.begin(), name.end())};
}

inline void PutFile(const std::string& name, std::string_view bytes)
{
    std::ofstream(FilePath(name), std::ios::binary) << bytes;
}

/// Empty for a file that is missing.
inline std::string GetFile(const std::string& name)
{
    std::ifstream file(FilePath(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace ccrypto
