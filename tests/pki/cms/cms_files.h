#pragma once

#include "tests/pki/test_der.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace ccrypto {

/// A file of tests/data/pki/cms, without the ending of its name.
inline Bytes CmsFile(const std::string& name)
{
    std::ifstream file(VECTOR_DIR "/cms/" + name + ".der", std::ios::binary);
    Bytes bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    EXPECT_FALSE(bytes.empty()) << name;
    return bytes;
}

/// Octets of hexadecimal digits; blanks are ignored.
inline Bytes HexOctets(std::string_view digits)
{
    Bytes octets;
    std::string pair;
    for (const char digit : digits) {
        if (digit == ' ')
            continue;
        pair += digit;
        if (pair.size() == 2) {
            octets.push_back(static_cast<std::uint8_t>(std::stoi(pair, nullptr, 16)));
            pair.clear();
        }
    }
    return octets;
}

} // namespace ccrypto
