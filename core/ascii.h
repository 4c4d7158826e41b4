#pragma once

// Classes of characters, whatever the locale is.

/// A space, or one of tab, line feed, vertical tab, form feed and carriage return.
constexpr bool IsBlank(char character)
{
    return character == ' ' || (character >= '\t' && character <= '\r');
}

constexpr bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}
