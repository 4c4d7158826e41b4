#pragma once

#include "crypto/dsa/dsa.h"
#include "pki/keys/key_pair.h"

#include <memory>
#include <utility>

/// A public key of DSA in memory. It verifies and does nothing else.
///
/// A certificate may leave the parameters p, q and g out; they are then those of its issuer's key (RFC 3279, 2.3.2). Such a key is
/// incomplete: it verifies nothing until completedBy() made a whole one of it.
class CCryptoDSAKeyPair final : public ICryptoKeyPair, public ICryptoSigner {
public:
    /// Takes the key, which must not be null.
    explicit CCryptoDSAKeyPair(std::unique_ptr<CCryptoDSA> key) : key_(std::move(key)), publicValue_(key_->numbers().publicValue) {}
    /// An incomplete key. \return null, logged, for a value that is longer than those of any key.
    [[nodiscard]] static std::unique_ptr<CCryptoDSAKeyPair> WithoutParameters(const element& publicValue);

    [[nodiscard]] bool isComplete() const { return key_ != nullptr; }
    /// This public value with the parameters of `issuer`. \return null, logged, when that is not a complete key of DSA and when the
    /// value does not belong to its parameters.
    [[nodiscard]] std::unique_ptr<CCryptoDSAKeyPair> completedBy(const ICryptoKeyPair& issuer) const;

    ccrypto::algorithm::Id algorithmId() const override { return ccrypto::algorithm::dsa; }
    ccrypto::algorithm::Id curveId() const override { return ccrypto::algorithm::none; }
    const char* name() const override { return "DSA"; }
    /// Bits of p; 0 when it is incomplete.
    std::uint32_t keySize() const override { return isComplete() ? key_->bits() : 0; }
    bool hasPrivate() const override { return false; }

    [[nodiscard]] std::vector<SCryptoKeyNumber> publicNumbers() const override;
    [[nodiscard]] std::vector<SCryptoKeyNumber> privateNumbers() const override { return {}; }

    [[nodiscard]] element publicKeyInfo() const override;
    [[nodiscard]] element privateKeyInfo() const override;
    [[nodiscard]] element ownForm(ccrypto::KeyForm) const override { return {}; }
    [[nodiscard]] std::unique_ptr<ICryptoKeyPair> publicHalf() const override;

    /// Null when it is incomplete.
    ICryptoSigner* signer() override { return isComplete() ? this : nullptr; }
    ICryptoDecrypter* decrypter() override { return nullptr; }
    ICryptoKeyAgreement* agreement() override { return nullptr; }

    std::uint32_t signatureSize() const override;
    bool signsMessages() const override { return false; }
    /// Fails, logged.
    [[nodiscard]] element sign(ccrypto::algorithm::Id hash, std::span<const std::uint8_t> digest,
                               const SCryptoPadding& padding = {}) override;
    [[nodiscard]] bool verify(ccrypto::algorithm::Id hash, std::span<const std::uint8_t> digest,
                              std::span<const std::uint8_t> signature, const SCryptoPadding& padding = {}) const override;

private:
    explicit CCryptoDSAKeyPair(element publicValue) : publicValue_(std::move(publicValue)) {}

    CCryptoDSANumbers numbers() const;

    std::unique_ptr<CCryptoDSA> key_; ///< null when it is incomplete
    element publicValue_;
};

namespace ccrypto {

/// The key of a certificate whose issuer has the key `issuer`: itself, or for an incomplete key of DSA one with the parameters of
/// `issuer`. \return null, logged, when there are none to inherit.
[[nodiscard]] std::shared_ptr<ICryptoKeyPair> WithInheritedParameters(const std::shared_ptr<ICryptoKeyPair>& key,
                                                                      const ICryptoKeyPair& issuer);

} // namespace ccrypto
