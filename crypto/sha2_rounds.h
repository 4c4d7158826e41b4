#pragma once

#include "core/platform/secure_wipe.h"
#include "crypto/byte_order.h"

#include <bit>
#include <cstddef>
#include <cstdint>

/// The compression of SHA-256 and of SHA-512 (FIPS 180-4, 6.2.2 and 6.4.2), which differ in the length of the words, the number
/// of rounds and the turns of the four sigma functions.
///
/// \tparam Sigmas upper0, upper1, lower0 and lower1, each of one word.
template <typename Word, unsigned rounds, typename Sigmas>
class SHA2Rounds {
public:
    static void Compress(Word* state, const std::uint8_t* blocks, std::size_t count, const Word* constants)
    {
        Word w[16];
        for (; count != 0; --count, blocks += 16 * sizeof(Word)) {
            Word s[8] = {state[0], state[1], state[2], state[3], state[4], state[5], state[6], state[7]};
            Block(s, w, blocks, constants);
            for (int i = 0; i < 8; ++i)
                state[i] += s[i];
        }
        // The last block follows from them, and may be a key.
        platform::SecureWipe(w, sizeof w);
    }

private:
    [[gnu::always_inline]] static inline void Block(Word (&s)[8], Word (&w)[16], const std::uint8_t* block, const Word* constants)
    {
#pragma GCC unroll 16
        for (unsigned t = 0; t < 16; ++t) {
            w[t] = LoadWord<Word, std::endian::big>(block + t * sizeof(Word));
            Round(s, t, w[t] + constants[t]);
        }
        for (unsigned from = 16; from < rounds; from += 16) {
#pragma GCC unroll 16
            for (unsigned t = 0; t < 16; ++t) {
                w[t] += Sigmas::lower1(w[(t + 14) % 16]) + w[(t + 9) % 16] + Sigmas::lower0(w[(t + 1) % 16]);
                Round(s, t, w[t] + constants[from + t]);
            }
        }
    }

    /// The words stay where they are, and their names move on by one a round.
    [[gnu::always_inline]] static inline void Round(Word (&s)[8], unsigned t, Word added)
    {
        const Word a = s[(0u - t) % 8];
        const Word b = s[(1u - t) % 8];
        const Word c = s[(2u - t) % 8];
        const Word e = s[(4u - t) % 8];
        const Word f = s[(5u - t) % 8];
        const Word g = s[(6u - t) % 8];
        const Word first = s[(7u - t) % 8] + added + Sigmas::upper1(e) + (g ^ (e & (f ^ g)));
        s[(3u - t) % 8] += first;
        s[(7u - t) % 8] = first + Sigmas::upper0(a) + ((a & b) | (c & (a | b)));
    }
};
