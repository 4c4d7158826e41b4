#include "pki/keys/eddsa_key_pair.h"

#include "core/diagnostics/auto_logger.h"
#include "pki/keys/key_encoding.h"

using namespace ccrypto;

namespace {

/// A digest signed as if it were the message would be a signature of something else.
bool IsWholeMessage(algorithm::Id hash)
{
    CCryptoAutoLogger logger("IsWholeMessage");
    return hash == algorithm::none ? logger.setResult(true) : logger.fail(false, "The key signs messages, not digests");
}

} // namespace

std::uint32_t CCryptoEddsaKeyPair::keySize() const
{
    return key_->curve() == algorithm::ed25519 ? 255 : 448;
}

std::uint32_t CCryptoEddsaKeyPair::signatureSize() const
{
    return key_->curve() == algorithm::ed25519 ? 64 : 114;
}

std::vector<SCryptoKeyNumber> CCryptoEddsaKeyPair::publicNumbers() const
{
    return {{"publicKey", key_->publicKey()}};
}

std::vector<SCryptoKeyNumber> CCryptoEddsaKeyPair::privateNumbers() const
{
    if (!hasPrivate())
        return {};
    return {{"seed", key_->seed()}};
}

element CCryptoEddsaKeyPair::publicKeyInfo() const
{
    return PublicKeyInfoOf(*key_);
}

element CCryptoEddsaKeyPair::privateKeyInfo() const
{
    return PrivateKeyInfoOf(*key_);
}

std::unique_ptr<ICryptoKeyPair> CCryptoEddsaKeyPair::publicHalf() const
{
    std::unique_ptr<EddsaKey> half = EddsaKey::FromPublic(key_->curve(), key_->publicKey().bytes());
    return half != nullptr ? std::make_unique<CCryptoEddsaKeyPair>(std::move(half)) : nullptr;
}

element CCryptoEddsaKeyPair::sign(algorithm::Id hash, std::span<const std::uint8_t> message, const SCryptoPadding&)
{
    return IsWholeMessage(hash) ? key_->sign(message) : element();
}

bool CCryptoEddsaKeyPair::verify(algorithm::Id hash, std::span<const std::uint8_t> message, std::span<const std::uint8_t> signature,
                                 const SCryptoPadding&) const
{
    return IsWholeMessage(hash) && key_->verify(message, signature);
}
