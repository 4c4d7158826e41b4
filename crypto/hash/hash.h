#pragma once

#include "core/text/element.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

/// The longest digest and the longest block of all hashes here, in bytes.
constexpr std::size_t longestDigest = 64;
constexpr std::size_t longestHashBlock = 128;

/// A hash function: takes bytes in pieces of any length and gives their digest. What it holds is wiped when it is destroyed and by
/// reset(). Not for use by two threads at once.
class ICryptoHash {
public:
    /// A new hash for an id of the algorithm table (100 to 106; 106 is MD5 followed by SHA-1, as TLS 1.0 signs). Owned by the
    /// caller. \return null, logged as "Unsupported hash function: %d", for any other id.
    static std::unique_ptr<ICryptoHash> Create(std::uint32_t id);
    /// By name, in any case, with or without "-": "sha256", "SHA-256", "md5", "md4", "md5-sha1". MD4 has no id of its own.
    /// \return null, logged, for any other name.
    static std::unique_ptr<ICryptoHash> CreateByName(std::string_view name);

    virtual ~ICryptoHash() = default;

    /// As new: nothing taken yet.
    virtual void reset() = 0;
    /// `bytes` may be null when `length` is 0.
    virtual void update(const void* bytes, std::size_t length) = 0;
    /// Writes digestSize() bytes to `digest`; the hash is then as new.
    virtual void final(std::uint8_t* digest) = 0;

    virtual std::uint32_t digestSize() const = 0;
    virtual std::uint32_t blockSize() const = 0;
    /// The id of the algorithm table; 0 for MD4.
    virtual std::uint32_t algorithmId() const = 0;
    /// "SHA-256"
    virtual const char* name() const = 0;
    /// A new hash that has taken the same bytes so far. Owned by the caller.
    virtual std::unique_ptr<ICryptoHash> clone() const = 0;
    /// Becomes as `other` is, without a new object. \return false, unchanged, when `other` is another function.
    virtual bool assign(const ICryptoHash& other) = 0;

    void update(std::span<const std::uint8_t> bytes) { update(bytes.data(), bytes.size()); }
    /// The digest as raw bytes; the hash is then as new.
    element final();
    /// The digest of these bytes alone.
    element digestOf(std::span<const std::uint8_t> bytes);

protected:
    ICryptoHash() = default;
    ICryptoHash(const ICryptoHash&) = default;
    ICryptoHash& operator=(const ICryptoHash&) = default;
};
