#pragma once

#include "crypto/bigint/fixed_limbs.h"

namespace ccrypto {

template <std::size_t N>
struct Modulus;
template <std::size_t N>
constexpr Limbs<N> MontgomeryProduct(const Limbs<N>& a, const Limbs<N>& b, const Modulus<N>& modulus);

/// An odd modulus of at most 64 * N bits and the constants of Montgomery's arithmetic; R is 2^(64 * N).
template <std::size_t N>
struct Modulus {
    Limbs<N> value{};
    Limbs<N> one{};             ///< R mod m
    Limbs<N> square{};          ///< R^2 mod m
    Limbs<N> cube{};            ///< R^3 mod m
    std::uint64_t negative = 0; ///< -1 / m mod 2^64
    std::uint32_t bits = 0;     ///< of the modulus

    constexpr explicit Modulus(const Limbs<N>& number) : value(number)
    {
        // Newton's iteration doubles the bits that are right; m is its own inverse modulo 8.
        std::uint64_t inverse = number[0];
        for (int i = 0; i < 5; ++i)
            inverse *= 2 - number[0] * inverse;
        negative = 0 - inverse;

        bits = 64 * N;
        while ((number[(bits - 1) / 64] >> ((bits - 1) % 64) & 1) == 0)
            --bits;

        // Few steps, since some compilers count them: from the highest power of two below m by doublings to R and R * 2^N, which
        // stands for 2^N, and by squarings to what stands for 2^(64 * N).
        one[(bits - 1) / 64] = std::uint64_t{1} << ((bits - 1) % 64);
        for (std::size_t i = bits - 1; i < 64 * N; ++i)
            one = doubled(one);
        square = one;
        for (std::size_t i = 0; i < N; ++i)
            square = doubled(square);
        for (int i = 0; i < 6; ++i)
            square = MontgomeryProduct(square, square, *this);
        cube = MontgomeryProduct(square, square, *this);
    }

private:
    constexpr Limbs<N> doubled(const Limbs<N>& number) const
    {
        Limbs<N> sum{};
        const std::uint64_t carry = fixed_limbs::Add(sum, number, number);
        return fixed_limbs::ReduceOnce(sum, carry, value);
    }
};

/// a * b / R mod m, for a and b below m.
template <std::size_t N>
[[gnu::always_inline]] constexpr Limbs<N> MontgomeryProduct(const Limbs<N>& a, const Limbs<N>& b, const Modulus<N>& modulus)
{
    Limbs<N> t{};
    std::uint64_t top = 0;
    for (std::size_t i = 0; i < N; ++i) {
        std::uint64_t carry = 0;
        for (std::size_t j = 0; j < N; ++j)
            t[j] = fixed_limbs::MultiplyAdd(t[j], a[j], b[i], carry);
        std::uint64_t over = 0;
        const std::uint64_t high = fixed_limbs::AddCarry(top, carry, over);

        const std::uint64_t factor = t[0] * modulus.negative;
        carry = 0;
        static_cast<void>(fixed_limbs::MultiplyAdd(t[0], factor, modulus.value[0], carry));
        for (std::size_t j = 1; j < N; ++j)
            t[j - 1] = fixed_limbs::MultiplyAdd(t[j], factor, modulus.value[j], carry);
        std::uint64_t overAgain = 0;
        t[N - 1] = fixed_limbs::AddCarry(high, carry, overAgain);
        top = over + overAgain;
    }
    return fixed_limbs::ReduceOnce(t, top, modulus.value);
}

/// The same for the moduli of the curves, out of line: where saving a call is not worth the size of many copies.
template <std::size_t N>
Limbs<N> MontgomeryMultiply(const Limbs<N>& a, const Limbs<N>& b, const Modulus<N>& modulus);

/// Numbers modulo a prime in Montgomery form, x * R mod m, below m.
template <std::size_t N>
class MontgomeryField {
public:
    using Element = Limbs<N>;
    static constexpr std::size_t limbCount = N;

    /// The modulus is not owned.
    constexpr explicit MontgomeryField(const Modulus<N>& modulus) : modulus_(modulus) {}

    const Modulus<N>& modulus() const { return modulus_; }
    const Element& one() const { return modulus_.one; }
    Element multiply(const Element& a, const Element& b) const { return MontgomeryMultiply(a, b, modulus_); }
    Element square(const Element& a) const { return multiply(a, a); }
    Element add(const Element& a, const Element& b) const
    {
        Element sum;
        const std::uint64_t carry = fixed_limbs::Add(sum, a, b);
        return fixed_limbs::ReduceOnce(sum, carry, modulus_.value);
    }
    Element subtract(const Element& a, const Element& b) const
    {
        Element difference;
        const std::uint64_t mask = fixed_limbs::Opaque(0 - fixed_limbs::Subtract(difference, a, b));
        std::uint64_t carry = 0;
        for (std::size_t i = 0; i < N; ++i)
            difference[i] = fixed_limbs::AddCarry(difference[i], modulus_.value[i] & mask, carry);
        return difference;
    }
    Element half(const Element& a) const
    {
        const std::uint64_t odd = fixed_limbs::Opaque(0 - (a[0] & 1));
        Element sum;
        std::uint64_t carry = 0;
        for (std::size_t i = 0; i < N; ++i)
            sum[i] = fixed_limbs::AddCarry(a[i], modulus_.value[i] & odd, carry);
        for (std::size_t i = 0; i < N; ++i)
            sum[i] = sum[i] >> 1 | (i + 1 < N ? sum[i + 1] : carry) << 63;
        return sum;
    }
    Element negate(const Element& a) const { return subtract(Element{}, a); }
    /// 0 for 0.
    Element invert(const Element& a) const
    {
        return multiply(ModularInverse<N>(a, modulus_.value, modulus_.negative), modulus_.cube);
    }
    /// `number` may be up to 2^(64 * N) - 1.
    Element enter(const Element& number) const { return multiply(number, modulus_.square); }
    /// The number itself, below m.
    Element leave(const Element& a) const { return multiply(a, Element{1}); }
    /// a to the power of `exponent`, which is public.
    Element power(const Element& a, const Limbs<N>& exponent) const
    {
        Element result = one();
        for (std::size_t bit = 64 * N; bit-- > 0;) {
            result = square(result);
            if ((exponent[bit / 64] >> (bit % 64) & 1) != 0)
                result = multiply(result, a);
        }
        return result;
    }

private:
    const Modulus<N>& modulus_;
};

} // namespace ccrypto
