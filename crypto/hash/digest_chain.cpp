#include "crypto/hash/digest_chain.h"

#include "core/memory/wiped.h"
#include "crypto/hash/hash_kinds.h"

#include <array>

namespace ccrypto::digest_chain {

namespace {

template <typename Word>
using State = Wiped<std::array<Word, 8>>;
template <typename Word>
using Block = Wiped<std::array<std::uint8_t, BlockHashKind<Word>::blockSize>>;

template <typename Word>
State<Word> Initial(const BlockHashKind<Word>& kind)
{
    State<Word> state{};
    std::copy_n(kind.initial, state.size(), state.begin());
    return state;
}

/// The last block of a message, which holds a digest and the padding; the blocks before it have `before` bytes.
template <typename Word>
Block<Word> BlockOfDigest(const BlockHashKind<Word>& kind, const std::uint8_t* digest, std::uint32_t before)
{
    Block<Word> block{};
    std::memcpy(block.data(), digest, kind.digestSize);
    block[kind.digestSize] = 0x80;
    kind.storeLength(block.data(), before + kind.digestSize);
    return block;
}

/// The state after the block of the key.
template <typename Word>
State<Word> Keyed(const BlockHashKind<Word>& kind, const std::uint8_t* key, std::uint32_t keyLength, std::uint8_t pad)
{
    Block<Word> block{};
    if (keyLength != 0)
        std::memcpy(block.data(), key, keyLength);
    for (std::uint8_t& byte : block)
        byte ^= pad;
    State<Word> state = Initial(kind);
    kind.compress()(state.data(), block.data(), 1);
    return state;
}

template <typename Word>
void RehashBlocks(const BlockHashKind<Word>& kind, std::uint8_t* digest, std::uint32_t times)
{
    const auto compress = kind.compress();
    const std::uint32_t words = kind.digestWords();
    const State<Word> initial = Initial(kind);
    State<Word> state;
    Block<Word> block = BlockOfDigest(kind, digest, 0);
    for (; times != 0; --times) {
        static_cast<std::array<Word, 8>&>(state) = initial;
        compress(state.data(), block.data(), 1);
        kind.storeWords(block.data(), state.data(), words);
    }
    std::memcpy(digest, block.data(), kind.digestSize);
}

template <typename Word>
void SumBlocks(const BlockHashKind<Word>& kind, const std::uint8_t* key, std::uint32_t keyLength, const std::uint8_t* digest,
               std::uint8_t* sum, std::uint32_t times)
{
    const auto compress = kind.compress();
    const std::uint32_t words = kind.digestWords();
    const State<Word> inner = Keyed(kind, key, keyLength, 0x36);
    const State<Word> outer = Keyed(kind, key, keyLength, 0x5C);
    State<Word> total{};
    State<Word> state;
    Block<Word> block = BlockOfDigest(kind, digest, kind.blockSize);
    for (; times != 0; --times) {
        static_cast<std::array<Word, 8>&>(state) = inner;
        compress(state.data(), block.data(), 1);
        kind.storeWords(block.data(), state.data(), words);
        static_cast<std::array<Word, 8>&>(state) = outer;
        compress(state.data(), block.data(), 1);
        kind.storeWords(block.data(), state.data(), words);
        for (std::size_t i = 0; i < total.size(); ++i)
            total[i] ^= state[i];
    }
    kind.storeWords(block.data(), total.data(), words);
    for (std::uint32_t i = 0; i < kind.digestSize; ++i)
        sum[i] ^= block[i];
}

} // namespace

bool Knows(algorithm::Id hashId)
{
    return WithHashKind(hashId, false, [](const auto&) { return true; });
}

bool Rehash(algorithm::Id hashId, std::uint8_t* digest, std::uint32_t times)
{
    return WithHashKind(hashId, false, [&](const auto& kind) {
        RehashBlocks(kind, digest, times);
        return true;
    });
}

bool SumOfMACs(algorithm::Id hashId, const std::uint8_t* key, std::uint32_t keyLength, const std::uint8_t* digest,
               std::uint8_t* sum, std::uint32_t times)
{
    return WithHashKind(hashId, false, [&](const auto& kind) {
        if (keyLength > kind.blockSize)
            return false;
        SumBlocks(kind, key, keyLength, digest, sum, times);
        return true;
    });
}

} // namespace ccrypto::digest_chain
