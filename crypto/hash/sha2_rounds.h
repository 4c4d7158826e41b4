#pragma once

#include "core/base/byte_order.h"
#include "core/platform/secure_wipe.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace ccrypto {

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
            State s = {state[0], state[1], state[2], state[3], state[4], state[5], state[6], state[7]};
            Block(s, w, blocks, constants);
            state[0] += s.a;
            state[1] += s.b;
            state[2] += s.c;
            state[3] += s.d;
            state[4] += s.e;
            state[5] += s.f;
            state[6] += s.g;
            state[7] += s.h;
        }
        // The last block follows from them, and may be a key.
        platform::SecureWipe(w, sizeof w);
    }

private:
    struct State {
        Word a, b, c, d, e, f, g, h;
    };

    [[gnu::always_inline]] static inline void Block(State& s, Word (&w)[16], const std::uint8_t* block, const Word* constants)
    {
        const auto given = [&](unsigned t) {
            w[t] = LoadWord<Word, std::endian::big>(block + t * sizeof(Word));
            return w[t] + constants[t];
        };
        EightRounds(s, given, 0);
        EightRounds(s, given, 8);
        for (unsigned from = 16; from < rounds; from += 16) {
            const auto made = [&](unsigned t) {
                w[t] += Sigmas::lower1(w[(t + 14) % 16]) + w[(t + 9) % 16] + Sigmas::lower0(w[(t + 1) % 16]);
                return w[t] + constants[from + t];
            };
            EightRounds(s, made, 0);
            EightRounds(s, made, 8);
        }
    }

    /// The words of the state stay where they are and change their names: after eight rounds each has its own again.
    template <typename Words>
    [[gnu::always_inline]] static inline void EightRounds(State& s, const Words& added, unsigned t)
    {
        Round(s.a, s.b, s.c, s.d, s.e, s.f, s.g, s.h, added(t));
        Round(s.h, s.a, s.b, s.c, s.d, s.e, s.f, s.g, added(t + 1));
        Round(s.g, s.h, s.a, s.b, s.c, s.d, s.e, s.f, added(t + 2));
        Round(s.f, s.g, s.h, s.a, s.b, s.c, s.d, s.e, added(t + 3));
        Round(s.e, s.f, s.g, s.h, s.a, s.b, s.c, s.d, added(t + 4));
        Round(s.d, s.e, s.f, s.g, s.h, s.a, s.b, s.c, added(t + 5));
        Round(s.c, s.d, s.e, s.f, s.g, s.h, s.a, s.b, added(t + 6));
        Round(s.b, s.c, s.d, s.e, s.f, s.g, s.h, s.a, added(t + 7));
    }

    [[gnu::always_inline]] static inline void Round(Word a, Word b, Word c, Word& d, Word e, Word f, Word g, Word& h, Word added)
    {
        h += added + Sigmas::upper1(e) + (g ^ (e & (f ^ g)));
        d += h;
        h += Sigmas::upper0(a) + ((a & b) + (c & (a ^ b)));
    }
};

} // namespace ccrypto
