#pragma once

#include "crypto/ec/ec.h"
#include "pki/keys/key_pair.h"

/// A key on a curve in memory.
class CCryptoECKeyPair : public ICryptoKeyPair {
public:
    /// Takes the key, which must not be null.
    explicit CCryptoECKeyPair(std::unique_ptr<CCryptoEC> key) : key_(std::move(key)) {}

    const CCryptoEC& key() const { return *key_; }

    std::uint32_t algorithmId() const override;
    std::uint32_t curveId() const override { return key_->curve().id; }
    const char* name() const override { return key_->curve().name; }
    std::uint32_t keySize() const override { return key_->curve().bits; }
    std::uint32_t signatureSize() const override;
    bool hasPrivate() const override { return key_->hasPrivate(); }

    element publicKeyInfo() const override;
    element privateKeyInfo() const override;
    std::unique_ptr<ICryptoKeyPair> publicHalf() const override;

    /// The hash's id is of no account: the digest's length tells what is signed.
    element signHash(std::uint32_t hash, std::span<const std::uint8_t> digest, const SCryptoPadding& padding = {}) override;
    bool verifyHash(std::uint32_t hash, std::span<const std::uint8_t> digest, std::span<const std::uint8_t> signature,
                    const SCryptoPadding& padding = {}) const override;
    element encrypt(std::span<const std::uint8_t> text, const SCryptoPadding& padding = {}) const override;
    bool decrypt(std::span<const std::uint8_t> ciphertext, element& text, const SCryptoPadding& padding = {}) override;
    bool unwrap(std::span<const std::uint8_t> ciphertext, std::uint32_t length, element& text) override;
    element agree(const ICryptoKeyPair& peer) override;

private:
    std::unique_ptr<CCryptoEC> key_;
};
