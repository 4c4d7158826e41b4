#pragma once

#include "core/text/element.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace ccrypto {

/// The largest code point that four UTF-8 bytes can carry, beyond what Unicode assigns.
constexpr std::uint32_t maxUtf8CodePoint = 0x1FFFFF;
constexpr std::uint32_t maxCodePoint = 0x10FFFF;

constexpr bool IsHighSurrogate(std::uint32_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool IsLowSurrogate(std::uint32_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// How many continuation bytes (0x80 to 0xBF) follow the lead byte of a sequence of several bytes; 0 for any other byte.
constexpr std::uint32_t Utf8ContinuationCount(std::uint8_t lead)
{
    if (lead < 0xC0 || lead > 0xF7)
        return 0;
    return lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
}

constexpr bool IsUtf8Continuation(std::uint8_t byte)
{
    return (byte & 0xC0) == 0x80;
}

/// How many bytes the shortest form takes.
constexpr std::uint32_t Utf8Length(std::uint32_t codePoint)
{
    return codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : codePoint < 0x10000 ? 3 : 4;
}

/// Writes the one to four bytes of a code point up to 0x1FFFFF; surrogates are encoded like any other value. \return how many.
std::uint32_t EncodeUtf8(std::uint32_t codePoint, std::uint8_t* bytes);

/// Appends one to four bytes. Surrogates are encoded like any other value. \return false, nothing appended, above 0x1FFFFF.
bool EncodeUtf8(std::uint32_t codePoint, element& target);

/// The first `maxBytes` bytes of `text`, or up to three fewer so that no character is cut.
[[nodiscard]] std::string_view Utf8Prefix(std::string_view text, std::size_t maxBytes);

/// How many bytes `units` take in UTF-8.
std::uint64_t Utf8Length(std::u16string_view units);

/// Writes `units` to Utf8Length(units) bytes. A surrogate without its partner becomes a sequence of its own.
void EncodeUtf8(std::u16string_view units, std::uint8_t* bytes);

/// Reads the character at the start of `bytes`; overlong forms are accepted.
/// \return the number of bytes it takes, 0 when they are no complete character.
[[nodiscard]] std::uint32_t DecodeUtf8(std::span<const std::uint8_t> bytes, std::uint32_t& codePoint);

} // namespace ccrypto
