#pragma once

#include "crypto/base/constant_time.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// Natural numbers as arrays of 64-bit limbs, lowest first, of a length the caller gives. No branch and no address
/// depends on a value: time depends on the lengths alone. A result may overwrite an operand, from its first limb on, unless said
/// otherwise.
namespace ccrypto::limbs {

using Limb = std::uint64_t;
__extension__ typedef unsigned __int128 DoubleLimb;

constexpr std::size_t bitsOfLimb = 64;

constexpr std::size_t CountFor(std::size_t bits)
{
    return (bits + bitsOfLimb - 1) / bitsOfLimb;
}

/// result = left + right. \return the carry.
Limb Add(Limb* result, const Limb* left, const Limb* right, std::size_t count);
/// result = left - right. \return the borrow.
Limb Subtract(Limb* result, const Limb* left, const Limb* right, std::size_t count);
/// number += word. \return the carry.
Limb AddWord(Limb* number, std::size_t count, Limb word);
Limb SubtractWord(Limb* number, std::size_t count, Limb word);
/// result += number * word. \return the carry.
Limb AddProduct(Limb* result, const Limb* number, std::size_t count, Limb word);
/// result -= number * word. \return the borrow.
Limb SubtractProduct(Limb* result, const Limb* number, std::size_t count, Limb word);
/// result = left * right, leftCount + rightCount limbs, overlapping neither.
void Multiply(Limb* result, const Limb* left, std::size_t leftCount, const Limb* right, std::size_t rightCount);
/// One bit to the right; `top` becomes the highest bit.
void HalveWith(Limb top, Limb* number, std::size_t count);
/// \return the bit shifted out.
Limb Double(Limb* number, std::size_t count);

constant_time::Mask IsZero(const Limb* number, std::size_t count);
constant_time::Mask Equal(const Limb* left, const Limb* right, std::size_t count);
constant_time::Mask Less(const Limb* left, const Limb* right, std::size_t count);
void CopyIf(constant_time::Mask mask, Limb* target, const Limb* source, std::size_t count);
void SwapIf(constant_time::Mask mask, Limb* left, Limb* right, std::size_t count);
/// result -= number when the mask is true. \return the borrow.
Limb SubtractIf(constant_time::Mask mask, Limb* result, const Limb* number, std::size_t count);
/// result += number when the mask is true. \return the carry.
Limb AddIf(constant_time::Mask mask, Limb* result, const Limb* number, std::size_t count);

/// remainder = number mod modulus, of modulusCount limbs; modulus is not 0. Works bit by bit, so it is for a number now and then.
void Reduce(Limb* remainder, const Limb* number, std::size_t count, const Limb* modulus, std::size_t modulusCount);
/// inverse = number^-1 mod modulus, which is odd; number < modulus. \return true when there is one: otherwise `inverse` has no
/// meaning.
constant_time::Mask Invert(Limb* inverse, const Limb* number, const Limb* modulus, std::size_t count);
/// The greatest common divisor of two numbers that are not both 0.
void Gcd(Limb* divisor, const Limb* left, const Limb* right, std::size_t count);
/// number /= divisor, which divides it and is odd.
void DivideExactly(Limb* number, std::size_t count, Limb divisor);
/// `count` bits of the number from bit `index` on, at most 63; above its end there are zeros.
Limb BitsAt(std::span<const Limb> number, std::size_t index, std::size_t count);
/// x with x * odd = 1 modulo 2^64.
Limb InverseModuloLimb(Limb odd);

/// Big-endian. The bytes fit: no more than 8 * count of them.
void FromBytes(Limb* number, std::size_t count, std::span<const std::uint8_t> bytes);
/// The lowest bytes of the number when `bytes` is too short for all.
void ToBytes(std::span<std::uint8_t> bytes, const Limb* number, std::size_t count);
/// Bits of the number without its leading zeros. The time does not depend on the number; the result does.
std::size_t BitLength(const Limb* number, std::size_t count);

} // namespace ccrypto::limbs
