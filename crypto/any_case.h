#pragma once

#include <algorithm>
#include <string_view>

/// Whether two names are the same but for the case of their ASCII letters.
inline bool SameInAnyCase(std::string_view left, std::string_view right)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
    return std::ranges::equal(left, right, {}, lower, lower);
}
