#pragma once

#include "tests/crypto/base/test_bytes.h"
#include "tests/support/temporary_directory.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <span>
#include <string>

namespace ccrypto {

inline void WriteBytes(const std::string& file, std::span<const std::uint8_t> bytes)
{
    std::ofstream stream(file, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

/// Nothing when the file is missing.
inline Bytes ReadBytes(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(stream), {});
}

/// Runs `openssl ARGUMENTS`. \return whether it ended with 0.
inline bool RunOpenSSL(const std::string& arguments)
{
    return std::system(("openssl " + arguments + " >/dev/null 2>&1").c_str()) == 0;
}

} // namespace ccrypto
