#pragma once

#include "core/base/algorithm.h"
#include "core/memory/wiped.h"
#include "crypto/cipher/block_cipher.h"
#include "crypto/mac/mac.h"

#include <array>
#include <memory>
#include <string_view>

/// CMAC (SP 800-38B, RFC 4493): a message authentication code made with a block cipher, as long as its blocks. With AES it takes
/// time that depends on lengths only.
class CCryptoCMAC final : public ICryptoMAC {
public:
    /// For the id of AES or 3DES in any mode but GCM. Owned by the caller; it has no key yet. \return null,
    /// logged as "Unsupported cipher: %d", for any other id.
    [[nodiscard]] static std::unique_ptr<CCryptoCMAC> Create(ccrypto::algorithm::Id id);
    /// "aes-128", "aes-192", "aes-256" or "des-ede3", in any case, with or without "cmac-" in front. \return null, logged, for any
    /// other name.
    [[nodiscard]] static std::unique_ptr<CCryptoCMAC> CreateByName(std::string_view name);

    /// Over this cipher, which must not be null, with keys of these lengths; without a key.
    CCryptoCMAC(const char* cipherName, std::unique_ptr<ICryptoBlockCipher> cipher, std::size_t minKey, std::size_t maxKey);

    [[nodiscard]] bool setKey(std::span<const std::uint8_t> key) override;
    void reset() override;
    void update(const void* bytes, std::size_t length) override;
    [[nodiscard]] bool final(std::uint8_t* mac) override;
    [[nodiscard]] std::uint32_t macSize() const override { return static_cast<std::uint32_t>(cipher_->blockSize()); }
    using ICryptoMAC::final;
    using ICryptoMAC::update;

    /// "aes-128"
    const char* cipherName() const { return cipherName_; }
    /// The maximum, in bytes.
    std::size_t keySize() const { return maxKey_; }

private:
    using Block = ccrypto::Wiped<std::array<std::uint8_t, ccrypto::maxCipherBlock>>;

    void doubled(Block& block) const;

    const char* cipherName_;
    std::unique_ptr<ICryptoBlockCipher> cipher_;
    std::size_t minKey_;
    std::size_t maxKey_;
    bool hasKey_ = false;
    Block whole_{};  ///< added to a last block that is whole
    Block padded_{}; ///< added to one that was padded
    Block chain_{};
    Block pending_{}; ///< the last block so far, whole or not
    std::size_t pendingCount_ = 0;
};
