#pragma once

#include "crypto/ec/montgomery_field.h"

namespace ccrypto {

/// Square roots modulo an odd prime by the algorithm of Tonelli and Shanks. The time depends on the numbers: they are public.
template <std::size_t N>
class SquareRoot {
public:
    using Element = Limbs<N>;

    /// The field is copied, but not its modulus.
    explicit SquareRoot(const MontgomeryField<N>& field) : field_(field)
    {
        // p - 1 = 2^twos_ * odd.
        Element odd = field.modulus().value;
        odd[0] -= 1;
        for (; (odd[0] & 1) == 0; ++twos_)
            halve(odd);
        halfOdd_ = odd;
        halve(halfOdd_);
        // Where p is 3 modulo 4, a square has the odd order that needs no root of unity.
        if (twos_ == 1)
            return;
        Element nonSquare = field_.add(field_.one(), field_.one());
        while (isSquare(nonSquare))
            nonSquare = field_.add(nonSquare, field_.one());
        unity_ = field_.power(nonSquare, odd);
    }

    /// One of the two roots of `square`, both in Montgomery form. \return false for 0 and when there is no root.
    [[nodiscard]] bool find(Element& root, const Element& square) const
    {
        const Element half = field_.power(square, halfOdd_);
        root = field_.multiply(square, half);
        // root^2 = square * rest, and the order of `rest` is a power of two: it is brought down to 1 by powers of `unity`, whose
        // order is 2^limit.
        Element rest = field_.multiply(root, half);
        Element unity = unity_;
        for (std::size_t limit = twos_; rest != field_.one();) {
            std::size_t order = 0;
            for (Element power = rest; order < limit && power != field_.one(); ++order)
                power = field_.square(power);
            if (order == limit)
                return false;
            for (std::size_t i = order + 1; i < limit; ++i)
                unity = field_.square(unity);
            root = field_.multiply(root, unity);
            unity = field_.square(unity);
            rest = field_.multiply(rest, unity);
            limit = order;
        }
        return true;
    }

private:
    static void halve(Element& number)
    {
        for (std::size_t i = 0; i < N; ++i)
            number[i] = number[i] >> 1 | (i + 1 < N ? number[i + 1] << 63 : 0);
    }

    bool isSquare(const Element& number) const
    {
        Element half = field_.modulus().value;
        halve(half);
        return field_.power(number, half) == field_.one();
    }

    MontgomeryField<N> field_;
    std::size_t twos_ = 0;
    Element halfOdd_{}; ///< (odd - 1) / 2
    Element unity_{};   ///< of order 2^twos_
};

} // namespace ccrypto
