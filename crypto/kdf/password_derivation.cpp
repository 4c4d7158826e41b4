#include "core/base/byte_order.h"
#include "core/diagnostics/auto_logger.h"
#include "core/memory/wiped.h"
#include "crypto/hash/digest_chain.h"
#include "crypto/hash/hash_kinds.h"
#include "crypto/kdf/key_derivation.h"
#include "crypto/mac/hmac.h"

#include <algorithm>
#include <array>

using namespace ccrypto;

namespace {

using Bytes = CCryptoKeyDerivation::Bytes;
using Digest = Wiped<std::array<std::uint8_t, maxDigestSize>>;

/// Which hash functions a derivation is defined over.
enum class HashFamily { upToSHA2, upToSHA3 };

struct Request {
    HashFamily family;
    algorithm::Id hashId;
    Bytes password;
    Bytes salt;
    std::uint32_t iterations;
    std::uint32_t length;
};

/// The hash of a request that is within the bounds; null, logged, for any other.
std::unique_ptr<ICryptoHash> HashFor(CCryptoAutoLogger& logger, const Request& request)
{
    using Limits = CCryptoKeyDerivation;
    const auto refuse = [&logger](const char* what, std::uint64_t value, std::uint64_t most) {
        return logger.fail(std::unique_ptr<ICryptoHash>(), "%s out of bounds: %llu of %llu", what,
                           static_cast<unsigned long long>(value), static_cast<unsigned long long>(most));
    };
    if (request.password.size() > Limits::maxInput)
        return refuse("Length of the password", request.password.size(), Limits::maxInput);
    if (request.salt.size() > Limits::maxInput)
        return refuse("Length of the salt", request.salt.size(), Limits::maxInput);
    if (request.length == 0 || request.length > Limits::maxKey)
        return refuse("Length of the key", request.length, Limits::maxKey);

    auto hash = ICryptoHash::Create(request.hashId);
    const bool isOfFamily = hash != nullptr && (request.family == HashFamily::upToSHA2 ? digest_chain::Knows(request.hashId)
                                                                                       : ccrypto::internal::IsHashForKeys(*hash));
    if (!isOfFamily)
        return logger.fail(std::unique_ptr<ICryptoHash>(), "Unsupported hash function: %d", static_cast<int>(request.hashId));
    const std::uint64_t digests = (request.length - 1) / hash->digestSize() + 1;
    if (request.iterations == 0 || request.iterations * digests > Limits::maxIterations)
        return refuse("Number of iterations", request.iterations * digests, Limits::maxIterations);
    return hash;
}

/// The chain of PBKDF2 over any hash: each MAC is that of the one before, and is added to `sum`.
void SumOfMACs(CCryptoHMAC& mac, Digest& link, Digest& sum, std::uint32_t times)
{
    for (; times != 0; --times) {
        mac.update(link.data(), mac.macSize());
        mac.final(link.data());
        for (std::uint32_t i = 0; i < mac.macSize(); ++i)
            sum[i] ^= link[i];
    }
}

/// Text repeated until it fills whole blocks (RFC 7292, B.2, steps 2 and 3).
std::size_t FilledLength(Bytes text, std::size_t block)
{
    return (text.size() + block - 1) / block * block;
}

void FillWith(std::span<std::uint8_t> target, Bytes text)
{
    for (std::size_t i = 0; i < target.size(); ++i)
        target[i] = text[i % text.size()];
}

/// Adds `digest`, repeated, and 1 to a block that is one big-endian number.
void AddRepeated(std::span<std::uint8_t> block, std::span<const std::uint8_t> digest)
{
    std::uint32_t carry = 1;
    for (std::size_t i = block.size(); i-- != 0;) {
        carry += std::uint32_t{block[i]} + digest[i % digest.size()];
        block[i] = static_cast<std::uint8_t>(carry);
        carry >>= 8;
    }
}

} // namespace

bool CCryptoKeyDerivation::Allows(algorithm::Id hashId, Bytes salt, std::uint32_t iterations, std::uint32_t length)
{
    CCryptoAutoLogger logger("CCryptoKeyDerivation::Allows");
    return HashFor(logger, {HashFamily::upToSHA3, HashOfHMAC(hashId), {}, salt, iterations, length}) != nullptr &&
           logger.setResult(true);
}

