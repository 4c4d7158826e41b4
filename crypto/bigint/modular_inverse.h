#pragma once

#include "crypto/bigint/fixed_limbs.h"

namespace ccrypto {

/// 1 / number mod `modulus`, which is odd and has no factor in common with it; 0 for 0. `negative` is -1 / modulus mod 2^64. The
/// time depends on N alone, which is one of those of the curves.
template <std::size_t N>
Limbs<N> ModularInverse(const Limbs<N>& number, const Limbs<N>& modulus, std::uint64_t negative);

} // namespace ccrypto
