#include "crypto/bigint/montgomery_digits.h"

#include <immintrin.h>

// IFMA multiplies eight digits of 52 bits by another eight and adds the low or the high half of each product to a sum of 64 bits.
// The sums keep their carries until the end of a multiplication. Each of its steps waits for the one before it: with two moduli,
// such as the primes of an RSA key, one computes while the other waits.
//
// This file is compiled for processors with these instructions: it uses no inline function that other files use, too.

using namespace ccrypto;

using limbs::Limb;

namespace {

constexpr std::size_t lanes = DigitCalls::digitsOfVector;
constexpr Limb digitMask = (Limb{1} << DigitCalls::bitsOfDigit) - 1;

[[gnu::always_inline]] inline __m512i Load(const Limb* from)
{
    return _mm512_loadu_si512(from);
}

[[gnu::always_inline]] inline __m512i Repeat(Limb digit)
{
    return _mm512_set1_epi64(static_cast<long long>(digit));
}

/// Stores the sums with every digit below 2^52.
template <std::size_t vectors>
[[gnu::always_inline]] inline void StoreCarried(Limb* result, const __m512i (&sums)[vectors])
{
    const __m512i mask = Repeat(digitMask);
    __m512i sum[vectors];
    __m512i below = _mm512_setzero_si512();
    std::uint64_t over = 0; // a bit for each digit that carries in any case,
    std::uint64_t full = 0; // and for each that carries when one comes to it
#pragma GCC unroll 8
    for (std::size_t v = 0; v < vectors; ++v) {
        const __m512i carry = _mm512_srli_epi64(sums[v], DigitCalls::bitsOfDigit);
        sum[v] = _mm512_add_epi64(_mm512_and_si512(sums[v], mask), _mm512_alignr_epi64(carry, below, lanes - 1));
        below = carry;
        over |= std::uint64_t{_mm512_cmpgt_epu64_mask(sum[v], mask)} << v * lanes;
        full |= std::uint64_t{_mm512_cmpeq_epi64_mask(sum[v], mask)} << v * lanes;
    }
    const std::uint64_t carried = (2 * over + full) ^ full;
#pragma GCC unroll 8
    for (std::size_t v = 0; v < vectors; ++v) {
        const __mmask8 taken = static_cast<__mmask8>(carried >> v * lanes);
        const __m512i digits = _mm512_mask_add_epi64(sum[v], taken, sum[v], Repeat(1));
        _mm512_storeu_si512(result + v * lanes, _mm512_and_si512(digits, mask));
    }
}

template <std::size_t limbCount, std::size_t moduli>
void Multiply(Limb* result, const Limb* left, const Limb* right, const Limb* modulus, const Limb* inverses)
{
    constexpr std::size_t digits = DigitCalls::Digits(limbCount);
    constexpr std::size_t vectors = DigitCalls::Vectors(limbCount);
    constexpr std::size_t stride = vectors * lanes;
    const __m512i zero = _mm512_setzero_si512();
    __m512i sum[moduli][vectors];
    __m512i inverse[moduli];
    for (std::size_t p = 0; p < moduli; ++p) {
        inverse[p] = Repeat(inverses[p]);
        for (std::size_t v = 0; v < vectors; ++v)
            sum[p][v] = _mm512_madd52lo_epu64(zero, Load(left + p * stride + v * lanes), Repeat(right[p * stride]));
    }
    for (std::size_t i = 0; i < digits; ++i) {
#pragma GCC unroll 2
        for (std::size_t p = 0; p < moduli; ++p) {
            const Limb* const l = left + p * stride;
            const Limb* const m = modulus + p * stride;
            const Limb* const r = right + p * stride;
            // What does not depend on the sum is computed beside it: the high halves, and the low ones of the next digit.
            const __m512i digit = Repeat(r[i]);
            const __m512i nextDigit = i + 1 < digits ? Repeat(r[i + 1]) : zero;
            __m512i next[vectors];
#pragma GCC unroll 8
            for (std::size_t v = 0; v < vectors; ++v)
                next[v] =
                    _mm512_madd52lo_epu64(_mm512_madd52hi_epu64(zero, Load(l + v * lanes), digit), Load(l + v * lanes), nextDigit);
            const __m512i multiple =
                _mm512_broadcastq_epi64(_mm512_castsi512_si128(_mm512_madd52lo_epu64(zero, sum[p][0], inverse[p])));
#pragma GCC unroll 8
            for (std::size_t v = 0; v < vectors; ++v) {
                sum[p][v] = _mm512_madd52lo_epu64(sum[p][v], Load(m + v * lanes), multiple);
                next[v] = _mm512_madd52hi_epu64(next[v], Load(m + v * lanes), multiple);
            }
            // The lowest digit is a multiple of 2^52 now: it goes, and its carry is added to the one that takes its place.
            next[0] = _mm512_add_epi64(next[0], _mm512_maskz_srli_epi64(1, sum[p][0], DigitCalls::bitsOfDigit));
#pragma GCC unroll 8
            for (std::size_t v = 0; v < vectors; ++v) {
                const __m512i above = v + 1 < vectors ? sum[p][v + 1 < vectors ? v + 1 : v] : zero;
                sum[p][v] = _mm512_add_epi64(_mm512_alignr_epi64(above, sum[p][v], 1), next[v]);
            }
        }
    }
#pragma GCC unroll 2
    for (std::size_t p = 0; p < moduli; ++p)
        StoreCarried(result + p * stride, sum[p]);
}

template <std::size_t limbCount, std::size_t moduli>
void Gather(Limb* result, const Limb* table, const Limb* indexes)
{
    constexpr std::size_t vectors = DigitCalls::Vectors(limbCount);
    constexpr std::size_t stride = vectors * lanes;
    for (std::size_t p = 0; p < moduli; ++p) {
        const __m512i wanted = Repeat(indexes[p]);
        __m512i found[vectors];
        for (__m512i& part : found)
            part = _mm512_setzero_si512();
        const Limb* from = table + p * stride;
        for (Limb entry = 0; entry < DigitCalls::tableEntries; ++entry, from += moduli * stride) {
            const __mmask8 same = _mm512_cmpeq_epi64_mask(wanted, Repeat(entry));
#pragma GCC unroll 8
            for (std::size_t v = 0; v < vectors; ++v)
                found[v] = _mm512_mask_mov_epi64(found[v], same, Load(from + v * lanes));
        }
        for (std::size_t v = 0; v < vectors; ++v)
            _mm512_storeu_si512(result + p * stride + v * lanes, found[v]);
    }
}

template <std::size_t limbCount, std::size_t moduli>
constexpr DigitCalls CallsFor = {limbCount, moduli, Multiply<limbCount, moduli>, Gather<limbCount, moduli>};

// Primes of RSA keys of 1024, 2048, 3072 and 4096 bits.
constexpr DigitCalls calls[] = {CallsFor<8, 1>,  CallsFor<8, 2>,  CallsFor<16, 1>, CallsFor<16, 2>,
                                CallsFor<24, 1>, CallsFor<24, 2>, CallsFor<32, 1>, CallsFor<32, 2>};

} // namespace

namespace ccrypto {

constinit const std::span<const DigitCalls> digitsWithIfma{calls};

} // namespace ccrypto
