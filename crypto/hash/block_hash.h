#pragma once

#include "core/base/algorithm.h"
#include "core/base/byte_order.h"
#include "crypto/base/cpu_features.h"
#include "crypto/hash/hash.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ccrypto {

/// Takes `count` blocks of 16 words each into the eight words of `state` (fewer where the function has fewer).
template <typename Word>
using CompressBlocks = void (*)(Word* state, const std::uint8_t* blocks, std::size_t count);

/// A hash function that takes a message block by block into a few words: the message, a one bit, zeros and the message's length
/// fill whole blocks (RFC 1320, 1321; FIPS 180-4, 5.1).
template <typename Word>
struct BlockHashKind {
    static constexpr std::uint32_t blockSize = 16 * sizeof(Word);
    /// The length at the end of the last block.
    static constexpr std::uint32_t lengthSize = 2 * sizeof(Word);

    const char* name;
    algorithm::Id id;
    std::uint32_t digestSize;
    std::endian order;
    Word initial[8];
    CompressBlocks<Word> (*compress)(); ///< that of the chosen variant

    std::uint32_t digestWords() const { return digestSize / sizeof(Word); }

    void storeWords(std::uint8_t* bytes, const Word* words, std::uint32_t count) const
    {
        for (std::uint32_t i = 0; i < count; ++i) {
            const Word word = order == std::endian::native ? words[i] : ReversedBytes(words[i]);
            std::memcpy(bytes + i * sizeof(Word), &word, sizeof word);
        }
    }
    /// The end of a block that is the last one of `length` message bytes.
    void storeLength(std::uint8_t* block, std::uint64_t length) const
    {
        std::uint8_t* const last = block + blockSize - lengthSize;
        std::memset(last, 0, lengthSize);
        if (order == std::endian::big) {
            StoreWord<std::uint64_t, std::endian::big>(last + lengthSize - 8, length << 3);
            // Only SHA-512 has a longer field.
            if (lengthSize > 8)
                last[lengthSize - 9] = static_cast<std::uint8_t>(length >> 61);
        } else {
            StoreWord<std::uint64_t, std::endian::little>(last, length << 3);
        }
    }
};

extern const BlockHashKind<std::uint32_t> md4Kind;
extern const BlockHashKind<std::uint32_t> md5Kind;
extern const BlockHashKind<std::uint32_t> sha1Kind;
extern const BlockHashKind<std::uint32_t> sha224Kind;
extern const BlockHashKind<std::uint32_t> sha256Kind;
extern const BlockHashKind<std::uint64_t> sha384Kind;
extern const BlockHashKind<std::uint64_t> sha512Kind;

// Every way to compute each of them, the portable one first.
std::span<const Variant<CompressBlocks<std::uint32_t>>> MD4Variants();
std::span<const Variant<CompressBlocks<std::uint32_t>>> MD5Variants();
std::span<const Variant<CompressBlocks<std::uint32_t>>> SHA1Variants();
std::span<const Variant<CompressBlocks<std::uint32_t>>> SHA256Variants();
std::span<const Variant<CompressBlocks<std::uint64_t>>> SHA512Variants();

} // namespace ccrypto