element CCryptoKeyDerivation::PBKDF1(algorithm::Id hashId, Bytes password, Bytes salt, std::uint32_t iterations,
                                     std::uint32_t length)
{
    CCryptoAutoLogger logger("CCryptoKeyDerivation::PBKDF1");

    hashId = HashOfHMAC(hashId);
    const auto hash = HashFor(logger, {HashFamily::upToSHA2, hashId, password, salt, iterations, length});
    if (hash == nullptr)
        return {};
    if (length > hash->digestSize())
        return logger.fail(element(), "PBKDF1 gives no key of %u bytes", length);
    hash->update(password);
    hash->update(salt);
    element key = hash->final();
    digest_chain::Rehash(hashId, key.data(), iterations - 1);
    key.erase(length, key.length() - length);
    logger.setResult(true);
    return key;
}

element CCryptoKeyDerivation::PBKDF2(algorithm::Id hashId, Bytes password, Bytes salt, std::uint32_t iterations,
                                     std::uint32_t length)
{
    CCryptoAutoLogger logger("CCryptoKeyDerivation::PBKDF2");

    hashId = HashOfHMAC(hashId);
    auto hash = HashFor(logger, {HashFamily::upToSHA3, hashId, password, salt, iterations, length});
    if (hash == nullptr)
        return {};
    const std::uint32_t size = hash->digestSize();
    element shortened;
    if (password.size() > hash->blockSize()) {
        shortened = hash->digestOf(password);
        password = shortened.bytes();
    }
    CCryptoHMAC mac(std::move(hash));
    mac.setKey(password);

    element key;
    key.reserve(length);
    for (std::uint32_t number = 1; key.length() < length; ++number) {
        std::uint8_t numberBytes[4];
        StoreWord<std::uint32_t, std::endian::big>(numberBytes, number);
        Digest first;
        mac.update(salt);
        mac.update(numberBytes, sizeof numberBytes);
        mac.final(first.data());
        Digest sum = first;
        // SHA-3 goes the long way.
        if (!digest_chain::SumOfMACs(hashId, password.data(), static_cast<std::uint32_t>(password.size()), first.data(), sum.data(),
                                     iterations - 1))
            SumOfMACs(mac, first, sum, iterations - 1);
        key.append(sum.data(), std::min(size, length - key.length()));
    }
    logger.setResult(true);
    return key;
}

element CCryptoKeyDerivation::PKCS12(algorithm::Id hashId, PKCS12Use use, Bytes password, Bytes salt, std::uint32_t iterations,
                                     std::uint32_t length)
{
    CCryptoAutoLogger logger("CCryptoKeyDerivation::PKCS12");

    hashId = HashOfHMAC(hashId);
    const auto hash = HashFor(logger, {HashFamily::upToSHA2, hashId, password, salt, iterations, length});
    if (hash == nullptr)
        return {};
    const std::uint32_t size = hash->digestSize();
    const std::uint32_t block = hash->blockSize();
    const std::size_t saltLength = FilledLength(salt, block);
    WipedArray<std::uint8_t> input(saltLength + FilledLength(password, block));
    FillWith({input.data(), saltLength}, salt);
    FillWith({input.data() + saltLength, input.size() - saltLength}, password);
    std::array<std::uint8_t, maxHashBlockSize> diversifier;
    diversifier.fill(static_cast<std::uint8_t>(use));

    element key;
    key.reserve(length);
    for (;;) {
        Digest digest;
        hash->update(diversifier.data(), block);
        hash->update(input.data(), input.size());
        hash->final(digest.data());
        digest_chain::Rehash(hashId, digest.data(), iterations - 1);
        key.append(digest.data(), std::min(size, length - key.length()));
        if (key.length() == length)
            break;
        for (std::size_t i = 0; i < input.size(); i += block)
            AddRepeated({input.data() + i, block}, {digest.data(), size});
    }
    logger.setResult(true);
    return key;
}

element CCryptoKeyDerivation::PKCS12Password(std::string_view text)
{
    CCryptoAutoLogger logger("CCryptoKeyDerivation::PKCS12Password");

    element given(text);
    given.setType(ElementType::utf8Text);
    element units;
    if (text.size() > maxInput || !given.toUtf16(units))
        return logger.fail(element(), "Password is no text");
    units.append(std::string_view("\0\0", 2));
    if constexpr (std::endian::native == std::endian::little)
        for (std::uint32_t i = 0; i + 1 < units.length(); i += 2)
            std::swap(units.data()[i], units.data()[i + 1]);
    units.setType(ElementType::bytes);
    logger.setResult(true);
    return units;
}
