#include "pki/keys/rsa_key_pair.h"

#include "core/base/algorithm.h"
#include "pki/keys/key_encoding.h"

#include <algorithm>

using namespace ccrypto;

algorithm::Id CCryptoRSAKeyPair::algorithmId() const
{
    return algorithm::rsaEncryption;
}

std::vector<SCryptoKeyNumber> CCryptoRSAKeyPair::publicNumbers() const
{
    return {{"modulus", key_->modulus()}, {"publicExponent", key_->publicExponent()}};
}

std::vector<SCryptoKeyNumber> CCryptoRSAKeyPair::privateNumbers() const
{
    if (!hasPrivate())
        return {};
    const CCryptoRSANumbers numbers = key_->numbers();
    return {{"privateExponent", numbers.privateExponent},
            {"prime1", numbers.prime1},
            {"prime2", numbers.prime2},
            {"exponent1", numbers.exponent1},
            {"exponent2", numbers.exponent2},
            {"coefficient", numbers.coefficient}};
}

element CCryptoRSAKeyPair::publicKeyInfo() const
{
    return PublicKeyInfoOf(*key_, limits_ ? &limits_->algorithm : nullptr);
}

element CCryptoRSAKeyPair::privateKeyInfo() const
{
    return PrivateKeyInfoOf(*key_, limits_ ? &limits_->algorithm : nullptr);
}

element CCryptoRSAKeyPair::ownForm(KeyForm form) const
{
    // The forms of PKCS#1 cannot say that a key is limited to PSS.
    if (isForPss())
        return {};
    if (form == KeyForm::rsaPublicKey)
        return RSAPublicKeyOf(*key_);
    return form == KeyForm::rsaPrivateKey ? RSAPrivateKeyOf(*key_) : element();
}

std::unique_ptr<ICryptoKeyPair> CCryptoRSAKeyPair::publicHalf() const
{
    std::unique_ptr<CCryptoRSA> half = key_->publicKey();
    return half != nullptr ? std::make_unique<CCryptoRSAKeyPair>(std::move(half), limits_) : nullptr;
}

namespace {

/// The masking of a signature is over the hash of the digest unless it names another.
CCryptoRSAPadding MaskingFor(const SCryptoPadding& padding, algorithm::Id hash)
{
    CCryptoRSAPadding masking = padding.masking;
    if (masking.maskHash == algorithm::none)
        masking.maskHash = hash;
    masking.hash = hash;
    return masking;
}

} // namespace

element CCryptoRSAKeyPair::sign(algorithm::Id hash, std::span<const std::uint8_t> digest, const SCryptoPadding& padding)
{
    if (limits_ && !limits_->allow(hash, padding))
        return {};
    if (padding.scheme == SCryptoPadding::Scheme::masked)
        return key_->signPSS(MaskingFor(padding, hash), digest);
    return key_->signPKCS1(hash, digest);
}

bool CCryptoRSAKeyPair::verify(algorithm::Id hash, std::span<const std::uint8_t> digest, std::span<const std::uint8_t> signature,
                               const SCryptoPadding& padding) const
{
    if (limits_ && !limits_->allow(hash, padding))
        return false;
    if (padding.scheme == SCryptoPadding::Scheme::masked) {
        CCryptoRSAPadding masking = MaskingFor(padding, hash);
        if (limits_)
            masking.minSaltLength = std::max(masking.minSaltLength, limits_->minSaltLength);
        return key_->verifyPSS(masking, digest, signature);
    }
    return key_->verifyPKCS1(hash, digest, signature);
}

element CCryptoRSAKeyPair::encrypt(std::span<const std::uint8_t> text, const SCryptoPadding& padding) const
{
    return padding.scheme == SCryptoPadding::Scheme::masked ? key_->encryptOAEP(padding.masking, text) : key_->encryptPKCS1(text);
}

bool CCryptoRSAKeyPair::decrypt(std::span<const std::uint8_t> ciphertext, element& text, const SCryptoPadding& padding)
{
    if (padding.scheme == SCryptoPadding::Scheme::masked)
        return key_->decryptOAEP(padding.masking, ciphertext, text);
    return key_->decryptPKCS1(ciphertext, text);
}

bool CCryptoRSAKeyPair::unwrap(std::span<const std::uint8_t> ciphertext, std::uint32_t length, element& text)
{
    return key_->unwrapPKCS1(ciphertext, length, text);
}
