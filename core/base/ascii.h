#pragma once

#include <algorithm>
#include <string_view>

// Classes of ASCII characters, whatever the locale is; any other character belongs to none.

namespace ccrypto {

/// A space, or one of tab, line feed, vertical tab, form feed and carriage return.
constexpr bool IsBlank(char character)
{
    return character == ' ' || (character >= '\t' && character <= '\r');
}

constexpr bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}

constexpr bool IsCapital(char character)
{
    return character >= 'A' && character <= 'Z';
}

constexpr bool IsAsciiLetter(char character)
{
    return IsCapital(character) || (character >= 'a' && character <= 'z');
}

/// A capital letter as a small one; any other character unchanged.
constexpr char ToSmall(char character)
{
    return IsCapital(character) ? static_cast<char>(character - 'A' + 'a') : character;
}

/// Whether two names are the same but for the case of their ASCII letters.
constexpr bool SameInAnyCase(std::string_view left, std::string_view right)
{
    return std::ranges::equal(left, right, {}, ToSmall, ToSmall);
}

} // namespace ccrypto
