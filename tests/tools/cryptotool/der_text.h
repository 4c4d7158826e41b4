#pragma once

#include "core/text/hex.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace ccrypto {

// DER as hexadecimal digits and PEM.

inline std::string Bytes(std::string_view hex)
{
    element bytes;
    EXPECT_TRUE(BytesFromHex(hex, bytes));
    return std::string(bytes.view());
}

inline std::string Hex(std::string_view bytes)
{
    return std::string(HexText({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}).view());
}

inline std::string Pem(std::string_view body, std::string_view begin = "X", std::string_view end = "X")
{
    return "-----BEGIN " + std::string(begin) + "-----\n" + std::string(body) + "-----END " + std::string(end) + "-----\n";
}

} // namespace ccrypto
