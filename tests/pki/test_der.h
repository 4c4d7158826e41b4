#pragma once

#include "asn1/types/oid.h"
#include "tests/crypto/base/test_bytes.h"

#include <cstdint>
#include <string_view>

// DER made by hand, so that tests do not lean on what they test.

namespace ccrypto {

namespace der {

constexpr std::uint8_t boolean = 0x01;
constexpr std::uint8_t integer = 0x02;
constexpr std::uint8_t bitString = 0x03;
constexpr std::uint8_t octetString = 0x04;
constexpr std::uint8_t null = 0x05;
constexpr std::uint8_t oid = 0x06;
constexpr std::uint8_t enumerated = 0x0A;
constexpr std::uint8_t utf8String = 0x0C;
constexpr std::uint8_t sequence = 0x30;
constexpr std::uint8_t set = 0x31;
constexpr std::uint8_t printableString = 0x13;
constexpr std::uint8_t utcTime = 0x17;
constexpr std::uint8_t generalizedTime = 0x18;

/// The tag [number], of a primitive or constructed element.
constexpr std::uint8_t Context(std::uint8_t number, bool constructed = true)
{
    return static_cast<std::uint8_t>((constructed ? 0xA0 : 0x80) + number);
}

} // namespace der

/// One element of DER, its length in as few octets as it takes.
inline Bytes Tlv(std::uint8_t identifier, const Bytes& content)
{
    Bytes length;
    for (std::size_t rest = content.size(); rest != 0; rest >>= 8)
        length.insert(length.begin(), static_cast<std::uint8_t>(rest));
    if (content.size() > 0x7F)
        length.insert(length.begin(), static_cast<std::uint8_t>(0x80 + length.size()));
    else if (length.empty())
        length = {0};
    return Joined({{identifier}, length, content});
}

inline Bytes Tlv(std::uint8_t identifier, std::initializer_list<Bytes> parts)
{
    return Tlv(identifier, Joined(parts));
}

inline Bytes TextBytes(std::string_view text)
{
    return {text.begin(), text.end()};
}

inline Bytes OidTlv(std::string_view dotted)
{
    const Oid oid = Oid::FromDotted(dotted);
    return Tlv(der::oid, {oid.octets().begin(), oid.octets().end()});
}

/// A number that is not negative, in as few octets as it takes.
inline Bytes NumberTlv(std::uint64_t number, std::uint8_t identifier = der::integer)
{
    Bytes octets;
    do {
        octets.insert(octets.begin(), static_cast<std::uint8_t>(number));
        number >>= 8;
    } while (number != 0);
    if (octets.front() >= 0x80)
        octets.insert(octets.begin(), 0);
    return Tlv(identifier, octets);
}

} // namespace ccrypto
