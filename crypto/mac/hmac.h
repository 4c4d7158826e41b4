#pragma once

#include "core/base/algorithm.h"
#include "crypto/hash/hash.h"
#include "crypto/mac/mac.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

/// HMAC (RFC 2104): a keyed hash over any of the hash functions but SHAKE. Its MACs are as long as the digests of the hash.
class CCryptoHMAC final : public ICryptoMAC {
public:
    /// For the id of a hash or of an HMAC. Owned by the caller; without a key. \return null, logged as "Unsupported hash
    /// function: %d", for SHAKE and for an id that is neither.
    [[nodiscard]] static std::unique_ptr<CCryptoHMAC> Create(ccrypto::algorithm::Id id);
    /// By the hash's name, as ICryptoHash::CreateByName() takes it, with or without "hmac-" in front.
    [[nodiscard]] static std::unique_ptr<CCryptoHMAC> CreateByName(std::string_view name);

    /// Over this hash, which must not be null and whose state does not matter; without a key.
    explicit CCryptoHMAC(std::unique_ptr<ICryptoHash> hash);

    /// Of any length, 0 too; always true. The key itself is not kept.
    bool setKey(std::span<const std::uint8_t> key) override;
    void reset() override;
    void update(const void* bytes, std::size_t length) override { running_->update(bytes, length); }
    /// Always true once there is a key.
    bool final(std::uint8_t* mac) override;
    [[nodiscard]] std::uint32_t macSize() const override { return running_->digestSize(); }
    using ICryptoMAC::final;
    using ICryptoMAC::update;

    std::uint32_t blockSize() const { return running_->blockSize(); }
    /// The hash's id.
    ccrypto::algorithm::Id hashId() const { return running_->algorithmId(); }
    const char* hashName() const { return running_->name(); }

private:
    // The hash after the block of the key, for the message and for its digest.
    std::unique_ptr<ICryptoHash> inner_;
    std::unique_ptr<ICryptoHash> outer_;
    std::unique_ptr<ICryptoHash> running_;
    bool hasKey_ = false;
};

namespace ccrypto {

/// The hash of an HMAC by their ids; any other id unchanged.
algorithm::Id HashOfHMAC(algorithm::Id id);
/// Whether the id is that of an HMAC.
[[nodiscard]] inline bool IsHMAC(algorithm::Id id)
{
    return HashOfHMAC(id) != id;
}

} // namespace ccrypto
