#pragma once

#include "crypto/ec/ec.h"
#include "pki/keys/key_pair.h"

/// A key on a curve in memory: agrees on secrets and, on curves other than X25519 and X448, signs.
class CCryptoECKeyPair final : public ICryptoKeyPair, public ICryptoSigner, public ICryptoKeyAgreement {
public:
    /// Takes the key, which must not be null.
    explicit CCryptoECKeyPair(std::unique_ptr<CCryptoEC> key) : key_(std::move(key)) {}

    [[nodiscard]] const CCryptoEC& key() const { return *key_; }

    ccrypto::algorithm::Id algorithmId() const override;
    ccrypto::algorithm::Id curveId() const override { return key_->curve().id; }
    const char* name() const override { return key_->curve().name; }
    std::uint32_t keySize() const override { return key_->curve().bits; }
    bool hasPrivate() const override { return key_->hasPrivate(); }

    [[nodiscard]] std::vector<SCryptoKeyNumber> publicNumbers() const override;
    [[nodiscard]] std::vector<SCryptoKeyNumber> privateNumbers() const override;

    [[nodiscard]] element publicKeyInfo() const override;
    [[nodiscard]] element privateKeyInfo() const override;
    [[nodiscard]] element ownForm(ccrypto::KeyForm form) const override;
    [[nodiscard]] std::unique_ptr<ICryptoKeyPair> publicHalf() const override;

    ICryptoSigner* signer() override { return key_->curve().signs ? this : nullptr; }
    ICryptoDecrypter* decrypter() override { return nullptr; }
    ICryptoKeyAgreement* agreement() override { return this; }

    std::uint32_t signatureSize() const override;
    bool signsMessages() const override { return false; }
    [[nodiscard]] element sign(ccrypto::algorithm::Id hash, std::span<const std::uint8_t> digest,
                               const SCryptoPadding& padding = {}) override;
    [[nodiscard]] bool verify(ccrypto::algorithm::Id hash, std::span<const std::uint8_t> digest,
                              std::span<const std::uint8_t> signature, const SCryptoPadding& padding = {}) const override;

    [[nodiscard]] element agree(const ICryptoKeyPair& peer) override;

private:
    std::unique_ptr<CCryptoEC> key_;
};
