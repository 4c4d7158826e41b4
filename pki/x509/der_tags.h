#pragma once

#include <cstdint>

/// Identifier octets (X.690, 8.1.2) for what walks octets with a DerCursor. All numbers are below 31.
namespace ccrypto::der_tag {

inline constexpr std::uint8_t boolean = 0x01;
inline constexpr std::uint8_t integer = 0x02;
inline constexpr std::uint8_t bitString = 0x03;
inline constexpr std::uint8_t octetString = 0x04;
inline constexpr std::uint8_t null = 0x05;
inline constexpr std::uint8_t objectIdentifier = 0x06;
inline constexpr std::uint8_t enumerated = 0x0A;
inline constexpr std::uint8_t utf8String = 0x0C;
inline constexpr std::uint8_t ia5String = 0x16;
inline constexpr std::uint8_t utcTime = 0x17;
inline constexpr std::uint8_t generalizedTime = 0x18;
inline constexpr std::uint8_t sequence = 0x30;
inline constexpr std::uint8_t set = 0x31;

/// Of an IMPLICIT context-specific tag over a primitive type.
[[nodiscard]] constexpr std::uint8_t Primitive(std::uint8_t number)
{
    return static_cast<std::uint8_t>(0x80 | number);
}

/// Of an EXPLICIT context-specific tag, and of an IMPLICIT one over a constructed type.
[[nodiscard]] constexpr std::uint8_t Constructed(std::uint8_t number)
{
    return static_cast<std::uint8_t>(0xA0 | number);
}

} // namespace ccrypto::der_tag
