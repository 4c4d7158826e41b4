#pragma once

#include "crypto/bigint/fixed_limbs.h"
#include "crypto/ec/curve_domains.h"

namespace ccrypto {

/// Numbers modulo p = 2^521 - 1, below it, as they are: since 2^521 is 1, a product is reduced by adding its halves, which is less
/// work than Montgomery's reduction. This is the portable field of JacobianPoints; a variant overrides the costly operations.
struct Prime521Field {
    static constexpr std::size_t limbCount = 9;
    using Element = Limbs<limbCount>;
    static constexpr const Modulus<limbCount>& modulus = curve_domains::secp521r1.p;
    static constexpr std::uint64_t topMask = (std::uint64_t{1} << 9) - 1;

    [[gnu::noinline]] static Element multiply(const Element& x, const Element& y)
    {
        std::array<std::uint64_t, 2 * limbCount> product{};
        for (std::size_t i = 0; i < limbCount; ++i)
            for (std::size_t j = 0; j < limbCount; ++j)
                product[i + j] = fixed_limbs::MultiplyAdd(product[i + j], x[j], y[i], product[i + limbCount]);

        Element low;
        Element high;
        for (std::size_t i = 0; i < limbCount; ++i) {
            low[i] = product[i];
            high[i] = product[i + 8] >> 9 | product[i + 9] << 55;
        }
        low[8] &= topMask;
        return add(low, high);
    }

    static Element square(const Element& x) { return multiply(x, x); }

    /// Of two numbers up to p that are not both p.
    static Element add(const Element& x, const Element& y)
    {
        // The bit 521 of the sum and 1 says whether the sum is p or more. If so, what is left of it is the sum less p; if not, the
        // 1 goes again.
        Element sum;
        std::uint64_t carry = 1;
        for (std::size_t i = 0; i < limbCount; ++i)
            sum[i] = fixed_limbs::AddCarry(x[i], y[i], carry);
        std::uint64_t borrow = fixed_limbs::Opaque(sum[8] >> 9 ^ 1);
        sum[8] &= topMask;
        return less(sum, borrow);
    }

    static Element subtract(const Element& x, const Element& y)
    {
        Element difference;
        const std::uint64_t borrow = fixed_limbs::Opaque(fixed_limbs::Subtract(difference, x, y));
        // Cutting a negative difference adds 2^521, which is 1 more than p.
        difference[8] &= topMask;
        return less(difference, borrow);
    }

    static Element twice(const Element& x) { return add(x, x); }

    /// A rotation: the lowest bit stands for 2^521, too.
    static Element half(const Element& x)
    {
        Element result;
        for (std::size_t i = 0; i < limbCount; ++i)
            result[i] = x[i] >> 1 | (i + 1 < limbCount ? x[i + 1] << 63 : x[0] << 63 >> 55);
        return result;
    }

    static constexpr Element one() { return {1}; }
    static const Element& enter(const Element& number) { return number; }
    static const Element& leave(const Element& number) { return number; }
    static Element invert(const Element& x) { return ModularInverse<limbCount>(x, modulus.value, modulus.negative); }

private:
    static Element less(const Element& number, std::uint64_t borrow)
    {
        Element result;
        for (std::size_t i = 0; i < limbCount; ++i)
            result[i] = fixed_limbs::SubtractBorrow(number[i], 0, borrow);
        return result;
    }
};

} // namespace ccrypto
