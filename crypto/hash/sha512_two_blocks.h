#pragma once

#include "crypto/hash/hash_variants.h"
#include "crypto/hash/sha2_constants.h"

#include <immintrin.h>

namespace ccrypto {

/// The compression of SHA-512 (FIPS 180-4, 6.4.2), two blocks at a time: a register holds two words of each block's message, the
/// first block's in its lower half. The words with their constants go to memory, from where the rounds of the first block take them
/// beside the expansion and those of the second block after it.
///
/// \tparam Vectors Turned<count>(x) rotates the words of x to the right, Xor(x, y, z) adds three; each in the instructions of the
/// file that includes this.
template <typename Vectors>
class SHA512TwoBlocks {
public:
    static void Compress(std::uint64_t* state, const std::uint8_t* blocks, std::size_t count)
    {
        Pairs pairs;
        while (count != 0) {
            const bool isLast = count == 1;
            FirstBlock(state, blocks, isLast ? blocks : blocks + 128, pairs);
            if (isLast)
                break;
            State s = Start(state);
            for (unsigned pair = 0; pair < 40; pair += 4) {
                FirstRounds(s, pairs, pair, 16);
                NextRounds(s, pairs, pair + 2, 16);
            }
            AddTo(state, s);
            blocks += 256;
            count -= 2;
        }
        // What was derived from the message, which may be a key.
        __builtin_memset(pairs, 0, sizeof pairs);
        asm volatile("" : : "r"(&pairs) : "memory");
    }

private:
    using Word = std::uint64_t;
    using Pairs = std::uint8_t[40][32];

    /// One round. The majority of a, b and c is b ^ ((a ^ b) & (b ^ c)), and a ^ b is the next round's b ^ c. It is written out
    /// because the compiler spends a fifth more instructions, and the four units that can do these are what a round waits for.
    ///
    /// \param bc b ^ c; not to be used afterwards.
    /// \param ab becomes a ^ b.
    [[gnu::always_inline]] static inline void Round(Word a, Word b, Word& d, Word e, Word f, Word g, Word& h, Word& bc, Word& ab,
                                                    const std::uint8_t* added)
    {
        Word s;
        Word t;
        asm("addq %[added], %[h]\n\t"
            "rorxq $41, %[e], %[s]\n\t"
            "rorxq $18, %[e], %[t]\n\t"
            "movq %[a], %[ab]\n\t"
            "xorq %[t], %[s]\n\t"
            "rorxq $14, %[e], %[t]\n\t"
            "xorq %[t], %[s]\n\t"
            "movq %[f], %[t]\n\t"
            "xorq %[g], %[t]\n\t"
            "andq %[e], %[t]\n\t"
            "xorq %[g], %[t]\n\t"
            "addq %[t], %[h]\n\t"
            "addq %[s], %[h]\n\t"
            "addq %[h], %[d]\n\t"
            "rorxq $39, %[a], %[t]\n\t"
            "rorxq $34, %[a], %[s]\n\t"
            "xorq %[b], %[ab]\n\t"
            "xorq %[s], %[t]\n\t"
            "rorxq $28, %[a], %[s]\n\t"
            "andq %[ab], %[bc]\n\t"
            "xorq %[s], %[t]\n\t"
            "xorq %[b], %[bc]\n\t"
            "addq %[t], %[h]\n\t"
            "addq %[bc], %[h]"
            : [d] "+&r"(d), [h] "+&r"(h), [bc] "+&r"(bc), [ab] "=&r"(ab), [s] "=&r"(s), [t] "=&r"(t)
            : [a] "r"(a), [b] "r"(b), [e] "r"(e), [f] "r"(f), [g] "r"(g),
              [added] "m"(*reinterpret_cast<const std::uint8_t(*)[8]>(added))
            : "cc");
    }

    /// The state, and b ^ c.
    struct State {
        Word a, b, c, d, e, f, g, h, bc;
    };

    [[gnu::always_inline]] static inline State Start(const Word* state)
    {
        return {state[0], state[1], state[2], state[3], state[4], state[5], state[6], state[7], state[1] ^ state[2]};
    }

    [[gnu::always_inline]] static inline void AddTo(Word* state, const State& s)
    {
        state[0] += s.a;
        state[1] += s.b;
        state[2] += s.c;
        state[3] += s.d;
        state[4] += s.e;
        state[5] += s.f;
        state[6] += s.g;
        state[7] += s.h;
    }

