#include "crypto/bigint/limbs.h"

#include "core/memory/wiped.h"

#include <algorithm>
#include <cstring>

namespace ccrypto::limbs {

using constant_time::Mask;

Limb Add(Limb* result, const Limb* left, const Limb* right, std::size_t count)
{
    Limb carry = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const DoubleLimb sum = DoubleLimb{left[i]} + right[i] + carry;
        result[i] = static_cast<Limb>(sum);
        carry = static_cast<Limb>(sum >> bitsOfLimb);
    }
    return carry;
}

Limb Subtract(Limb* result, const Limb* left, const Limb* right, std::size_t count)
{
    Limb borrow = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const DoubleLimb difference = DoubleLimb{left[i]} - right[i] - borrow;
        result[i] = static_cast<Limb>(difference);
        borrow = static_cast<Limb>(difference >> bitsOfLimb) & 1;
    }
    return borrow;
}

Limb AddWord(Limb* number, std::size_t count, Limb word)
{
    for (std::size_t i = 0; i < count; ++i) {
        const DoubleLimb sum = DoubleLimb{number[i]} + word;
        number[i] = static_cast<Limb>(sum);
        word = static_cast<Limb>(sum >> bitsOfLimb);
    }
    return word;
}

Limb SubtractWord(Limb* number, std::size_t count, Limb word)
{
    for (std::size_t i = 0; i < count; ++i) {
        const DoubleLimb difference = DoubleLimb{number[i]} - word;
        number[i] = static_cast<Limb>(difference);
        word = static_cast<Limb>(difference >> bitsOfLimb) & 1;
    }
    return word;
}

Limb AddProduct(Limb* result, const Limb* number, std::size_t count, Limb word)
{
    Limb carry = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const DoubleLimb sum = DoubleLimb{number[i]} * word + result[i] + carry;
        result[i] = static_cast<Limb>(sum);
        carry = static_cast<Limb>(sum >> bitsOfLimb);
    }
    return carry;
}

Limb SubtractProduct(Limb* result, const Limb* number, std::size_t count, Limb word)
{
    Limb borrow = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const DoubleLimb product = DoubleLimb{number[i]} * word + borrow;
        const DoubleLimb difference = DoubleLimb{result[i]} - static_cast<Limb>(product);
        result[i] = static_cast<Limb>(difference);
        borrow = static_cast<Limb>(product >> bitsOfLimb) + (static_cast<Limb>(difference >> bitsOfLimb) & 1);
    }
    return borrow;
}

void Multiply(Limb* result, const Limb* left, std::size_t leftCount, const Limb* right, std::size_t rightCount)
{
    std::fill_n(result, leftCount + rightCount, 0);
    for (std::size_t i = 0; i < rightCount; ++i)
        result[leftCount + i] = AddProduct(result + i, left, leftCount, right[i]);
}

void HalveWith(Limb top, Limb* number, std::size_t count)
{
    for (std::size_t i = count; i-- > 0;) {
        const Limb out = number[i] & 1;
        number[i] = number[i] >> 1 | top << (bitsOfLimb - 1);
        top = out;
    }
}

Limb Double(Limb* number, std::size_t count)
{
    return Add(number, number, number, count);
}

Mask IsZero(const Limb* number, std::size_t count)
{
    Limb ones = 0;
    for (std::size_t i = 0; i < count; ++i)
        ones |= constant_time::Barrier(number[i]);
    return Mask::IsZero(ones);
}

Mask Equal(const Limb* left, const Limb* right, std::size_t count)
{
    Limb differences = 0;
    for (std::size_t i = 0; i < count; ++i)
        differences |= constant_time::Barrier(left[i] ^ right[i]);
    return Mask::IsZero(differences);
}

Mask Less(const Limb* left, const Limb* right, std::size_t count)
{
    Limb borrow = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const DoubleLimb difference = DoubleLimb{left[i]} - right[i] - borrow;
        borrow = static_cast<Limb>(difference >> bitsOfLimb) & 1;
    }
    return Mask::FromBit(borrow);
}

void CopyIf(Mask mask, Limb* target, const Limb* source, std::size_t count)
{
    const Limb word = mask.word();
    for (std::size_t i = 0; i < count; ++i)
        target[i] ^= (target[i] ^ source[i]) & word;
}

void SwapIf(Mask mask, Limb* left, Limb* right, std::size_t count)
{
    const Limb word = mask.word();
    for (std::size_t i = 0; i < count; ++i) {
        const Limb difference = (left[i] ^ right[i]) & word;
        left[i] ^= difference;
        right[i] ^= difference;
    }
}

Limb SubtractIf(Mask mask, Limb* result, const Limb* number, std::size_t count)
{
    const Limb word = mask.word();
    Limb borrow = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const DoubleLimb difference = DoubleLimb{result[i]} - (number[i] & word) - borrow;
        result[i] = static_cast<Limb>(difference);
        borrow = static_cast<Limb>(difference >> bitsOfLimb) & 1;
    }
    return borrow;
}

Limb AddIf(Mask mask, Limb* result, const Limb* number, std::size_t count)
{
    const Limb word = mask.word();
    Limb carry = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const DoubleLimb sum = DoubleLimb{result[i]} + (number[i] & word) + carry;
        result[i] = static_cast<Limb>(sum);
        carry = static_cast<Limb>(sum >> bitsOfLimb);
    }
    return carry;
}

