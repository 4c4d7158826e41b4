#include "pki/keys/dsa_key_pair.h"

#include "core/diagnostics/auto_logger.h"
#include "crypto/hash/hash.h"
#include "pki/keys/key_encoding.h"

using namespace ccrypto;

std::unique_ptr<CCryptoDSAKeyPair> CCryptoDSAKeyPair::WithoutParameters(const element& publicValue)
{
    CCryptoAutoLogger logger("CCryptoDSAKeyPair::WithoutParameters");
    // One byte more holds the sign.
    if (publicValue.isEmpty() || publicValue.length() > CCryptoDSA::maxBits / 8 + 1)
        return logger.fail(std::unique_ptr<CCryptoDSAKeyPair>(), "No key has a public value of %u bytes", publicValue.length());
    logger.setResult(true);
    return std::unique_ptr<CCryptoDSAKeyPair>(new CCryptoDSAKeyPair(publicValue));
}

std::unique_ptr<CCryptoDSAKeyPair> CCryptoDSAKeyPair::completedBy(const ICryptoKeyPair& issuer) const
{
    CCryptoAutoLogger logger("CCryptoDSAKeyPair::completedBy");
    using Result = std::unique_ptr<CCryptoDSAKeyPair>;
    const auto* const whole = dynamic_cast<const CCryptoDSAKeyPair*>(&issuer);
    if (whole == nullptr || !whole->isComplete())
        return logger.fail(Result(), "The issuer's key has no parameters of DSA");
    CCryptoDSANumbers numbers = whole->numbers();
    numbers.publicValue = publicValue_;
    std::unique_ptr<CCryptoDSA> key = CCryptoDSA::FromPublic(numbers);
    logger.setResult(key != nullptr);
    return key != nullptr ? std::make_unique<CCryptoDSAKeyPair>(std::move(key)) : nullptr;
}

CCryptoDSANumbers CCryptoDSAKeyPair::numbers() const
{
    if (isComplete())
        return key_->numbers();
    CCryptoDSANumbers numbers;
    numbers.publicValue = publicValue_;
    return numbers;
}

std::vector<SCryptoKeyNumber> CCryptoDSAKeyPair::publicNumbers() const
{
    const CCryptoDSANumbers all = numbers();
    if (!isComplete())
        return {{"y", all.publicValue}};
    return {{"p", all.prime}, {"q", all.order}, {"g", all.generator}, {"y", all.publicValue}};
}

element CCryptoDSAKeyPair::publicKeyInfo() const
{
    return PublicKeyInfoOf(numbers());
}

element CCryptoDSAKeyPair::privateKeyInfo() const
{
    CCryptoAutoLogger logger("CCryptoDSAKeyPair::privateKeyInfo");
    return logger.fail(element(), "The key has no private half");
}

std::unique_ptr<ICryptoKeyPair> CCryptoDSAKeyPair::publicHalf() const
{
    if (!isComplete())
        return WithoutParameters(publicValue_);
    std::unique_ptr<CCryptoDSA> copy = CCryptoDSA::FromPublic(numbers());
    return copy != nullptr ? std::make_unique<CCryptoDSAKeyPair>(std::move(copy)) : nullptr;
}

std::uint32_t CCryptoDSAKeyPair::signatureSize() const
{
    // Two INTEGERs of a leading zero byte and the order's bytes, their identifiers and lengths, and those of the SEQUENCE.
    return isComplete() ? 2 + 2 * (2 + 1 + key_->orderBytes()) : 0;
}

element CCryptoDSAKeyPair::sign(algorithm::Id, std::span<const std::uint8_t>, const SCryptoPadding&)
{
    CCryptoAutoLogger logger("CCryptoDSAKeyPair::sign");
    return logger.fail(element(), "DSA only verifies");
}

bool CCryptoDSAKeyPair::verify(algorithm::Id hash, std::span<const std::uint8_t> digest, std::span<const std::uint8_t> signature,
                               const SCryptoPadding&) const
{
    CCryptoAutoLogger logger("CCryptoDSAKeyPair::verify");
    if (!isComplete())
        return logger.fail(false, "The key lacks the parameters that it inherits");
    const std::unique_ptr<ICryptoHash> function = ICryptoHash::Create(hash);
    if (function == nullptr || digest.size() != function->digestSize())
        return logger.fail(false, "No digest of hash %u has %zu bytes", hash, digest.size());
    return logger.setResult(key_->verifyHash(digest, signature, SignatureForm::der));
}

namespace ccrypto {

std::shared_ptr<ICryptoKeyPair> WithInheritedParameters(const std::shared_ptr<ICryptoKeyPair>& key, const ICryptoKeyPair& issuer)
{
    const auto* const inheriting = dynamic_cast<const CCryptoDSAKeyPair*>(key.get());
    return inheriting == nullptr || inheriting->isComplete() ? key : inheriting->completedBy(issuer);
}

} // namespace ccrypto
