#include "core/memory/wiped.h"
#include "crypto/base/block_bytes.h"
#include "crypto/cipher/gcm_variants.h"

#include <algorithm>
#include <array>
#include <cstring>

// GHASH with integer products. A product of two words whose bits lie four apart, and are at most sixteen, counts in every fourth
// bit how many pairs meet there: its lowest bit is the carry-less product's, and the carries stay in the hole above it.

namespace ccrypto {

namespace {

using block_bytes::Load64;
using block_bytes::Store64;

struct Element {
    std::uint64_t high;
    std::uint64_t low;
};

/// The low 64 bits of the carry-less product.
std::uint64_t MultiplyLow(std::uint64_t x, std::uint64_t y)
{
    constexpr std::uint64_t every = 0x1111111111111111;
    const std::uint64_t x0 = x & every, x1 = x & every << 1, x2 = x & every << 2, x3 = x & every << 3;
    const std::uint64_t y0 = y & every, y1 = y & every << 1, y2 = y & every << 2, y3 = y & every << 3;
    const std::uint64_t z0 = x0 * y0 ^ x1 * y3 ^ x2 * y2 ^ x3 * y1;
    const std::uint64_t z1 = x0 * y1 ^ x1 * y0 ^ x2 * y3 ^ x3 * y2;
    const std::uint64_t z2 = x0 * y2 ^ x1 * y1 ^ x2 * y0 ^ x3 * y3;
    const std::uint64_t z3 = x0 * y3 ^ x1 * y2 ^ x2 * y1 ^ x3 * y0;
    return (z0 & every) | (z1 & every << 1) | (z2 & every << 2) | (z3 & every << 3);
}

std::uint64_t ReverseBits(std::uint64_t x)
{
    x = (x & 0x5555555555555555) << 1 | (x >> 1 & 0x5555555555555555);
    x = (x & 0x3333333333333333) << 2 | (x >> 2 & 0x3333333333333333);
    x = (x & 0x0F0F0F0F0F0F0F0F) << 4 | (x >> 4 & 0x0F0F0F0F0F0F0F0F);
    x = (x & 0x00FF00FF00FF00FF) << 8 | (x >> 8 & 0x00FF00FF00FF00FF);
    x = (x & 0x0000FFFF0000FFFF) << 16 | (x >> 16 & 0x0000FFFF0000FFFF);
    return x << 32 | x >> 32;
}

/// One factor, with what its products need besides: the words, their sum, and all three with the bits reversed.
struct Factor {
    std::uint64_t high, low, sum;
    std::uint64_t reversedHigh, reversedLow, reversedSum;

    explicit Factor(Element value)
        : high(value.high), low(value.low), sum(high ^ low), reversedHigh(ReverseBits(high)), reversedLow(ReverseBits(low)),
          reversedSum(reversedHigh ^ reversedLow)
    {
    }
};

/// The product in the field of SP 800-38D, 6.3. Its bits run from the top: as integers both factors are reversed, and so is the
/// product, one bit short of 256.
Element Multiply(const Factor& x, const Factor& y)
{
    // Three products (Karatsuba), the upper halves of which are the lower ones of the reversed words, reversed.
    const std::uint64_t lowLow = MultiplyLow(x.low, y.low);
    const std::uint64_t highLow = MultiplyLow(x.high, y.high);
    const std::uint64_t middleLow = MultiplyLow(x.sum, y.sum) ^ lowLow ^ highLow;
    std::uint64_t lowHigh = MultiplyLow(x.reversedLow, y.reversedLow);
    std::uint64_t highHigh = MultiplyLow(x.reversedHigh, y.reversedHigh);
    std::uint64_t middleHigh = MultiplyLow(x.reversedSum, y.reversedSum) ^ lowHigh ^ highHigh;
    lowHigh = ReverseBits(lowHigh) >> 1;
    highHigh = ReverseBits(highHigh) >> 1;
    middleHigh = ReverseBits(middleHigh) >> 1;

    std::uint64_t v0 = lowLow;
    std::uint64_t v1 = lowHigh ^ middleLow;
    std::uint64_t v2 = highLow ^ middleHigh;
    std::uint64_t v3 = highHigh;
    v3 = v3 << 1 | v2 >> 63;
    v2 = v2 << 1 | v1 >> 63;
    v1 = v1 << 1 | v0 >> 63;
    v0 = v0 << 1;
    // x^128 = x^7 + x^2 + x + 1, for the two lower words, which hold the upper powers.
    v2 ^= v0 ^ v0 >> 1 ^ v0 >> 2 ^ v0 >> 7;
    v1 ^= v0 << 63 ^ v0 << 62 ^ v0 << 57;
    v3 ^= v1 ^ v1 >> 1 ^ v1 >> 2 ^ v1 >> 7;
    v2 ^= v1 << 63 ^ v1 << 62 ^ v1 << 57;
    return {v3, v2};
}

void ExpandHashKey(gcm::HashKey& key, const std::uint8_t* subkey)
{
    std::memcpy(key.powers, subkey, aes::blockSize);
}

void Hash(const gcm::HashKey& key, std::uint8_t* hash, const std::uint8_t* in, std::size_t blocks)
{
    const Factor factor({Load64(key.powers), Load64(key.powers + 8)});
    Element sum{Load64(hash), Load64(hash + 8)};
    for (; blocks > 0; --blocks, in += aes::blockSize)
        sum = Multiply(Factor({sum.high ^ Load64(in), sum.low ^ Load64(in + 8)}), factor);
    Store64(hash, sum.high);
    Store64(hash + 8, sum.low);
}

void ApplyCounter(const aes::Key& key, std::uint8_t* counter, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks)
{
    constexpr std::size_t batch = 64;
    Wiped<std::array<std::uint8_t, batch * aes::blockSize>> stream;
    while (blocks > 0) {
        const std::size_t count = std::min(blocks, batch);
        for (std::size_t i = 0; i < count; ++i) {
            std::memcpy(stream.data() + i * aes::blockSize, counter, aes::blockSize);
            block_bytes::Increment(counter + 12, 4);
        }
        aes::bitslicedCalls.encrypt(key, stream.data(), stream.data(), count);
        block_bytes::Xor(out, in, stream.data(), count * aes::blockSize);
        blocks -= count;
        in += count * aes::blockSize;
        out += count * aes::blockSize;
    }
}

void Encrypt(const aes::Key& cipherKey, const gcm::HashKey& key, std::uint8_t* hash, std::uint8_t* counter, std::uint8_t* out,
             const std::uint8_t* in, std::size_t blocks)
{
    ApplyCounter(cipherKey, counter, out, in, blocks);
    Hash(key, hash, out, blocks);
}

void Decrypt(const aes::Key& cipherKey, const gcm::HashKey& key, std::uint8_t* hash, std::uint8_t* counter, std::uint8_t* out,
             const std::uint8_t* in, std::size_t blocks)
{
    Hash(key, hash, in, blocks);
    ApplyCounter(cipherKey, counter, out, in, blocks);
}

} // namespace

const gcm::Calls gcm::portableCalls = {&aes::bitslicedCalls, ExpandHashKey, Hash, Encrypt, Decrypt};

} // namespace ccrypto