void Reduce(Limb* remainder, const Limb* number, std::size_t count, const Limb* modulus, std::size_t modulusCount)
{
    WipedArray<Limb> rest(modulusCount);
    for (std::size_t i = count * bitsOfLimb; i-- > 0;) {
        const Limb out = Double(rest.data(), modulusCount);
        rest[0] |= number[i / bitsOfLimb] >> i % bitsOfLimb & 1;
        const Mask enough = Mask::FromBit(out) | ~Less(rest.data(), modulus, modulusCount);
        SubtractIf(enough, rest.data(), modulus, modulusCount);
    }
    std::copy_n(rest.data(), modulusCount, remainder);
}

// a = u * number and b = v * number modulo the modulus all the while; each round takes at least one bit off a and b together until
// a is 0, and b, which stays odd, is the greatest common divisor.
Mask Invert(Limb* inverse, const Limb* number, const Limb* modulus, std::size_t count)
{
    WipedArray<Limb> scratch(4 * count);
    Limb* a = scratch.data();
    Limb* b = a + count;
    Limb* u = b + count;
    Limb* v = u + count;
    std::copy_n(number, count, a);
    std::copy_n(modulus, count, b);
    u[0] = 1;
    for (std::size_t round = 0; round < 2 * count * bitsOfLimb; ++round) {
        const Mask odd = Mask::FromBit(a[0]);
        const Mask swapped = odd & Less(a, b, count);
        SwapIf(swapped, a, b, count);
        SwapIf(swapped, u, v, count);
        SubtractIf(odd, a, b, count);
        const Limb below = SubtractIf(odd, u, v, count);
        AddIf(Mask::FromBit(below), u, modulus, count);
        HalveWith(0, a, count);
        const Limb above = AddIf(Mask::FromBit(u[0]), u, modulus, count);
        HalveWith(above, u, count);
    }
    std::copy_n(v, count, inverse);
    const Limb one = b[0] ^ 1;
    return Mask::IsZero(one) & IsZero(b + 1, count - 1);
}

void Gcd(Limb* divisor, const Limb* left, const Limb* right, std::size_t count)
{
    WipedArray<Limb> scratch(2 * count);
    Limb* a = scratch.data();
    Limb* b = a + count;
    std::copy_n(left, count, a);
    std::copy_n(right, count, b);
    const std::size_t bits = count * bitsOfLimb;

    // The factors 2 in common come off first, and are counted; then b is the odd one.
    Limb twos = 0;
    WipedArray<Limb> half(2 * count);
    for (std::size_t round = 0; round < bits; ++round) {
        const Mask bothEven = ~Mask::FromBit(a[0] | b[0]);
        twos += bothEven.select<Limb>(1, 0);
        std::copy_n(scratch.data(), 2 * count, half.data());
        HalveWith(0, half.data(), count);
        HalveWith(0, half.data() + count, count);
        CopyIf(bothEven, scratch.data(), half.data(), 2 * count);
    }
    SwapIf(~Mask::FromBit(b[0]), a, b, count);
    for (std::size_t round = 0; round < 2 * bits; ++round) {
        const Mask odd = Mask::FromBit(a[0]);
        SwapIf(odd & Less(a, b, count), a, b, count);
        SubtractIf(odd, a, b, count);
        HalveWith(0, a, count);
    }
    for (std::size_t round = 0; round < bits; ++round) {
        std::copy_n(b, count, half.data());
        Double(half.data(), count);
        CopyIf(Mask::Less(round, twos), b, half.data(), count);
    }
    std::copy_n(b, count, divisor);
}

Limb BitsAt(std::span<const Limb> number, std::size_t index, std::size_t count)
{
    const std::size_t limb = index / bitsOfLimb;
    const std::size_t shift = index % bitsOfLimb;
    Limb bits = limb < number.size() ? number[limb] >> shift : 0;
    if (shift + count > bitsOfLimb && limb + 1 < number.size())
        bits |= number[limb + 1] << (bitsOfLimb - shift);
    return bits & ((Limb{1} << count) - 1);
}

Limb InverseModuloLimb(Limb odd)
{
    Limb inverse = odd; // right in the three lowest bits; each step doubles that
    for (int step = 0; step < 5; ++step)
        inverse *= 2 - odd * inverse;
    return inverse;
}

void DivideExactly(Limb* number, std::size_t count, Limb divisor)
{
    const Limb inverse = InverseModuloLimb(divisor);
    Limb borrow = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const DoubleLimb rest = DoubleLimb{number[i]} - borrow;
        const Limb quotient = static_cast<Limb>(rest) * inverse;
        number[i] = quotient;
        borrow = static_cast<Limb>(DoubleLimb{quotient} * divisor >> bitsOfLimb) + (static_cast<Limb>(rest >> bitsOfLimb) & 1);
    }
}

void FromBytes(Limb* number, std::size_t count, std::span<const std::uint8_t> bytes)
{
    std::fill_n(number, count, 0);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        number[i / sizeof(Limb)] |= Limb{bytes[bytes.size() - 1 - i]} << 8 * (i % sizeof(Limb));
}

void ToBytes(std::span<std::uint8_t> bytes, const Limb* number, std::size_t count)
{
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const Limb limb = i / sizeof(Limb) < count ? number[i / sizeof(Limb)] : 0;
        bytes[bytes.size() - 1 - i] = static_cast<std::uint8_t>(limb >> 8 * (i % sizeof(Limb)));
    }
}

std::size_t BitLength(const Limb* number, std::size_t count)
{
    Limb length = 0;
    for (std::size_t i = 0; i < count * bitsOfLimb; ++i)
        length = Mask::FromBit(number[i / bitsOfLimb] >> i % bitsOfLimb).select<Limb>(i + 1, length);
    return length;
}

} // namespace ccrypto::limbs
