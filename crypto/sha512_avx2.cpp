#include "crypto/sha512_variants.h"

#include <immintrin.h>

// FIPS 180-4, 6.4.2, two blocks at a time: a register holds two words of each block's message, the first block's in its lower half.
// The words with their constants go to memory, from where the rounds of the first block take them beside the expansion and those of
// the second block after it. No 256-bit register is ever put on the stack by the compiler: the stack of Windows need not be aligned
// for that.

namespace {

using Word = std::uint64_t;
using Pairs = std::uint8_t[40][32];

template <int turn>
[[gnu::always_inline]] inline Word Turned(Word x)
{
    return x >> turn | x << (64 - turn);
}

template <int turn>
[[gnu::always_inline]] inline __m256i Turned(__m256i x)
{
    return _mm256_or_si256(_mm256_srli_epi64(x, turn), _mm256_slli_epi64(x, 64 - turn));
}

[[gnu::always_inline]] inline void Round(Word a, Word b, Word c, Word& d, Word e, Word f, Word g, Word& h, Word added)
{
    h += added + ((e & f) + (~e & g)) + (Turned<14>(e) ^ Turned<18>(e) ^ Turned<41>(e));
    d += h;
    h += (Turned<28>(a) ^ Turned<34>(a) ^ Turned<39>(a)) + ((a & b) + (c & (a ^ b)));
}

[[gnu::always_inline]] inline Word WordAt(const std::uint8_t* bytes)
{
    Word word;
    __builtin_memcpy(&word, bytes, sizeof word);
    return word;
}

/// Eight rounds of the block whose words stand at `block` bytes of each pair.
[[gnu::always_inline]] inline void EightRounds(Word (&s)[8], const Pairs& pairs, unsigned pair, unsigned block)
{
    Round(s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7], WordAt(pairs[pair] + block));
    Round(s[7], s[0], s[1], s[2], s[3], s[4], s[5], s[6], WordAt(pairs[pair] + block + 8));
    Round(s[6], s[7], s[0], s[1], s[2], s[3], s[4], s[5], WordAt(pairs[pair + 1] + block));
    Round(s[5], s[6], s[7], s[0], s[1], s[2], s[3], s[4], WordAt(pairs[pair + 1] + block + 8));
    Round(s[4], s[5], s[6], s[7], s[0], s[1], s[2], s[3], WordAt(pairs[pair + 2] + block));
    Round(s[3], s[4], s[5], s[6], s[7], s[0], s[1], s[2], WordAt(pairs[pair + 2] + block + 8));
    Round(s[2], s[3], s[4], s[5], s[6], s[7], s[0], s[1], WordAt(pairs[pair + 3] + block));
    Round(s[1], s[2], s[3], s[4], s[5], s[6], s[7], s[0], WordAt(pairs[pair + 3] + block + 8));
}

[[gnu::always_inline]] inline void Keep(Pairs& pairs, unsigned pair, __m256i words)
{
    const __m256i constants =
        _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(sha512Constants + 2 * pair)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(pairs[pair]), _mm256_add_epi64(words, constants));
}

[[gnu::always_inline]] inline __m256i Load(const std::uint8_t* first, const std::uint8_t* second)
{
    const __m256i reversed = _mm256_set_epi64x(0x08090A0B0C0D0E0F, 0x0001020304050607, 0x08090A0B0C0D0E0F, 0x0001020304050607);
    const __m256i low = _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(first)));
    const __m256i both = _mm256_inserti128_si256(low, _mm_loadu_si128(reinterpret_cast<const __m128i*>(second)), 1);
    return _mm256_shuffle_epi8(both, reversed);
}

