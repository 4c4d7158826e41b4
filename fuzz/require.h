#pragma once

#include <cstdlib>

namespace ccrypto {

/// Ends a fuzz target whose input broke a promise of the library.
inline void Require(bool holds)
{
    if (!holds)
        std::abort();
}

} // namespace ccrypto
