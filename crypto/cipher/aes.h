#pragma once

#include "core/memory/wiped.h"
#include "crypto/cipher/aes_variants.h"
#include "crypto/cipher/block_cipher.h"

/// AES (FIPS 197) with keys of 16, 24 or 32 bytes. Takes time that depends on the lengths of key and text only.
class CCryptoAES final : public ICryptoBlockCipher {
public:
    /// The fastest variant that this process may use.
    CCryptoAES();
    /// A given variant, for tests and measurements.
    explicit CCryptoAES(const ccrypto::Variant<ccrypto::aes::Calls>& variant) : calls_(&variant.calls) {}

    [[nodiscard]] bool setKey(std::span<const std::uint8_t> key) override;
    void clearKey() override { ccrypto::platform::SecureWipe(&key_, sizeof key_); }
    std::size_t blockSize() const override { return ccrypto::aes::blockSize; }

    void encrypt(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks) const override;
    void decrypt(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks) const override;
    void encryptCbc(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain) const override;
    void decryptCbc(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain) const override;
    void applyCounter(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* counter) const override;

private:
    const ccrypto::aes::Calls* calls_;
    ccrypto::Wiped<ccrypto::aes::Key> key_{};
};
