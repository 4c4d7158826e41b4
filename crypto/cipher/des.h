#pragma once

#include "core/memory/wiped.h"
#include "crypto/cipher/block_cipher.h"
#include "crypto/cipher/des_variants.h"

/// DES (FIPS 46-3) with keys of 8 bytes, and 3DES (SP 800-67) with keys of 16 (the first third again as the last) or 24 bytes.
/// Parity bits are ignored. Short texts and chains index tables by secrets: this is not constant-time. Many blocks at once
/// are enciphered as bit planes.
class CCryptoDES final : public ICryptoBlockCipher {
public:
    CCryptoDES();
    /// A given variant, for tests and measurements.
    explicit CCryptoDES(const ccrypto::Variant<ccrypto::des::Calls>& variant) : calls_(&variant.calls) {}

    [[nodiscard]] bool setKey(std::span<const std::uint8_t> key) override;
    void clearKey() override;
    std::size_t blockSize() const override { return 8; }

    void encrypt(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks) const override;
    void decrypt(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks) const override;
    void encryptCbc(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain) const override;

private:
    void transform(const ccrypto::des::Schedule& schedule, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks) const;

    const ccrypto::des::Calls* calls_;
    ccrypto::Wiped<ccrypto::des::Schedule> encryption_{};
    ccrypto::Wiped<ccrypto::des::Schedule> decryption_{};
};
