#include "crypto/cipher/key_wrap.h"

#include "core/diagnostics/auto_logger.h"
#include "core/memory/wiped.h"
#include "crypto/base/block_bytes.h"
#include "crypto/base/constant_time.h"
#include "crypto/cipher/aes.h"

#include <array>
#include <cstring>

using namespace ccrypto;

using constant_time::Mask;

namespace {

constexpr std::size_t halfBlock = 8;
constexpr unsigned wrappingRounds = 6;
constexpr std::uint64_t integrityCheck = 0xA6A6A6A6A6A6A6A6; // RFC 3394, 2.2.3.1
constexpr std::uint32_t paddedCheck = 0xA65959A6;            // RFC 5649, 3

/// The first half is the check value or the running one, the second the half block that is worked on.
using WrapBlock = Wiped<std::array<std::uint8_t, 2 * halfBlock>>;

std::size_t RoundedUp(std::size_t length)
{
    return (length + halfBlock - 1) / halfBlock * halfBlock;
}

void XorCounter(WrapBlock& block, std::uint64_t counter)
{
    block_bytes::Store64(block.data(), block_bytes::Load64(block.data()) ^ counter);
}

/// RFC 3394, 2.2.1, in place: `all` is the check value and two half blocks or more.
void WrapBlocks(const CCryptoAES& cipher, std::span<std::uint8_t> all)
{
    WrapBlock block;
    std::memcpy(block.data(), all.data(), halfBlock);
    std::uint64_t counter = 0;
    for (unsigned round = 0; round < wrappingRounds; ++round) {
        for (std::size_t at = halfBlock; at < all.size(); at += halfBlock) {
            std::memcpy(block.data() + halfBlock, all.data() + at, halfBlock);
            cipher.encrypt(block.data(), block.data(), 1);
            XorCounter(block, ++counter);
            std::memcpy(all.data() + at, block.data() + halfBlock, halfBlock);
        }
    }
    std::memcpy(all.data(), block.data(), halfBlock);
}

/// RFC 3394, 2.2.2.
void UnwrapBlocks(const CCryptoAES& cipher, std::span<std::uint8_t> all)
{
    WrapBlock block;
    std::memcpy(block.data(), all.data(), halfBlock);
    std::uint64_t counter = wrappingRounds * (all.size() / halfBlock - 1);
    for (unsigned round = 0; round < wrappingRounds; ++round) {
        for (std::size_t at = all.size() - halfBlock; at >= halfBlock; at -= halfBlock) {
            std::memcpy(block.data() + halfBlock, all.data() + at, halfBlock);
            XorCounter(block, counter--);
            cipher.decrypt(block.data(), block.data(), 1);
            std::memcpy(all.data() + at, block.data() + halfBlock, halfBlock);
        }
    }
    std::memcpy(all.data(), block.data(), halfBlock);
}

/// The check value, the secret, and zeros up to a whole number of half blocks.
element WithCheckValue(std::uint64_t check, CCryptoKeyWrap::Bytes secret)
{
    element all;
    all.resize(static_cast<std::uint32_t>(halfBlock + RoundedUp(secret.size())));
    std::memset(all.data(), 0, all.length());
    block_bytes::Store64(all.data(), check);
    std::memcpy(all.data() + halfBlock, secret.data(), secret.size());
    return all;
}

element WithoutCheckValue(const element& all, std::uint64_t length)
{
    return element(all.data() + halfBlock, static_cast<std::uint32_t>(length));
}

constexpr const char* wrongSecretLength = "No secret of %zu bytes can be wrapped";
constexpr const char* wrongWrappedLength = "No wrapped key has %zu bytes";
constexpr const char* notWrappedHere = "The wrapped key is damaged, or was wrapped with another key";

} // namespace

element CCryptoKeyWrap::Wrap(Bytes key, Bytes secret)
{
    CCryptoAutoLogger logger("CCryptoKeyWrap::Wrap");

    if (secret.size() < 2 * halfBlock || secret.size() > maxSecret || secret.size() % halfBlock != 0)
        return logger.fail(element(), wrongSecretLength, secret.size());
    CCryptoAES cipher;
    if (!cipher.setKey(key))
        return logger.fail(element());
    element all = WithCheckValue(integrityCheck, secret);
    WrapBlocks(cipher, {all.data(), all.length()});
    logger.setResult(true);
    return all;
}

element CCryptoKeyWrap::Unwrap(Bytes key, Bytes wrapped)
{
    CCryptoAutoLogger logger("CCryptoKeyWrap::Unwrap");

    if (wrapped.size() < 3 * halfBlock || wrapped.size() > maxSecret + halfBlock || wrapped.size() % halfBlock != 0)
        return logger.fail(element(), wrongWrappedLength, wrapped.size());
    CCryptoAES cipher;
    if (!cipher.setKey(key))
        return logger.fail(element());
    element all(wrapped.data(), static_cast<std::uint32_t>(wrapped.size()));
    UnwrapBlocks(cipher, {all.data(), all.length()});
    if (!constant_time::Declassify(Mask::Equal(block_bytes::Load64(all.data()), integrityCheck)))
        return logger.fail(element(), notWrappedHere);
    logger.setResult(true);
    return WithoutCheckValue(all, all.length() - halfBlock);
}

element CCryptoKeyWrap::WrapPadded(Bytes key, Bytes secret)
{
    CCryptoAutoLogger logger("CCryptoKeyWrap::WrapPadded");

    if (secret.empty() || secret.size() > maxSecret)
        return logger.fail(element(), wrongSecretLength, secret.size());
    CCryptoAES cipher;
    if (!cipher.setKey(key))
        return logger.fail(element());
    element all = WithCheckValue(std::uint64_t{paddedCheck} << 32 | secret.size(), secret);
    // RFC 5649, 4.1: a single half block is enciphered with the check value as one block.
    if (all.length() == 2 * halfBlock)
        cipher.encrypt(all.data(), all.data(), 1);
    else
        WrapBlocks(cipher, {all.data(), all.length()});
    logger.setResult(true);
    return all;
}

element CCryptoKeyWrap::UnwrapPadded(Bytes key, Bytes wrapped)
{
    CCryptoAutoLogger logger("CCryptoKeyWrap::UnwrapPadded");

    if (wrapped.size() < 2 * halfBlock || wrapped.size() > maxSecret + halfBlock || wrapped.size() % halfBlock != 0)
        return logger.fail(element(), wrongWrappedLength, wrapped.size());
    CCryptoAES cipher;
    if (!cipher.setKey(key))
        return logger.fail(element());
    element all(wrapped.data(), static_cast<std::uint32_t>(wrapped.size()));
    if (all.length() == 2 * halfBlock)
        cipher.decrypt(all.data(), all.data(), 1);
    else
        UnwrapBlocks(cipher, {all.data(), all.length()});

    // RFC 5649, 3: less than a half block of zeros follows the secret.
    const std::uint64_t padded = wrapped.size() - halfBlock;
    const std::uint64_t length = block_bytes::Load32(all.data() + 4);
    Mask good = Mask::Equal(block_bytes::Load32(all.data()), paddedCheck);
    good &= Mask::Less(padded - halfBlock, length) & ~Mask::Less(padded, length);
    for (std::uint64_t i = padded - halfBlock; i < padded; ++i)
        good &= Mask::Less(i, length) | Mask::IsZero(all.data()[halfBlock + i]);
    if (!constant_time::Declassify(good))
        return logger.fail(element(), notWrappedHere);
    logger.setResult(true);
    return WithoutCheckValue(all, constant_time::Declassify(length));
}
