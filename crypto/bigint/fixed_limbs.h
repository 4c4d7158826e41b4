#pragma once

#include "crypto/base/constant_time.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace ccrypto {

__extension__ using Word128 = unsigned __int128;
__extension__ using SignedWord128 = __int128;

/// A number of a fixed count of 64-bit limbs, the least first. What computes with them takes the same time for all values.
template <std::size_t N>
using Limbs = std::array<std::uint64_t, N>;

namespace fixed_limbs {

/// The same word, opaque to the optimiser except in a constant expression.
constexpr std::uint64_t Opaque(std::uint64_t word)
{
    if (std::is_constant_evaluated())
        return word;
    return constant_time::Barrier(word);
}

/// a + b + carry; `carry` is 0 or 1 before and after.
constexpr std::uint64_t AddCarry(std::uint64_t a, std::uint64_t b, std::uint64_t& carry)
{
    const Word128 sum = Word128{a} + b + carry;
    carry = static_cast<std::uint64_t>(sum >> 64);
    return static_cast<std::uint64_t>(sum);
}

/// a - b - borrow; `borrow` is 0 or 1 before and after.
constexpr std::uint64_t SubtractBorrow(std::uint64_t a, std::uint64_t b, std::uint64_t& borrow)
{
    const Word128 difference = Word128{a} - b - borrow;
    borrow = static_cast<std::uint64_t>(difference >> 64) & 1;
    return static_cast<std::uint64_t>(difference);
}

/// a + b * c + carry, whose high limb becomes the carry.
constexpr std::uint64_t MultiplyAdd(std::uint64_t a, std::uint64_t b, std::uint64_t c, std::uint64_t& carry)
{
    const Word128 sum = Word128{b} * c + a + carry;
    carry = static_cast<std::uint64_t>(sum >> 64);
    return static_cast<std::uint64_t>(sum);
}

/// \return the carry.
template <std::size_t N>
constexpr std::uint64_t Add(Limbs<N>& sum, const Limbs<N>& a, const Limbs<N>& b)
{
    std::uint64_t carry = 0;
    for (std::size_t i = 0; i < N; ++i)
        sum[i] = AddCarry(a[i], b[i], carry);
    return carry;
}

/// \return the borrow: 1 when a < b.
template <std::size_t N>
constexpr std::uint64_t Subtract(Limbs<N>& difference, const Limbs<N>& a, const Limbs<N>& b)
{
    std::uint64_t borrow = 0;
    for (std::size_t i = 0; i < N; ++i)
        difference[i] = SubtractBorrow(a[i], b[i], borrow);
    return borrow;
}

/// `yes` when `mask` is all ones, `no` when it is 0.
template <std::size_t N>
constexpr Limbs<N> Select(std::uint64_t mask, const Limbs<N>& yes, const Limbs<N>& no)
{
    mask = Opaque(mask);
    Limbs<N> chosen{};
    for (std::size_t i = 0; i < N; ++i)
        chosen[i] = no[i] ^ (mask & (yes[i] ^ no[i]));
    return chosen;
}

/// The number with `top` above its limbs, less the modulus if it is not below it; it must be below twice the modulus.
template <std::size_t N>
constexpr Limbs<N> ReduceOnce(const Limbs<N>& number, std::uint64_t top, const Limbs<N>& modulus)
{
    Limbs<N> less{};
    const std::uint64_t borrow = Subtract(less, number, modulus);
    // All ones when the difference is negative.
    return Select(0 - (borrow & (top ^ 1)), number, less);
}

template <std::size_t N>
std::uint64_t Bits(const Limbs<N>& number)
{
    std::uint64_t bits = 0;
    for (const std::uint64_t limb : number)
        bits |= limb;
    return bits;
}

/// All ones or zeros.
template <std::size_t N>
std::uint64_t IsZero(const Limbs<N>& number)
{
    return constant_time::Mask::IsZero(Bits(number)).word();
}

template <std::size_t N>
std::uint64_t Equal(const Limbs<N>& a, const Limbs<N>& b)
{
    std::uint64_t differences = 0;
    for (std::size_t i = 0; i < N; ++i)
        differences |= a[i] ^ b[i];
    return constant_time::Mask::IsZero(differences).word();
}

/// Of hexadecimal digits, at compile time.
template <std::size_t N>
consteval Limbs<N> FromHex(const char* digits)
{
    std::size_t count = 0;
    while (digits[count] != 0)
        ++count;
    if (count > 16 * N)
        throw "too long";
    Limbs<N> number{};
    for (std::size_t i = 0; i < count; ++i) {
        const char c = digits[count - 1 - i];
        const int value = c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : throw "not a digit";
        number[i / 16] |= static_cast<std::uint64_t>(value) << (i % 16 * 4);
    }
    return number;
}

} // namespace fixed_limbs

/// 1 / number mod `modulus`, which is odd and has no factor in common with it; 0 for 0. `negative` is -1 / modulus mod 2^64. The
/// time depends on N alone, which is one of those of the curves.
template <std::size_t N>
[[nodiscard]] Limbs<N> ModularInverse(const Limbs<N>& number, const Limbs<N>& modulus, std::uint64_t negative);

} // namespace ccrypto
