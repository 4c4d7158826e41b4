#include "core/base/algorithm.h"
#include "core/base/byte_order.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/hash/hash_kinds.h"
#include "crypto/kdf/key_derivation.h"
#include "crypto/mac/hmac.h"

#include <algorithm>

using namespace ccrypto;

namespace {

std::unique_ptr<ICryptoHash> HashForKeys(algorithm::Id hashId)
{
    std::unique_ptr<ICryptoHash> hash = ICryptoHash::Create(HashOfHMAC(hashId));
    return hash != nullptr && ccrypto::internal::IsHashForKeys(*hash) ? std::move(hash) : nullptr;
}

std::unique_ptr<CCryptoHMAC> MACOver(algorithm::Id hashId)
{
    std::unique_ptr<ICryptoHash> hash = HashForKeys(hashId);
    return hash != nullptr ? std::make_unique<CCryptoHMAC>(std::move(hash)) : nullptr;
}

} // namespace

element CCryptoKeyDerivation::HKDFExtract(algorithm::Id hashId, Bytes salt, Bytes secret)
{
    CCryptoAutoLogger logger("CCryptoKeyDerivation::HKDFExtract");

    if (salt.size() > maxInput || secret.size() > maxInput)
        return logger.fail(element(), "Salt or secret is longer than %u bytes", maxInput);
    const auto mac = MACOver(hashId);
    if (mac == nullptr)
        return logger.fail(element(), "Unsupported hash function: %d", static_cast<int>(hashId));
    // A key of zeros is the empty one, since HMAC fills it up with zeros.
    mac->setKey(salt);
    logger.setResult(true);
    return mac->macOf(secret);
}

element CCryptoKeyDerivation::HKDFExpand(algorithm::Id hashId, Bytes key, Bytes info, std::uint32_t length)
{
    CCryptoAutoLogger logger("CCryptoKeyDerivation::HKDFExpand");

    if (key.size() > maxInput || info.size() > maxInput)
        return logger.fail(element(), "Key or info is longer than %u bytes", maxInput);
    const auto mac = MACOver(hashId);
    if (mac == nullptr)
        return logger.fail(element(), "Unsupported hash function: %d", static_cast<int>(hashId));
    if (key.size() < mac->macSize())
        return logger.fail(element(), "Key is shorter than a digest");
    if (length == 0 || length > 255 * mac->macSize())
        return logger.fail(element(), "HKDF gives no key of %u bytes", length);

    mac->setKey(key);
    element derived;
    derived.reserve(length);
    element part;
    for (std::uint8_t number = 1; derived.length() < length; ++number) {
        mac->update(part.bytes());
        mac->update(info);
        mac->update(&number, 1);
        part = mac->final();
        derived.append(part.data(), std::min(part.length(), length - derived.length()));
    }
    logger.setResult(true);
    return derived;
}

element CCryptoKeyDerivation::HKDF(algorithm::Id hashId, Bytes salt, Bytes secret, Bytes info, std::uint32_t length)
{
    const element key = HKDFExtract(hashId, salt, secret);
    return key.isEmpty() ? element() : HKDFExpand(hashId, key.bytes(), info, length);
}

element CCryptoKeyDerivation::X963(algorithm::Id hashId, Bytes secret, Bytes info, std::uint32_t length)
{
    CCryptoAutoLogger logger("CCryptoKeyDerivation::X963");

    if (secret.empty() || secret.size() > maxInput || info.size() > maxInput)
        return logger.fail(element(), "Secret is empty, or secret or info is longer than %u bytes", maxInput);
    const auto hash = HashForKeys(hashId);
    if (hash == nullptr)
        return logger.fail(element(), "Unsupported hash function: %d", static_cast<int>(hashId));
    if (length == 0 || length > maxKey)
        return logger.fail(element(), "X9.63 gives no key of %u bytes", length);

    element derived;
    derived.reserve(length);
    for (std::uint32_t counter = 1; derived.length() < length; ++counter) {
        std::uint8_t counterBytes[sizeof counter];
        StoreWord<std::uint32_t, std::endian::big>(counterBytes, counter);
        hash->update(secret);
        hash->update(counterBytes);
        hash->update(info);
        const element digest = hash->final();
        derived.append(digest.data(), std::min(digest.length(), length - derived.length()));
    }
    logger.setResult(true);
    return derived;
}
