#pragma once

#include "core/memory/wiped.h"
#include "crypto/cipher/block_cipher.h"

#include <array>

/// RC2 (RFC 2268) with keys of 1 to 128 bytes, limited to the strength of the effective bits. Indexes
/// tables by secrets: this is not constant-time. For old files only.
class CCryptoRC2 final : public ICryptoBlockCipher {
public:
    [[nodiscard]] bool setKey(std::span<const std::uint8_t> key) override;
    void clearKey() override { ccrypto::platform::SecureWipe(words_.data(), sizeof words_); }
    /// 1 to 1024; 0 for all bits of the key.
    [[nodiscard]] bool setEffectiveKeyBits(std::uint32_t bits) override;
    std::size_t blockSize() const override { return 8; }

    void encrypt(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks) const override;
    void decrypt(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks) const override;

private:
    ccrypto::Wiped<std::array<std::uint16_t, 64>> words_{};
    std::uint32_t effectiveBits_ = 0;
};
