#pragma once

// Classes of characters, whatever the locale is.

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

} // namespace ccrypto
