#pragma once

#include "pki/keys/key_pair.h"
#include "pki/keys/pss_limits.h"

#include <optional>
#include <utility>

/// An RSA key in memory: signs and, unless it is limited to PSS, encrypts and decrypts.
class CCryptoRSAKeyPair final : public ICryptoKeyPair, public ICryptoSigner, public ICryptoDecrypter {
public:
    /// Takes the key, which must not be null.
    explicit CCryptoRSAKeyPair(std::unique_ptr<CCryptoRSA> key, std::optional<ccrypto::PssLimits> limits = {})
        : key_(std::move(key)), limits_(std::move(limits))
    {
    }

    [[nodiscard]] const CCryptoRSA& key() const { return *key_; }
    /// Whether the key is of the algorithm id-RSASSA-PSS: it signs with PSS and does nothing else.
    [[nodiscard]] bool isForPss() const { return limits_.has_value(); }

    ccrypto::algorithm::Id algorithmId() const override;
    ccrypto::algorithm::Id curveId() const override { return ccrypto::algorithm::none; }
    const char* name() const override { return isForPss() ? "RSA-PSS" : "RSA"; }
    std::uint32_t keySize() const override { return key_->bits(); }
    bool hasPrivate() const override { return key_->isPrivate(); }

    [[nodiscard]] std::vector<SCryptoKeyNumber> publicNumbers() const override;
    [[nodiscard]] std::vector<SCryptoKeyNumber> privateNumbers() const override;

    [[nodiscard]] element publicKeyInfo() const override;
    [[nodiscard]] element privateKeyInfo() const override;
    [[nodiscard]] element ownForm(ccrypto::KeyForm form) const override;
    [[nodiscard]] std::unique_ptr<ICryptoKeyPair> publicHalf() const override;

    ICryptoSigner* signer() override { return this; }
    /// Null when isForPss().
    ICryptoDecrypter* decrypter() override { return isForPss() ? nullptr : this; }
    ICryptoKeyAgreement* agreement() override { return nullptr; }

    std::uint32_t signatureSize() const override { return key_->bytes(); }
    bool signsMessages() const override { return false; }
    [[nodiscard]] element sign(ccrypto::algorithm::Id hash, std::span<const std::uint8_t> digest,
                               const SCryptoPadding& padding = {}) override;
    [[nodiscard]] bool verify(ccrypto::algorithm::Id hash, std::span<const std::uint8_t> digest,
                              std::span<const std::uint8_t> signature, const SCryptoPadding& padding = {}) const override;

private:
    // Reached through decrypter(), which keys limited to PSS do not give.
    [[nodiscard]] element encrypt(std::span<const std::uint8_t> text, const SCryptoPadding& padding = {}) const override;
    [[nodiscard]] bool decrypt(std::span<const std::uint8_t> ciphertext, element& text,
                               const SCryptoPadding& padding = {}) override;
    [[nodiscard]] bool unwrap(std::span<const std::uint8_t> ciphertext, std::uint32_t length, element& text) override;

    std::unique_ptr<CCryptoRSA> key_;
    std::optional<ccrypto::PssLimits> limits_;
};
