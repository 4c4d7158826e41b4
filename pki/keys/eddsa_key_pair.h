#pragma once

#include "crypto/ec/eddsa.h"
#include "pki/keys/key_pair.h"

#include <memory>
#include <utility>

/// A key of Ed25519 or Ed448 (RFC 8032) in memory. It signs whole messages, without context.
class CCryptoEddsaKeyPair final : public ICryptoKeyPair, public ICryptoSigner {
public:
    /// Takes the key, which must not be null.
    explicit CCryptoEddsaKeyPair(std::unique_ptr<ccrypto::EddsaKey> key) : key_(std::move(key)) {}

    [[nodiscard]] const ccrypto::EddsaKey& key() const { return *key_; }

    ccrypto::algorithm::Id algorithmId() const override { return key_->curve(); }
    ccrypto::algorithm::Id curveId() const override { return key_->curve(); }
    const char* name() const override { return key_->name(); }
    std::uint32_t keySize() const override;
    bool hasPrivate() const override { return key_->hasPrivate(); }

    [[nodiscard]] std::vector<SCryptoKeyNumber> publicNumbers() const override;
    [[nodiscard]] std::vector<SCryptoKeyNumber> privateNumbers() const override;

    [[nodiscard]] element publicKeyInfo() const override;
    [[nodiscard]] element privateKeyInfo() const override;
    [[nodiscard]] element ownForm(ccrypto::KeyForm) const override { return {}; }
    [[nodiscard]] std::unique_ptr<ICryptoKeyPair> publicHalf() const override;

    ICryptoSigner* signer() override { return this; }
    ICryptoDecrypter* decrypter() override { return nullptr; }
    ICryptoKeyAgreement* agreement() override { return nullptr; }

    std::uint32_t signatureSize() const override;
    bool signsMessages() const override { return true; }
    [[nodiscard]] element sign(ccrypto::algorithm::Id hash, std::span<const std::uint8_t> message,
                               const SCryptoPadding& padding = {}) override;
    [[nodiscard]] bool verify(ccrypto::algorithm::Id hash, std::span<const std::uint8_t> message,
                              std::span<const std::uint8_t> signature, const SCryptoPadding& padding = {}) const override;

private:
    std::unique_ptr<ccrypto::EddsaKey> key_;
};
