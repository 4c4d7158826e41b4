#include "pki/keys/rsa_key_pair.h"

#include "core/base/algorithm.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/keys/key_encoding.h"

using namespace ccrypto;

std::uint32_t CCryptoRSAKeyPair::algorithmId() const
{
    return algorithm::rsaEncryption;
}

element CCryptoRSAKeyPair::publicKeyInfo() const
{
    return PublicKeyInfoOf(*key_, limits_ ? &limits_->algorithm : nullptr);
}

element CCryptoRSAKeyPair::privateKeyInfo() const
{
    return PrivateKeyInfoOf(*key_, limits_ ? &limits_->algorithm : nullptr);
}

std::unique_ptr<ICryptoKeyPair> CCryptoRSAKeyPair::publicHalf() const
{
    std::unique_ptr<CCryptoRSA> half = key_->publicKey();
    return half != nullptr ? std::make_unique<CCryptoRSAKeyPair>(std::move(half), limits_) : nullptr;
}

namespace {

bool Encrypts(const std::optional<PssLimits>& limits)
{
    CCryptoAutoLogger logger("Encrypts");
    return limits ? logger.fail(false, "The key is for signatures with PSS alone") : logger.setResult(true);
}

/// The masking of a signature is over the hash of the digest unless it names another.
CCryptoRSAPadding MaskingFor(const SCryptoPadding& padding, std::uint32_t hash)
{
    CCryptoRSAPadding masking = padding.masking;
    if (masking.maskHash == 0)
        masking.maskHash = hash;
    masking.hash = hash;
    return masking;
}

} // namespace

element CCryptoRSAKeyPair::signHash(std::uint32_t hash, std::span<const std::uint8_t> digest, const SCryptoPadding& padding)
{
    if (limits_ && !limits_->allow(hash, padding))
        return {};
    if (padding.scheme == SCryptoPadding::Scheme::masked)
        return key_->signPSS(MaskingFor(padding, hash), digest);
    return key_->signPKCS1(hash, digest);
}

bool CCryptoRSAKeyPair::verifyHash(std::uint32_t hash, std::span<const std::uint8_t> digest,
                                   std::span<const std::uint8_t> signature, const SCryptoPadding& padding) const
{
    if (limits_ && !limits_->allow(hash, padding))
        return false;
    if (padding.scheme == SCryptoPadding::Scheme::masked)
        return key_->verifyPSS(MaskingFor(padding, hash), digest, signature);
    return key_->verifyPKCS1(hash, digest, signature);
}

element CCryptoRSAKeyPair::encrypt(std::span<const std::uint8_t> text, const SCryptoPadding& padding) const
{
    if (!Encrypts(limits_))
        return {};
    return padding.scheme == SCryptoPadding::Scheme::masked ? key_->encryptOAEP(padding.masking, text) : key_->encryptPKCS1(text);
}

bool CCryptoRSAKeyPair::decrypt(std::span<const std::uint8_t> ciphertext, element& text, const SCryptoPadding& padding)
{
    text.clear();
    if (!Encrypts(limits_))
        return false;
    if (padding.scheme == SCryptoPadding::Scheme::masked)
        return key_->decryptOAEP(padding.masking, ciphertext, text);
    return key_->decryptPKCS1(ciphertext, text);
}

bool CCryptoRSAKeyPair::unwrap(std::span<const std::uint8_t> ciphertext, std::uint32_t length, element& text)
{
    text.clear();
    if (!Encrypts(limits_))
        return false;
    return key_->unwrapPKCS1(ciphertext, length, text);
}

element CCryptoRSAKeyPair::agree(const ICryptoKeyPair&)
{
    CCryptoAutoLogger logger("CCryptoRSAKeyPair::agree");
    return logger.fail(element(), "An RSA key does not agree on secrets");
}
