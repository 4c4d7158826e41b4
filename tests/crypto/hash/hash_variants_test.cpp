#include "crypto/hash/block_hash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

using namespace ccrypto;

namespace {

/// Every variant that the processor has gives the portable one's state, from any state, for any number of blocks at any address.
template <typename Word>
void ExpectSameDigests(const std::string& name, std::span<const Variant<CompressBlocks<Word>>> variants)
{
    constexpr std::size_t blockSize = BlockHashKind<Word>::blockSize;
    std::mt19937_64 random(20261123);
    for (const auto& variant : variants) {
        SCOPED_TRACE(name + " " + variant.name);
        const bool isPresent = (variant.needs & ~cpu::PresentFeatures()) == 0;
        ::testing::Test::RecordProperty(name + " " + variant.name, isPresent ? "tested" : "not in this processor");
        if (!isPresent)
            continue;
        for (std::size_t count = 0; count <= 9; ++count) {
            for (std::size_t shift = 0; shift < 16; shift += 3) {
                std::vector<std::uint8_t> bytes(shift + count * blockSize);
                std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
                Word expected[8];
                std::generate(std::begin(expected), std::end(expected), [&] { return static_cast<Word>(random()); });
                Word state[8];
                std::copy(std::begin(expected), std::end(expected), state);
                variants.front().calls(expected, bytes.data() + shift, count);
                variant.calls(state, bytes.data() + shift, count);
                // SHA-1 and MD5 leave the words after theirs unchanged.
                ASSERT_TRUE(std::equal(std::begin(expected), std::end(expected), state)) << count << " blocks";
            }
        }
    }
}

TEST(HashVariants, GiveWhatThePortableOneGives)
{
    ExpectSameDigests<std::uint32_t>("SHA-1", SHA1Variants());
    ExpectSameDigests<std::uint32_t>("SHA-256", SHA256Variants());
    ExpectSameDigests<std::uint64_t>("SHA-512", SHA512Variants());
}

} // namespace
