#pragma once

#include "crypto/bigint/fixed_limbs.h"

#include <cstring>

namespace ccrypto {

/// Scalars as digits from -2^(width - 1) to 2^(width - 1) of the base 2^width (Booth's recoding): half as many multiples of a point
/// to choose from, since negating a point is nearly free.
struct SignedDigit {
    std::uint64_t magnitude;
    std::uint64_t negative; ///< all ones or zeros
};

/// How many digits a number of `bits` bits has.
constexpr std::size_t SignedDigitCount(std::size_t bits, std::size_t width)
{
    return bits / width + 1;
}

/// The digit of the power 2^(width * index); `width` is 7 at most. The time depends on width and index alone.
template <std::size_t N>
inline SignedDigit SignedDigitAt(const Limbs<N>& scalar, std::size_t index, std::size_t width)
{
    // The bits of the digit and the one below them.
    const std::size_t above = index * width;
    std::uint64_t window = 0;
    if (above == 0) {
        window = scalar[0] << 1;
    } else {
        const std::size_t limb = (above - 1) / 64;
        const std::size_t shift = (above - 1) % 64;
        window = limb < N ? scalar[limb] >> shift : 0;
        if (shift + width + 1 > 64 && limb + 1 < N)
            window |= scalar[limb + 1] << (64 - shift);
    }
    const std::uint64_t all = (std::uint64_t{2} << width) - 1;
    window &= all;
    const std::uint64_t negative = fixed_limbs::Opaque(0 - (window >> width));
    const std::uint64_t folded = window ^ (negative & all);
    return {(folded >> 1) + (folded & 1), negative};
}

/// Copies entry `magnitude` of a table that begins with entry 1, or fills `entry` with zeros for 0. All entries are read, so
/// neither time nor addresses depend on the magnitude.
template <std::size_t count, typename Entry>
void SelectEntry(Entry& entry, const Entry* table, std::uint64_t magnitude)
{
    using Pair [[gnu::vector_size(16)]] = std::uint64_t;
    constexpr std::size_t pairs = sizeof(Entry) / sizeof(Pair);
    static_assert(std::is_trivially_copyable_v<Entry> && sizeof(Entry) % sizeof(Pair) == 0);
    std::array<Pair, pairs> sum{};
    for (std::size_t each = 0; each < count; ++each) {
        const std::uint64_t word = constant_time::Mask::Equal(each + 1, magnitude).word();
        const Pair mask = {word, word};
        std::array<Pair, pairs> source;
        std::memcpy(&source, table + each, sizeof source);
        for (std::size_t i = 0; i < pairs; ++i)
            sum[i] |= source[i] & mask;
    }
    std::memcpy(&entry, &sum, sizeof sum);
}

/// A public scalar as digits of the base 2: odd ones from -15 to 15, no two of them within five places, and zeros. That takes fewer
/// additions than digits of a fixed width. There is one digit more than bits.
template <std::size_t N>
void SparseDigits(std::array<std::int8_t, 64 * N + 1>& digits, Limbs<N> scalar)
{
    std::uint64_t over = 0;
    for (std::int8_t& digit : digits) {
        digit = 0;
        if ((scalar[0] & 1) != 0) {
            const auto low = static_cast<std::int8_t>(scalar[0] & 31);
            digit = static_cast<std::int8_t>(low >= 16 ? low - 32 : low);
            // What is left is a multiple of 32.
            std::uint64_t carry = 0;
            scalar[0] &= ~std::uint64_t{31};
            scalar[0] = fixed_limbs::AddCarry(scalar[0], low >= 16 ? 32 : 0, carry);
            for (std::size_t i = 1; i < N; ++i)
                scalar[i] = fixed_limbs::AddCarry(scalar[i], 0, carry);
            over |= carry;
        }
        for (std::size_t i = 0; i < N; ++i)
            scalar[i] = scalar[i] >> 1 | (i + 1 < N ? scalar[i + 1] : over) << 63;
        over >>= 1;
    }
}

} // namespace ccrypto
