#pragma once

#include "crypto/base/cpu_features.h"
#include "crypto/bigint/limbs.h"

namespace ccrypto {

/// Arithmetic with digits of 52 bits, which some processors multiply eight at a time. A number is stored as whole vectors of eight
/// digits, lowest first, each below 2^52; a set is one number for each of the moduli that are computed with side by side.
///
/// With R' = 2^(52 digits), more than four times the modulus m, factors below 2 m give products below 2 m, so that none has to be
/// reduced (S. Gueron, "Efficient software implementations of modular exponentiation", 2012).
struct DigitCalls {
    static constexpr std::size_t bitsOfDigit = 52;
    static constexpr std::size_t digitsOfVector = 8;
    static constexpr std::size_t windowBits = 5;
    static constexpr std::size_t tableEntries = std::size_t{1} << windowBits;

    /// Digits of a number of so many limbs below 2 m.
    static constexpr std::size_t Digits(std::size_t limbs)
    {
        return (limbs * limbs::bitsOfLimb + 2 + bitsOfDigit - 1) / bitsOfDigit;
    }
    static constexpr std::size_t Vectors(std::size_t limbs) { return (Digits(limbs) + digitsOfVector - 1) / digitsOfVector; }

    std::size_t limbs;  ///< of each modulus
    std::size_t moduli; ///< computed with side by side: 1 or 2

    /// result = left * right / R' for each modulus; `result` may be a factor. \param inverses -m^-1 mod 2^52 for each modulus.
    void (*multiply)(limbs::Limb* result, const limbs::Limb* left, const limbs::Limb* right, const limbs::Limb* modulus,
                     const limbs::Limb* inverses);
    /// For each modulus its number in the set of the table that its index names; all of the table's sets are read.
    void (*gather)(limbs::Limb* result, const limbs::Limb* table, const limbs::Limb* indexes);
};

/// A power modulo an odd number, in Montgomery form with R = 2^(64 limbs).
struct MontgomeryPower {
    limbs::Limb* result;
    const limbs::Limb* base;
    std::span<const limbs::Limb> exponent; ///< secret; its count of limbs is public
    const limbs::Limb* modulus;
    const limbs::Limb* one;      ///< R mod m
    limbs::Limb negativeInverse; ///< -m^-1 mod 2^64
};

/// Variants of DigitCalls: "none", which is empty, and "ifma".
std::span<const Variant<std::span<const DigitCalls>>> DigitVariants();

/// The calls of `variant` for moduli of so many limbs, so many side by side; null when it has none.
const DigitCalls* FindDigitCalls(std::span<const DigitCalls> variant, std::size_t limbs, std::size_t moduli);

/// Raises as many powers as `calls` compute with side by side; above `exponentBits` no exponent has a bit.
void RaiseWithDigits(const DigitCalls& calls, std::span<const MontgomeryPower> powers, std::size_t exponentBits);

extern const std::span<const DigitCalls> digitsWithIfma;

} // namespace ccrypto
