#include "crypto/hash/hash_variants.h"
#include "crypto/hash/sha2_constants.h"

#include <immintrin.h>

// FIPS 180-4, 6.2.2, four rounds at a time. The instructions want the state as the words f, e, b, a and h, g, d, c, lowest lane
// first.

namespace ccrypto {

namespace {

[[gnu::always_inline]] inline void FourRounds(__m128i& feba, __m128i& hgdc, __m128i words, const std::uint32_t* constants)
{
    const __m128i added = _mm_add_epi32(words, _mm_load_si128(reinterpret_cast<const __m128i*>(constants)));
    hgdc = _mm_sha256rnds2_epu32(hgdc, feba, added);
    feba = _mm_sha256rnds2_epu32(feba, hgdc, _mm_shuffle_epi32(added, 0x0E));
}

/// The four words that follow w0 to w3, where w0 was.
[[gnu::always_inline]] inline void Expand(__m128i& w0, __m128i w1, __m128i w2, __m128i w3)
{
    w0 = _mm_sha256msg2_epu32(_mm_add_epi32(_mm_sha256msg1_epu32(w0, w1), _mm_alignr_epi8(w3, w2, 4)), w3);
}

[[gnu::always_inline]] inline void SixteenRounds(__m128i& feba, __m128i& hgdc, __m128i& w0, __m128i& w1, __m128i& w2, __m128i& w3,
                                                 const std::uint32_t* constants)
{
    Expand(w0, w1, w2, w3);
    FourRounds(feba, hgdc, w0, constants);
    Expand(w1, w2, w3, w0);
    FourRounds(feba, hgdc, w1, constants + 4);
    Expand(w2, w3, w0, w1);
    FourRounds(feba, hgdc, w2, constants + 8);
    Expand(w3, w0, w1, w2);
    FourRounds(feba, hgdc, w3, constants + 12);
}

[[gnu::always_inline]] inline __m128i Load(const std::uint8_t* bytes)
{
    const __m128i reversed = _mm_set_epi64x(0x0C0D0E0F08090A0B, 0x0405060700010203);
    return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)), reversed);
}

} // namespace

void CompressSHA256WithShaNi(std::uint32_t* state, const std::uint8_t* blocks, std::size_t count)
{
    const __m128i badc = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(state)), 0xB1);
    const __m128i hgfe = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(state + 4)), 0x1B);
    __m128i feba = _mm_alignr_epi8(badc, hgfe, 8);
    __m128i hgdc = _mm_blend_epi16(hgfe, badc, 0xF0);
    for (; count != 0; --count, blocks += 64) {
        const __m128i febaBefore = feba;
        const __m128i hgdcBefore = hgdc;

        __m128i w0 = Load(blocks);
        FourRounds(feba, hgdc, w0, sha256Constants);
        __m128i w1 = Load(blocks + 16);
        FourRounds(feba, hgdc, w1, sha256Constants + 4);
        __m128i w2 = Load(blocks + 32);
        FourRounds(feba, hgdc, w2, sha256Constants + 8);
        __m128i w3 = Load(blocks + 48);
        FourRounds(feba, hgdc, w3, sha256Constants + 12);
        SixteenRounds(feba, hgdc, w0, w1, w2, w3, sha256Constants + 16);
        SixteenRounds(feba, hgdc, w0, w1, w2, w3, sha256Constants + 32);
        SixteenRounds(feba, hgdc, w0, w1, w2, w3, sha256Constants + 48);

        feba = _mm_add_epi32(feba, febaBefore);
        hgdc = _mm_add_epi32(hgdc, hgdcBefore);
    }
    const __m128i abef = _mm_shuffle_epi32(feba, 0x1B);
    const __m128i dchg = _mm_shuffle_epi32(hgdc, 0xB1);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state), _mm_blend_epi16(abef, dchg, 0xF0));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state + 4), _mm_alignr_epi8(dchg, abef, 8));
}

} // namespace ccrypto
