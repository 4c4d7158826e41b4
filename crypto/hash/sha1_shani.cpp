#include "crypto/hash/hash_variants.h"

#include <immintrin.h>

// FIPS 180-4, 6.1, four steps at a time. A register holds four words, the first one in its highest lane.

namespace ccrypto {

namespace {

/// Four steps: `older`, the state before the last four, gives its word e.
template <int function>
[[gnu::always_inline]] inline void FourSteps(__m128i& abcd, __m128i& older, __m128i words)
{
    const __m128i added = _mm_sha1nexte_epu32(older, words);
    older = abcd;
    abcd = _mm_sha1rnds4_epu32(abcd, added, function);
}

/// The four words that follow w0 to w3, where w0 was.
[[gnu::always_inline]] inline void Expand(__m128i& w0, __m128i w1, __m128i w2, __m128i w3)
{
    w0 = _mm_sha1msg2_epu32(_mm_xor_si128(_mm_sha1msg1_epu32(w0, w1), w2), w3);
}

/// Twenty steps with the words of the state of twenty steps before; which of the four registers is the oldest goes round.
template <int function>
[[gnu::always_inline]] inline void TwentySteps(__m128i& abcd, __m128i& older, __m128i& w0, __m128i& w1, __m128i& w2, __m128i& w3)
{
    Expand(w0, w1, w2, w3);
    FourSteps<function>(abcd, older, w0);
    Expand(w1, w2, w3, w0);
    FourSteps<function>(abcd, older, w1);
    Expand(w2, w3, w0, w1);
    FourSteps<function>(abcd, older, w2);
    Expand(w3, w0, w1, w2);
    FourSteps<function>(abcd, older, w3);
    Expand(w0, w1, w2, w3);
    FourSteps<function>(abcd, older, w0);
}

[[gnu::always_inline]] inline __m128i Load(const std::uint8_t* bytes)
{
    const __m128i reversed = _mm_set_epi64x(0x0001020304050607, 0x08090A0B0C0D0E0F);
    return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)), reversed);
}

} // namespace

void CompressSHA1WithShaNi(std::uint32_t* state, const std::uint8_t* blocks, std::size_t count)
{
    __m128i abcd = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(state)), 0x1B);
    __m128i e = _mm_set_epi32(static_cast<int>(state[4]), 0, 0, 0);
    for (; count != 0; --count, blocks += 64) {
        const __m128i abcdBefore = abcd;
        const __m128i eBefore = e;

        __m128i w0 = Load(blocks);
        __m128i w1 = Load(blocks + 16);
        __m128i w2 = Load(blocks + 32);
        __m128i w3 = Load(blocks + 48);
        __m128i older = abcd;
        abcd = _mm_sha1rnds4_epu32(abcd, _mm_add_epi32(e, w0), 0);
        FourSteps<0>(abcd, older, w1);
        FourSteps<0>(abcd, older, w2);
        FourSteps<0>(abcd, older, w3);
        Expand(w0, w1, w2, w3);
        FourSteps<0>(abcd, older, w0);
        TwentySteps<1>(abcd, older, w1, w2, w3, w0);
        TwentySteps<2>(abcd, older, w2, w3, w0, w1);
        TwentySteps<3>(abcd, older, w3, w0, w1, w2);

        e = _mm_sha1nexte_epu32(older, eBefore);
        abcd = _mm_add_epi32(abcd, abcdBefore);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state), _mm_shuffle_epi32(abcd, 0x1B));
    state[4] = static_cast<std::uint32_t>(_mm_extract_epi32(e, 3));
}

} // namespace ccrypto
