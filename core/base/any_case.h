#pragma once

#include "core/base/ascii.h"

#include <algorithm>
#include <string_view>

namespace ccrypto {

/// Whether two names are the same but for the case of their ASCII letters.
inline bool SameInAnyCase(std::string_view left, std::string_view right)
{
    return std::ranges::equal(left, right, {}, ToSmall, ToSmall);
}

} // namespace ccrypto
