#pragma once

#include "core/memory/wiped.h"
#include "crypto/bigint/limbs.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>

namespace ccrypto {

struct MontgomeryPower;

/// Arithmetic modulo an odd number above 1, in Montgomery form: a number x is stored as x R mod m, R = 2^(64 limbs()).
/// Time depends on limbs(), on the bit length of the modulus and on what a call says is public; not on numbers.
///
/// Numbers have limbs() limbs, a multiple of 8, and are below the modulus. Calls that change nothing may come from any thread.
class MontgomeryModulus {
public:
    using Limb = limbs::Limb;
    static constexpr std::uint32_t maxBits = 16384;

    /// `modulus` is odd, above 1 and not above maxBits; its bit length is public.
    explicit MontgomeryModulus(std::span<const Limb> modulus);

    std::size_t limbs() const { return limbs_; }
    /// Bits of the modulus.
    std::size_t bits() const { return bits_; }
    const Limb* modulus() const { return numbers_.data(); }
    /// 1 in Montgomery form: R mod m.
    const Limb* one() const { return numbers_.data() + limbs_; }

    /// Scratch memory of multiplications, wiped at the end.
    class Scratch {
    public:
        explicit Scratch(const MontgomeryModulus& modulus) : limbs_(2 * modulus.limbs()) {}

    private:
        friend class MontgomeryModulus;
        WipedArray<Limb> limbs_;
    };

    /// result = left * right / R; in Montgomery form, the product. One of the operands may be any number below R. `result` may be
    /// an operand.
    void multiply(Limb* result, const Limb* left, const Limb* right, Scratch& scratch) const;
    void square(Limb* result, const Limb* number, Scratch& scratch) const;
    /// Any number below R to its Montgomery form modulo m.
    void enter(Limb* result, const Limb* number, Scratch& scratch) const;
    void leave(Limb* result, const Limb* number, Scratch& scratch) const;
    void add(Limb* result, const Limb* left, const Limb* right) const;
    void subtract(Limb* result, const Limb* left, const Limb* right) const;

    /// result = number mod m in Montgomery form; the number is of any length.
    void enterWide(Limb* result, std::span<const Limb> number, Scratch& scratch) const;

    /// base^exponent, both numbers in Montgomery form; the exponent is secret, its count of limbs and `exponentBits`, above which
    /// it has no bit, are public.
    void powerMontgomery(Limb* result, const Limb* base, std::span<const Limb> exponent, std::size_t exponentBits) const;
    struct Power {
        const MontgomeryModulus* modulus;
        Limb* result;
        const Limb* base;
        std::span<const Limb> exponent;
    };
    /// Two powers as powerMontgomery computes them; moduli of one length are faster together than one after the other.
    static void PowerBothMontgomery(const Power& first, const Power& second, std::size_t exponentBits);
    /// The same for plain numbers.
    void power(Limb* result, const Limb* base, std::span<const Limb> exponent) const;
    /// The same for a public exponent above 0.
    void powerPublic(Limb* result, const Limb* base, std::uint64_t exponent) const;
    /// number^-1, of plain numbers. \return false when it does not exist, which becomes public.
    bool invert(Limb* result, const Limb* number) const;

private:
    const Limb* squareOfR() const;
    void computeSquareOfR() const;
    MontgomeryPower powerOf(Limb* result, const Limb* base, std::span<const Limb> exponent) const;

    std::size_t limbs_;
    std::size_t bits_;
    Limb negativeInverse_;     ///< -m^-1 mod 2^64
    WipedArray<Limb> numbers_; ///< m, R mod m
    /// R^2 mod m, computed when a number is first brought to Montgomery form: that takes most of the time of loading a public key,
    /// and many keys of certificates are never used.
    mutable WipedArray<Limb> squareOfR_;
    mutable std::once_flag squareOfROnce_;
};

} // namespace ccrypto
