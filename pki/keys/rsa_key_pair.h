#pragma once

#include "pki/keys/key_pair.h"
#include "pki/keys/pss_limits.h"

#include <optional>
#include <utility>

/// An RSA key in memory.
class CCryptoRSAKeyPair : public ICryptoKeyPair {
public:
    /// Takes the key, which must not be null.
    explicit CCryptoRSAKeyPair(std::unique_ptr<CCryptoRSA> key, std::optional<ccrypto::PssLimits> limits = {})
        : key_(std::move(key)), limits_(std::move(limits))
    {
    }

    const CCryptoRSA& key() const { return *key_; }
    /// Whether the key is of the algorithm id-RSASSA-PSS: it signs with PSS and does nothing else.
    bool isForPss() const { return limits_.has_value(); }

    std::uint32_t algorithmId() const override;
    std::uint32_t curveId() const override { return 0; }
    const char* name() const override { return isForPss() ? "RSA-PSS" : "RSA"; }
    std::uint32_t keySize() const override { return key_->bits(); }
    std::uint32_t signatureSize() const override { return key_->bytes(); }
    bool hasPrivate() const override { return key_->isPrivate(); }

    element publicKeyInfo() const override;
    element privateKeyInfo() const override;
    std::unique_ptr<ICryptoKeyPair> publicHalf() const override;

    element signHash(std::uint32_t hash, std::span<const std::uint8_t> digest, const SCryptoPadding& padding = {}) override;
    bool verifyHash(std::uint32_t hash, std::span<const std::uint8_t> digest, std::span<const std::uint8_t> signature,
                    const SCryptoPadding& padding = {}) const override;
    element encrypt(std::span<const std::uint8_t> text, const SCryptoPadding& padding = {}) const override;
    bool decrypt(std::span<const std::uint8_t> ciphertext, element& text, const SCryptoPadding& padding = {}) override;
    bool unwrap(std::span<const std::uint8_t> ciphertext, std::uint32_t length, element& text) override;
    element agree(const ICryptoKeyPair& peer) override;

private:
    std::unique_ptr<CCryptoRSA> key_;
    std::optional<ccrypto::PssLimits> limits_;
};
