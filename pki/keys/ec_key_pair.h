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

    std::vector<SCryptoKeyNumber> publicNumbers() const override;
    std::vector<SCryptoKeyNumber> privateNumbers() const override;

    element publicKeyInfo() const override;
    element privateKeyInfo() const override;
    element ownForm(ccrypto::KeyForm form) const override;
    std::unique_ptr<ICryptoKeyPair> publicHalf() const override;

    ICryptoSigner* signer() override { return key_->curve().signs ? this : nullptr; }
    ICryptoDecrypter* decrypter() override { return nullptr; }
    ICryptoKeyAgreement* agreement() override { return this; }

    std::uint32_t signatureSize() const override;
    bool signsMessages() const override { return false; }
    element sign(ccrypto::algorithm::Id hash, std::span<const std::uint8_t> digest, const SCryptoPadding& padding = {}) override;
    bool verify(ccrypto::algorithm::Id hash, std::span<const std::uint8_t> digest, std::span<const std::uint8_t> signature,
                const SCryptoPadding& padding = {}) const override;

    element agree(const ICryptoKeyPair& peer) override;

private:
    std::unique_ptr<CCryptoEC> key_;
};