    /// Four rounds of the block whose words stand at `block` bytes of each pair. The words stay where they are and change their
    /// names, so that the next four want the state with its halves exchanged.
    [[gnu::always_inline]] static inline void FourRounds(Word& a, Word& b, Word& c, Word& d, Word& e, Word& f, Word& g, Word& h,
                                                         Word& bc, const Pairs& pairs, unsigned pair, unsigned block)
    {
        Word ab;
        Round(a, b, d, e, f, g, h, bc, ab, pairs[pair] + block);
        Round(h, a, c, d, e, f, g, ab, bc, pairs[pair] + block + 8);
        Round(g, h, b, c, d, e, f, bc, ab, pairs[pair + 1] + block);
        Round(f, g, a, b, c, d, e, ab, bc, pairs[pair + 1] + block + 8);
    }

    [[gnu::always_inline]] static inline void FirstRounds(State& s, const Pairs& pairs, unsigned pair, unsigned block)
    {
        FourRounds(s.a, s.b, s.c, s.d, s.e, s.f, s.g, s.h, s.bc, pairs, pair, block);
    }

    [[gnu::always_inline]] static inline void NextRounds(State& s, const Pairs& pairs, unsigned pair, unsigned block)
    {
        FourRounds(s.e, s.f, s.g, s.h, s.a, s.b, s.c, s.d, s.bc, pairs, pair, block);
    }

    [[gnu::always_inline]] static inline void Keep(Pairs& pairs, unsigned pair, __m256i words)
    {
        const __m256i constants =
            _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(sha512Constants + 2 * pair)));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(pairs[pair]), _mm256_add_epi64(words, constants));
    }

    [[gnu::always_inline]] static inline __m256i Load(const std::uint8_t* first, const std::uint8_t* second)
    {
        const __m256i reversed = _mm256_set_epi64x(0x08090A0B0C0D0E0F, 0x0001020304050607, 0x08090A0B0C0D0E0F, 0x0001020304050607);
        const __m256i low = _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(first)));
        const __m256i both = _mm256_inserti128_si256(low, _mm_loadu_si128(reinterpret_cast<const __m128i*>(second)), 1);
        return _mm256_shuffle_epi8(both, reversed);
    }

    /// The pair that follows eight others, w0 to w7, of which these are needed; it stands where w0 was.
    [[gnu::always_inline]] static inline void Expand(__m256i& w0, __m256i w1, __m256i w4, __m256i w5, __m256i w7)
    {
        const __m256i turnedByEight =
            _mm256_set_epi64x(0x080F0E0D0C0B0A09, 0x0007060504030201, 0x080F0E0D0C0B0A09, 0x0007060504030201);
        const __m256i fifteenBack = _mm256_alignr_epi8(w1, w0, 8);
        const __m256i lower0 = Vectors::Xor(Vectors::template Turned<1>(fifteenBack),
                                            _mm256_shuffle_epi8(fifteenBack, turnedByEight), _mm256_srli_epi64(fifteenBack, 7));
        const __m256i lower1 =
            Vectors::Xor(Vectors::template Turned<19>(w7), Vectors::template Turned<61>(w7), _mm256_srli_epi64(w7, 6));
        const __m256i sevenBack = _mm256_alignr_epi8(w5, w4, 8);
        w0 = _mm256_add_epi64(_mm256_add_epi64(w0, lower0), _mm256_add_epi64(sevenBack, lower1));
    }

    /// The rounds of the first of two blocks, and the words of both.
    [[gnu::always_inline]] static inline void FirstBlock(Word* state, const std::uint8_t* first, const std::uint8_t* second,
                                                         Pairs& pairs)
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
        State s = Start(state);
        for (unsigned pair = 0; pair < 32; pair += 8) {
            Expand(w0, w1, w4, w5, w7);
            Keep(pairs, pair + 8, w0);
            Expand(w1, w2, w5, w6, w0);
            Keep(pairs, pair + 9, w1);
            FirstRounds(s, pairs, pair, 0);
            Expand(w2, w3, w6, w7, w1);
            Keep(pairs, pair + 10, w2);
            Expand(w3, w4, w7, w0, w2);
            Keep(pairs, pair + 11, w3);
            NextRounds(s, pairs, pair + 2, 0);
            Expand(w4, w5, w0, w1, w3);
            Keep(pairs, pair + 12, w4);
            Expand(w5, w6, w1, w2, w4);
            Keep(pairs, pair + 13, w5);
            FirstRounds(s, pairs, pair + 4, 0);
            Expand(w6, w7, w2, w3, w5);
            Keep(pairs, pair + 14, w6);
            Expand(w7, w0, w3, w4, w6);
            Keep(pairs, pair + 15, w7);
            NextRounds(s, pairs, pair + 6, 0);
        }
        for (unsigned pair = 32; pair < 40; pair += 4) {
            FirstRounds(s, pairs, pair, 0);
            NextRounds(s, pairs, pair + 2, 0);
        }
        AddTo(state, s);
    }
};

} // namespace ccrypto
