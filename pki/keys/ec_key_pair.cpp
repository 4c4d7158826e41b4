#include "pki/keys/ec_key_pair.h"

#include "core/base/algorithm.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/hash/hash.h"
#include "pki/keys/key_encoding.h"

using namespace ccrypto;

namespace {

constexpr const char* doesNotEncipher = "A key on a curve does not encipher";

/// Whether a digest is as long as those of the hash with this id.
bool IsDigestOf(std::uint32_t hash, std::span<const std::uint8_t> digest)
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

std::uint32_t CCryptoECKeyPair::algorithmId() const
{
    return key_->curve().signs ? algorithm::ecPublicKey : key_->curve().id;
}

std::uint32_t CCryptoECKeyPair::signatureSize() const
{
    if (!key_->curve().signs)
        return 0;
    // Two INTEGERs of a leading zero byte and the order's bytes, their identifiers and lengths, and those of the SEQUENCE.
    const std::uint32_t content = 2 * (2 + 1 + key_->curve().orderBytes);
    return content + (content < 128 ? 2 : 3);
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

element CCryptoECKeyPair::signHash(std::uint32_t hash, std::span<const std::uint8_t> digest, const SCryptoPadding&)
{
    return IsDigestOf(hash, digest) ? key_->signHash(digest, SignatureForm::der) : element();
}

bool CCryptoECKeyPair::verifyHash(std::uint32_t hash, std::span<const std::uint8_t> digest, std::span<const std::uint8_t> signature,
                                  const SCryptoPadding&) const
{
    return IsDigestOf(hash, digest) && key_->verifyHash(digest, signature, SignatureForm::der);
}

element CCryptoECKeyPair::encrypt(std::span<const std::uint8_t>, const SCryptoPadding&) const
{
    CCryptoAutoLogger logger("CCryptoECKeyPair::encrypt");
    return logger.fail(element(), "%s", doesNotEncipher);
}

bool CCryptoECKeyPair::decrypt(std::span<const std::uint8_t>, element& text, const SCryptoPadding&)
{
    CCryptoAutoLogger logger("CCryptoECKeyPair::decrypt");
    text.clear();
    return logger.fail(false, "%s", doesNotEncipher);
}

bool CCryptoECKeyPair::unwrap(std::span<const std::uint8_t>, std::uint32_t, element& text)
{
    CCryptoAutoLogger logger("CCryptoECKeyPair::unwrap");
    text.clear();
    return logger.fail(false, "%s", doesNotEncipher);
}

element CCryptoECKeyPair::agree(const ICryptoKeyPair& peer)
{
    CCryptoAutoLogger logger("CCryptoECKeyPair::agree");
    if (peer.curveId() != curveId())
        return logger.fail(element(), "A key on %s does not agree with %s", name(), peer.name());
    const std::unique_ptr<ICryptoKeyPair> other = LoadPublicKeyInfo(peer.publicKeyInfo());
    const auto* point = dynamic_cast<const CCryptoECKeyPair*>(other.get());
    if (point == nullptr)
        return logger.fail(element(), "The peer's public key is not to be had");
    element secret = key_->agree(point->key().publicPoint().bytes());
    logger.setResult(!secret.isEmpty());
    return secret;
}
