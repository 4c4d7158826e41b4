#include "crypto/bigint/montgomery_calls.h"

#include <algorithm>

namespace ccrypto {

using constant_time::Mask;
using limbs::Limb;

namespace {

void Multiply(Limb* product, const Limb* left, const Limb* right, std::size_t count)
{
    limbs::Multiply(product, left, count, right, count);
}

void Square(Limb* product, const Limb* number, std::size_t count)
{
    // What stands beside the diagonal counts twice.
    std::fill_n(product, 2 * count, 0);
    for (std::size_t i = 0; i + 1 < count; ++i)
        product[count + i] = limbs::AddProduct(product + 2 * i + 1, number + i + 1, count - i - 1, number[i]);
    limbs::Double(product, 2 * count);
    Limb carry = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const limbs::DoubleLimb square = limbs::DoubleLimb{number[i]} * number[i];
        limbs::DoubleLimb sum = limbs::DoubleLimb{product[2 * i]} + static_cast<Limb>(square) + carry;
        product[2 * i] = static_cast<Limb>(sum);
        sum = limbs::DoubleLimb{product[2 * i + 1]} + static_cast<Limb>(square >> 64) + static_cast<Limb>(sum >> 64);
        product[2 * i + 1] = static_cast<Limb>(sum);
        carry = static_cast<Limb>(sum >> 64);
    }
}

void Reduce(Limb* result, Limb* product, const Limb* modulus, Limb negativeInverse, std::size_t count)
{
    Limb top = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const Limb carry = limbs::AddProduct(product + i, modulus, count, product[i] * negativeInverse);
        const limbs::DoubleLimb sum = limbs::DoubleLimb{product[i + count]} + carry + top;
        product[i + count] = static_cast<Limb>(sum);
        top = static_cast<Limb>(sum >> 64);
    }
    const Limb borrow = limbs::Subtract(result, product + count, modulus, count);
    limbs::CopyIf(Mask::Less(top, borrow), result, product + count, count);
}

} // namespace

const MontgomeryCalls montgomeryPortable = {Multiply, Square, Reduce};

} // namespace ccrypto