/// The pair that follows eight others, w0 to w7, of which these are needed; it stands where w0 was.
[[gnu::always_inline]] inline void Expand(__m256i& w0, __m256i w1, __m256i w4, __m256i w5, __m256i w7)
{
    const __m256i turnedByEight = _mm256_set_epi64x(0x080F0E0D0C0B0A09, 0x0007060504030201, 0x080F0E0D0C0B0A09, 0x0007060504030201);
    const __m256i fifteenBack = _mm256_alignr_epi8(w1, w0, 8);
    const __m256i lower0 =
        _mm256_xor_si256(_mm256_xor_si256(Turned<1>(fifteenBack), _mm256_shuffle_epi8(fifteenBack, turnedByEight)),
                         _mm256_srli_epi64(fifteenBack, 7));
    const __m256i lower1 = _mm256_xor_si256(_mm256_xor_si256(Turned<19>(w7), Turned<61>(w7)), _mm256_srli_epi64(w7, 6));
    const __m256i sevenBack = _mm256_alignr_epi8(w5, w4, 8);
    w0 = _mm256_add_epi64(_mm256_add_epi64(w0, lower0), _mm256_add_epi64(sevenBack, lower1));
}

void AddTo(Word* state, const Word (&s)[8])
{
    for (int i = 0; i < 8; ++i)
        state[i] += s[i];
}

/// The rounds of the first of two blocks, and the words of both.
[[gnu::always_inline]] inline void FirstBlock(Word* state, const std::uint8_t* first, const std::uint8_t* second, Pairs& pairs)
{
    __m256i w0 = Load(first, second);
    __m256i w1 = Load(first + 16, second + 16);
    __m256i w2 = Load(first + 32, second + 32);
    __m256i w3 = Load(first + 48, second + 48);
    __m256i w4 = Load(first + 64, second + 64);
    __m256i w5 = Load(first + 80, second + 80);
    __m256i w6 = Load(first + 96, second + 96);
    __m256i w7 = Load(first + 112, second + 112);
    Keep(pairs, 0, w0);
    Keep(pairs, 1, w1);
    Keep(pairs, 2, w2);
    Keep(pairs, 3, w3);
    Keep(pairs, 4, w4);
    Keep(pairs, 5, w5);
    Keep(pairs, 6, w6);
    Keep(pairs, 7, w7);
    Word s[8] = {state[0], state[1], state[2], state[3], state[4], state[5], state[6], state[7]};
    for (unsigned pair = 0; pair < 32; pair += 8) {
        Expand(w0, w1, w4, w5, w7);
        Expand(w1, w2, w5, w6, w0);
        Keep(pairs, pair + 8, w0);
        Keep(pairs, pair + 9, w1);
        Expand(w2, w3, w6, w7, w1);
        Expand(w3, w4, w7, w0, w2);
        Keep(pairs, pair + 10, w2);
        Keep(pairs, pair + 11, w3);
        EightRounds(s, pairs, pair, 0);
        Expand(w4, w5, w0, w1, w3);
        Expand(w5, w6, w1, w2, w4);
        Keep(pairs, pair + 12, w4);
        Keep(pairs, pair + 13, w5);
        Expand(w6, w7, w2, w3, w5);
        Expand(w7, w0, w3, w4, w6);
        Keep(pairs, pair + 14, w6);
        Keep(pairs, pair + 15, w7);
        EightRounds(s, pairs, pair + 4, 0);
    }
    EightRounds(s, pairs, 32, 0);
    EightRounds(s, pairs, 36, 0);
    AddTo(state, s);
}

} // namespace

void CompressSHA512WithAvx2(std::uint64_t* state, const std::uint8_t* blocks, std::size_t count)
{
    Pairs pairs;
    while (count != 0) {
        const bool isLast = count == 1;
        FirstBlock(state, blocks, isLast ? blocks : blocks + 128, pairs);
        if (isLast)
            break;
        Word s[8] = {state[0], state[1], state[2], state[3], state[4], state[5], state[6], state[7]};
        for (unsigned pair = 0; pair < 40; pair += 4)
            EightRounds(s, pairs, pair, 16);
        AddTo(state, s);
        blocks += 256;
        count -= 2;
    }
    // What was derived from the message, which may be a key.
    __builtin_memset(pairs, 0, sizeof pairs);
    asm volatile("" : : "r"(&pairs) : "memory");
}
