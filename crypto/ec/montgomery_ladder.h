#pragma once

#include "core/memory/wiped.h"
#include "crypto/bigint/fixed_limbs.h"

#include <algorithm>

namespace ccrypto {

/// The function of RFC 7748, 5 over a field with
///     Element (an array of limbs)  bits  bytes  a24  multiply  square  multiplyAdd  add  subtract  load  store  invert
/// where add and subtract accept products, and multiply, square and multiplyAdd accept their results.
/// `result` and `point` are Field::bytes long, and so is `scalar`, which is clamped already. The time does not depend on them.
/// \return all ones when the result is zero.
template <typename Field>
std::uint64_t MontgomeryLadder(std::uint8_t* result, const std::uint8_t* scalar, const std::uint8_t* point)
{
    using Element = typename Field::Element;
    struct State {
        Element x2, z2, x3, z3;
    };
    const Element x1 = Field::load(point);
    Wiped<State> s{};
    s.x2[0] = 1;
    s.x3 = x1;
    s.z3[0] = 1;

    std::uint64_t swapped = 0;
    for (std::size_t bit = Field::bits; bit-- > 0;) {
        const std::uint64_t wanted = 0 - (std::uint64_t{scalar[bit / 8]} >> (bit % 8) & 1);
        const std::uint64_t mask = fixed_limbs::Opaque(swapped ^ wanted);
        swapped = wanted;
        for (std::size_t i = 0; i < s.x2.size(); ++i) {
            const std::uint64_t x = (s.x2[i] ^ s.x3[i]) & mask;
            const std::uint64_t z = (s.z2[i] ^ s.z3[i]) & mask;
            s.x2[i] ^= x;
            s.x3[i] ^= x;
            s.z2[i] ^= z;
            s.z3[i] ^= z;
        }

        const Element a = Field::add(s.x2, s.z2);
        const Element b = Field::subtract(s.x2, s.z2);
        const Element c = Field::add(s.x3, s.z3);
        const Element d = Field::subtract(s.x3, s.z3);
        const Element da = Field::multiply(d, a);
        const Element cb = Field::multiply(c, b);
        const Element aa = Field::square(a);
        const Element bb = Field::square(b);
        const Element e = Field::subtract(aa, bb);
        s.x3 = Field::square(Field::add(da, cb));
        s.z3 = Field::multiply(x1, Field::square(Field::subtract(da, cb)));
        s.x2 = Field::multiply(aa, bb);
        s.z2 = Field::multiply(e, Field::multiplyAdd(e, Field::a24, aa));
    }
    // The scalar's lowest bit is 0 after clamping, so nothing is left swapped.
    Field::store(result, Field::multiply(s.x2, Field::invert(s.z2)));

    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < Field::bytes; ++i)
        bits |= result[i];
    return constant_time::Mask::IsZero(bits).word();
}

} // namespace ccrypto
