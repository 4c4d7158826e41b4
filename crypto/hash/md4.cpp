#include "crypto/hash/block_hash.h"

#include <array>

// RFC 1320.

namespace ccrypto {

namespace {

using Word = std::uint32_t;

template <int turn, typename Mix>
inline void Step(const Mix& mix, Word& a, Word b, Word c, Word d, Word added)
{
    a = std::rotl(a + mix(b, c, d) + added, turn);
}

/// Four steps of a round, with the words at these places of the block.
template <int turn1, int turn2, int turn3, int turn4, Word constant, typename Mix>
inline void Steps(const Mix& mix, Word (&s)[4], const Word* x, int i, int j, int k, int l)
{
    Step<turn1>(mix, s[0], s[1], s[2], s[3], x[i] + constant);
    Step<turn2>(mix, s[3], s[0], s[1], s[2], x[j] + constant);
    Step<turn3>(mix, s[2], s[3], s[0], s[1], x[k] + constant);
    Step<turn4>(mix, s[1], s[2], s[3], s[0], x[l] + constant);
}

void Compress(Word* state, const std::uint8_t* blocks, std::size_t count)
{
    const auto choose = [](Word x, Word y, Word z) { return z ^ (x & (y ^ z)); };
    const auto majority = [](Word x, Word y, Word z) { return (x & y) | (z & (x | y)); };
    const auto parity = [](Word x, Word y, Word z) { return x ^ y ^ z; };
    for (; count != 0; --count, blocks += 64) {
        Word x[16];
        for (int i = 0; i < 16; ++i)
            x[i] = LoadWord<Word, std::endian::little>(blocks + 4 * i);
        Word s[4] = {state[0], state[1], state[2], state[3]};
        for (int i = 0; i < 16; i += 4)
            Steps<3, 7, 11, 19, 0>(choose, s, x, i, i + 1, i + 2, i + 3);
        for (int i = 0; i < 4; ++i)
            Steps<3, 5, 9, 13, 0x5A827999>(majority, s, x, i, i + 4, i + 8, i + 12);
        for (const int i : {0, 2, 1, 3})
            Steps<3, 9, 11, 15, 0x6ED9EBA1>(parity, s, x, i, i + 8, i + 4, i + 12);
        for (int i = 0; i < 4; ++i)
            state[i] += s[i];
    }
}

constexpr std::array<Variant<CompressBlocks<Word>>, 1> variants = {{{"portable", cpu::none, Compress}}};

} // namespace

std::span<const Variant<CompressBlocks<Word>>> MD4Variants()
{
    return variants;
}

constinit const BlockHashKind<Word> md4Kind = {
    .name = "MD4",
    .id = algorithm::none,
    .digestSize = 16,
    .order = std::endian::little,
    .initial = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476},
    .compress = []() -> CompressBlocks<Word> { return Compress; },
};

} // namespace ccrypto
