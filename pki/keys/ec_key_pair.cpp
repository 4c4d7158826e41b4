#include "pki/keys/ec_key_pair.h"

#include "core/base/algorithm.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/hash/hash.h"
#include "pki/keys/key_encoding.h"
#include "pki/keys/key_objects.h"

using namespace ccrypto;

namespace {

/// Whether a digest is as long as those of the hash with this id.
bool IsDigestOf(algorithm::Id hash, std::span<const std::uint8_t> digest)
{
    CCryptoAutoLogger logger("IsDigestOf");
    const std::unique_ptr<ICryptoHash> function = ICryptoHash::Create(hash);
    if (function == nullptr)
        return logger.fail(false, "No hash has the id %u", hash);
    if (digest.size() != function->digestSize())
        return logger.fail(false, "A digest of %s has %u bytes, not %zu", function->name(), function->digestSize(), digest.size());
    return logger.setResult(true);
}

} // namespace

algorithm::Id CCryptoECKeyPair::algorithmId() const
{
    return key_->curve().signs ? algorithm::ecPublicKey : key_->curve().id;
}

std::uint32_t CCryptoECKeyPair::signatureSize() const
{
    // Two INTEGERs of a leading zero byte and the order's bytes, their identifiers and lengths, and those of the SEQUENCE.
    const std::uint32_t content = 2 * (2 + 1 + key_->curve().orderBytes);
    return content + (content < 128 ? 2 : 3);
}

std::vector<SCryptoKeyNumber> CCryptoECKeyPair::publicNumbers() const
{
    return {{"publicPoint", key_->publicPoint()}};
}

std::vector<SCryptoKeyNumber> CCryptoECKeyPair::privateNumbers() const
{
    if (!hasPrivate())
        return {};
    return {{"privateScalar", key_->privateScalar()}};
}

element CCryptoECKeyPair::publicKeyInfo() const
{
    return PublicKeyInfoOf(*key_);
}

element CCryptoECKeyPair::privateKeyInfo() const
{
    return PrivateKeyInfoOf(*key_);
}

std::unique_ptr<ICryptoKeyPair> CCryptoECKeyPair::publicHalf() const
{
    std::unique_ptr<CCryptoEC> half = key_->publicHalf();
    return half != nullptr ? std::make_unique<CCryptoECKeyPair>(std::move(half)) : nullptr;
}

element CCryptoECKeyPair::ownForm(KeyForm form) const
{
    return form == KeyForm::ecPrivateKey ? ECPrivateKeyOf(*key_) : element();
}

element CCryptoECKeyPair::sign(algorithm::Id hash, std::span<const std::uint8_t> digest, const SCryptoPadding&)
{
    return IsDigestOf(hash, digest) ? key_->signHash(digest, SignatureForm::der) : element();
}

bool CCryptoECKeyPair::verify(algorithm::Id hash, std::span<const std::uint8_t> digest, std::span<const std::uint8_t> signature,
                              const SCryptoPadding&) const
{
    return IsDigestOf(hash, digest) && key_->verifyHash(digest, signature, SignatureForm::der);
}

element CCryptoECKeyPair::agree(const ICryptoKeyPair& peer)
{
    CCryptoAutoLogger logger("CCryptoECKeyPair::agree");
    if (peer.curveId() != curveId())
        return logger.fail(element(), "A key on %s does not agree with %s", name(), peer.name());
    // The peer's key need not be in memory.
    CCryptoSubjectPublicKeyInfo info;
    if (!info.ParseDer(peer.publicKeyInfo()))
        return logger.fail(element(), "The peer's public key is not available");
    element secret = key_->agree(info.publicKey.bytes());
    logger.setResult(!secret.isEmpty());
    return secret;
}
