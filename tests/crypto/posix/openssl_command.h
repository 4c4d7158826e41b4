#pragma once

#include "tests/crypto/base/test_bytes.h"
#include "tests/support/temporary_directory.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
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

/// The hexadecimal digits of what `openssl ARGUMENTS` prints, in small letters.
inline std::string DigitsOfOpenSSL(const std::string& arguments)
{
    struct ClosePipe {
        void operator()(FILE* pipe) const { pclose(pipe); }
    };
    const std::unique_ptr<FILE, ClosePipe> pipe(popen(("openssl " + arguments + " 2>/dev/null").c_str(), "r"));
    std::string digits;
    for (int character = std::fgetc(pipe.get()); character != EOF; character = std::fgetc(pipe.get()))
        if (std::isxdigit(character) != 0)
            digits += static_cast<char>(std::tolower(character));
    return digits;
}

} // namespace ccrypto
