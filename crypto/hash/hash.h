#pragma once

#include "core/base/algorithm.h"
#include "core/text/element.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace ccrypto {

/// Of all hashes here, in bytes.
constexpr std::size_t maxDigestSize = 64;
constexpr std::size_t maxHashBlockSize = 168;

} // namespace ccrypto

/// A hash function: takes bytes in pieces of any length and gives their digest. What it holds is wiped when it is destroyed and by
/// reset(). Not for use by two threads at once.
class ICryptoHash {
public:
    /// A new hash: MD5, SHA-1, SHA-2, SHA-3, SHAKE, or md5Sha1, which is MD5 followed by SHA-1, as TLS 1.0 signs. Owned by the
    /// caller. \return null, logged as "Unsupported hash function: %d", for an id that is not a hash.
    [[nodiscard]] static std::unique_ptr<ICryptoHash> Create(ccrypto::algorithm::Id id);
    /// By name, in any case, with or without "-": "sha256", "SHA-256", "sha3-256", "shake128", "md5", "md4", "md5-sha1". MD4 has no
    /// id of its own. The digests of SHAKE128 and SHAKE256 are 32 and 64 bytes long (RFC 8702, 3.1); for others see CCryptoSHAKE.
    /// \return null, logged, for any other name.
    [[nodiscard]] static std::unique_ptr<ICryptoHash> CreateByName(std::string_view name);

    virtual ~ICryptoHash() = default;

    /// Resets to the initial state.
    virtual void reset() = 0;
    /// `bytes` may be null when `length` is 0.
    virtual void update(const void* bytes, std::size_t length) = 0;
    /// Writes digestSize() bytes to `digest`, then resets.
    virtual void final(std::uint8_t* digest) = 0;

    virtual std::uint32_t digestSize() const = 0;
    virtual std::uint32_t blockSize() const = 0;
    /// none for MD4.
    virtual ccrypto::algorithm::Id algorithmId() const = 0;
    /// "SHA-256"
    virtual const char* name() const = 0;
    /// True for SHAKE, whose digest is the beginning of a longer output: HMAC, MGF1 and DigestInfo are not defined over it.
    [[nodiscard]] bool isExtendable() const;
    /// A new hash that has taken the same bytes so far. Owned by the caller.
    [[nodiscard]] virtual std::unique_ptr<ICryptoHash> clone() const = 0;
    /// Takes over the state of `other`, without a new object. \return false, unchanged, when `other` is another function.
    virtual bool assign(const ICryptoHash& other) = 0;

    void update(std::span<const std::uint8_t> bytes) { update(bytes.data(), bytes.size()); }
    /// The digest as raw bytes; then resets.
    [[nodiscard]] element final();
    /// The digest of these bytes; resets before and after.
    [[nodiscard]] element digestOf(std::span<const std::uint8_t> bytes);

protected:
    ICryptoHash() = default;
    ICryptoHash(const ICryptoHash&) = default;
    ICryptoHash& operator=(const ICryptoHash&) = default;
};
