#pragma once

#include "crypto/base/cpu_features.h"
#include "crypto/bigint/limbs.h"

namespace ccrypto {

/// The parts of Montgomery multiplication that have a variant of their own for some processors. Counts of limbs are multiples of 8;
/// nothing may overlap.
struct MontgomeryCalls {
    /// product = left * right, 2 * count limbs.
    void (*multiply)(limbs::Limb* product, const limbs::Limb* left, const limbs::Limb* right, std::size_t count);
    void (*square)(limbs::Limb* product, const limbs::Limb* number, std::size_t count);
    /// result = product / R mod m, for a product below m R; overwrites the product.
    void (*reduce)(limbs::Limb* result, limbs::Limb* product, const limbs::Limb* modulus, limbs::Limb negativeInverse,
                   std::size_t count);
};

/// "portable" and "adx".
std::span<const Variant<MontgomeryCalls>> MontgomeryVariants();

extern const MontgomeryCalls montgomeryPortable;
extern const MontgomeryCalls montgomeryAdx;

} // namespace ccrypto
