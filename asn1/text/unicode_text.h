#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

// What JSON (RFC 8259) and XML 1.0 allow as text. UTF-8 is meant strictly here: no overlong form, no surrogate, nothing above
// U+10FFFF.

namespace ccrypto {

/// The character at the start of `text`. \return how many bytes it takes; 0 at the end and for bytes that are not a character.
std::size_t ReadCharacter(std::string_view text, std::uint32_t& codePoint);
bool IsUtf8(std::string_view text);
bool IsAscii(std::string_view text);

/// A character that may stand in an XML document (XML 1.0, 2.2).
bool IsXmlCharacter(std::uint32_t codePoint);
/// UTF-8 of such characters alone.
bool IsXmlText(std::string_view text);
/// How many bytes of the start of `text` are an XML name (XML 1.0, 2.3); 0 when none.
std::size_t XmlNameLength(std::string_view text);
bool IsXmlName(std::string_view text);

constexpr bool IsXmlBlank(char character)
{
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}
/// Nothing but blanks, or nothing at all.
bool IsXmlBlank(std::string_view text);

} // namespace ccrypto
