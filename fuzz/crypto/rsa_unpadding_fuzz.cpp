#include "crypto/hash/hash.h"
#include "crypto/rsa/rsa_encoding.h"
#include "fuzz/require.h"

#include <algorithm>
#include <optional>
#include <vector>

using namespace ccrypto;

namespace {

using Bytes = std::vector<std::uint8_t>;

/// As RFC 8017, 7.2.2, step 3 reads: with branches, and leaving as soon as something is wrong.
std::optional<Bytes> UnpadPKCS1(const Bytes& block)
{
    if (block.size() < 11 || block[0] != 0 || block[1] != 2)
        return std::nullopt;
    const auto zero = std::find(block.begin() + 2, block.end(), 0);
    if (zero == block.end() || zero - block.begin() < 10)
        return std::nullopt;
    return Bytes(zero + 1, block.end());
}

Bytes Mask(const Bytes& seed, std::size_t length)
{
    Bytes mask;
    for (std::uint8_t counter = 0; mask.size() < length; ++counter) {
        Bytes input = seed;
        input.insert(input.end(), {0, 0, 0, counter});
        const element digest = ICryptoHash::Create(algorithm::sha1)->digestOf(input);
        mask.insert(mask.end(), digest.data(), digest.data() + digest.length());
    }
    mask.resize(length);
    return mask;
}

Bytes Xor(Bytes left, const Bytes& right)
{
    for (std::size_t i = 0; i < left.size(); ++i)
        left[i] ^= right[i];
    return left;
}

constexpr std::size_t digestSize = 20;

/// 7.1.2, step 3, with SHA-1 and no label.
std::optional<Bytes> UnpadOAEP(const Bytes& block)
{
    Bytes data(block.begin() + 1 + digestSize, block.end());
    const Bytes seed = Xor(Bytes(block.begin() + 1, block.begin() + 1 + digestSize), Mask(data, digestSize));
    data = Xor(data, Mask(seed, data.size()));
    const element label = ICryptoHash::Create(algorithm::sha1)->digestOf({});
    if (block[0] != 0 || !std::equal(label.data(), label.data() + digestSize, data.begin()))
        return std::nullopt;
    const auto one = std::find_if(data.begin() + digestSize, data.end(), [](std::uint8_t byte) { return byte != 0; });
    if (one == data.end() || *one != 1)
        return std::nullopt;
    return Bytes(one + 1, data.end());
}

void CompareOAEP(Bytes block)
{
    const std::optional<Bytes> expected = UnpadOAEP(block);
    constant_time::Mask good = constant_time::Mask::False();
    std::uint64_t length = 0;
    Require(rsa_encoding::DecodeOAEP(block, {.hash = algorithm::sha1}, good, length));
    Require(constant_time::Declassify(good) == expected.has_value());
    Require(expected.has_value() ? Bytes(block.end() - static_cast<std::ptrdiff_t>(length), block.end()) == *expected
                                 : length == 0);
}

} // namespace

/// A block that a private key gave back: unpadded, it is what the naive twins say.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Bytes block(data, data + std::min<std::size_t>(size, 1024));
    std::uint64_t length = 0;
    const bool good = constant_time::Declassify(rsa_encoding::DecodePKCS1Message(block, length));
    const std::optional<Bytes> message = UnpadPKCS1(block);
    Require(good == message.has_value());
    Require(good ? length == message->size() : length == 0);

    if (block.size() < 2 * digestSize + 2)
        return 0;
    CompareOAEP(block);
    // The same bytes as the data under the masks, after a correct label: past the first check.
    Bytes data0(block.begin() + 1 + digestSize, block.end());
    const element label = ICryptoHash::Create(algorithm::sha1)->digestOf({});
    std::copy_n(label.data(), digestSize, data0.begin());
    const Bytes seed(block.begin() + 1, block.begin() + 1 + digestSize);
    const Bytes masked = Xor(data0, Mask(seed, data0.size()));
    const Bytes maskedSeed = Xor(seed, Mask(masked, digestSize));
    Bytes made(1, block[0]);
    made.insert(made.end(), maskedSeed.begin(), maskedSeed.end());
    made.insert(made.end(), masked.begin(), masked.end());
    CompareOAEP(made);
    return 0;
}
