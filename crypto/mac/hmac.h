#pragma once

#include "core/base/algorithm.h"
#include "core/text/element.h"
#include "crypto/hash/hash.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

/// HMAC (RFC 2104): a keyed hash over any of the hash functions but SHAKE. Its digests are as long as those of the hash. What it
/// holds is wiped when it is destroyed. Not for use by two threads at once.
class CCryptoHMAC {
public:
    /// For the id of a hash or of an HMAC. Owned by the caller; without a key. \return null, logged as "Unsupported hash
    /// function: %d", for SHAKE and for an id that is neither.
    [[nodiscard]] static std::unique_ptr<CCryptoHMAC> Create(ccrypto::algorithm::Id id);
    /// By the hash's name, as ICryptoHash::CreateByName() takes it, with or without "hmac-" in front.
    [[nodiscard]] static std::unique_ptr<CCryptoHMAC> CreateByName(std::string_view name);

    /// Over this hash, which must not be null and whose state does not matter; without a key.
    explicit CCryptoHMAC(std::unique_ptr<ICryptoHash> hash);

    /// Of any length, 0 too; nothing is taken yet afterwards. The key itself is not kept.
    void setKey(std::span<const std::uint8_t> key);
    /// As after setKey().
    void reset();
    /// `bytes` may be null when `length` is 0.
    void update(const void* bytes, std::size_t length) { running_->update(bytes, length); }
    void update(std::span<const std::uint8_t> bytes) { running_->update(bytes); }
    /// Writes digestSize() bytes to `mac`; then as after setKey(). \return false, logged, with nothing written, without a key.
    bool final(std::uint8_t* mac);
    /// Empty without a key.
    [[nodiscard]] element final();
    [[nodiscard]] element macOf(std::span<const std::uint8_t> bytes);
    /// Whether `mac` is the MAC of what was taken, or its first `length` bytes: 4 or more, a number that the protocol gives and not
    /// the message. One of another length is not. Takes time that depends on lengths only. Then as after setKey().
    [[nodiscard]] bool verify(std::span<const std::uint8_t> mac) { return verify(mac, digestSize()); }
    [[nodiscard]] bool verify(std::span<const std::uint8_t> mac, std::size_t length);

    std::uint32_t digestSize() const { return running_->digestSize(); }
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

} // namespace ccrypto
