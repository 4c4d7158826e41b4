#include "core/base/algorithm.h"
#include "core/platform/secure_wipe.h"
#include "crypto/hash/block_hash.h"
#include "crypto/hash/hash_variants.h"

#include <array>

// FIPS 180-4, 6.1.

namespace ccrypto {

namespace {

using Word = std::uint32_t;

struct State {
    Word a, b, c, d, e;
};

/// The word of step `t`, made where the one of step t - 16 was.
inline Word NextWord(Word (&w)[16], unsigned t)
{
    return w[t % 16] = std::rotl(w[(t + 13) % 16] ^ w[(t + 8) % 16] ^ w[(t + 2) % 16] ^ w[t % 16], 1);
}

/// Five steps from `first` on, after which every word of the state is at its place again.
template <Word constant, typename Mix, typename Words>
inline void FiveSteps(State& s, const Mix& mix, const Words& word, unsigned first)
{
    const auto step = [&](Word a, Word& b, Word c, Word d, Word& e, unsigned t) {
        e += std::rotl(a, 5) + mix(b, c, d) + constant + word(t);
        b = std::rotl(b, 30);
    };
    step(s.a, s.b, s.c, s.d, s.e, first);
    step(s.e, s.a, s.b, s.c, s.d, first + 1);
    step(s.d, s.e, s.a, s.b, s.c, first + 2);
    step(s.c, s.d, s.e, s.a, s.b, first + 3);
    step(s.b, s.c, s.d, s.e, s.a, first + 4);
}

inline void Block(State& s, Word (&w)[16], const std::uint8_t* block)
{
    const auto choose = [](Word x, Word y, Word z) { return z ^ (x & (y ^ z)); };
    const auto parity = [](Word x, Word y, Word z) { return x ^ y ^ z; };
    const auto majority = [](Word x, Word y, Word z) { return (x & y) + (z & (x ^ y)); };
    const auto first = [&](unsigned t) {
        return t < 16 ? w[t] = LoadWord<Word, std::endian::big>(block + std::size_t{4} * t) : NextWord(w, t);
    };
    const auto next = [&](unsigned t) { return NextWord(w, t); };
#pragma GCC unroll 4
    for (unsigned t = 0; t < 20; t += 5)
        FiveSteps<0x5A827999>(s, choose, first, t);
#pragma GCC unroll 4
    for (unsigned t = 20; t < 40; t += 5)
        FiveSteps<0x6ED9EBA1>(s, parity, next, t);
#pragma GCC unroll 4
    for (unsigned t = 40; t < 60; t += 5)
        FiveSteps<0x8F1BBCDC>(s, majority, next, t);
#pragma GCC unroll 4
    for (unsigned t = 60; t < 80; t += 5)
        FiveSteps<0xCA62C1D6>(s, parity, next, t);
}

void Compress(Word* state, const std::uint8_t* blocks, std::size_t count)
{
    Word w[16];
    for (; count != 0; --count, blocks += 64) {
        State s = {state[0], state[1], state[2], state[3], state[4]};
        Block(s, w, blocks);
        state[0] += s.a;
        state[1] += s.b;
        state[2] += s.c;
        state[3] += s.d;
        state[4] += s.e;
    }
    // The last block follows from them, and may be a key.
    platform::SecureWipe(w, sizeof w);
}

constexpr std::array<Variant<CompressBlocks<Word>>, 2> variants = {{
    {"portable", cpu::none, Compress},
    {"shani", cpu::shaNi, CompressSHA1WithShaNi},
}};

} // namespace

std::span<const Variant<CompressBlocks<Word>>> SHA1Variants()
{
    return variants;
}

constinit const BlockHashKind<Word> sha1Kind = {
    .name = "SHA-1",
    .id = algorithm::sha1,
    .digestSize = 20,
    .order = std::endian::big,
    .initial = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0},
    .compress =
        [] {
            static const auto& chosen = ChooseVariant<CompressBlocks<Word>>(SHA1Variants());
            return chosen.calls;
        },
};

} // namespace ccrypto
