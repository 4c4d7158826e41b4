#pragma once

#include "core/text/element.h"
#include "crypto/hash/keccak.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// SHAKE128 and SHAKE256 (FIPS 202, 6.2): hash functions whose output is as long as the caller wants. The message is taken in
/// pieces by update(), the output is given in pieces by squeeze(). Time depends on lengths only, what it holds is wiped when it is
/// destroyed. A copy is independent. Not for use by two threads at once.
///
/// For a digest of the fixed length that RFC 8702 gives it, see ICryptoHash.
class CCryptoSHAKE {
public:
    enum class Kind { shake128, shake256 };

    explicit CCryptoSHAKE(Kind kind) : sponge_(kind == Kind::shake128 ? 168 : 136, 0x1F) {}

    /// Forgets the message.
    void reset() { sponge_.reset(); }
    /// `bytes` may be null when `length` is 0. After a squeeze() this begins a new message.
    void update(const void* bytes, std::size_t length);
    void update(std::span<const std::uint8_t> bytes) { update(bytes.data(), bytes.size()); }
    /// The next bytes of the output: in pieces, the same bytes as at once.
    void squeeze(std::span<std::uint8_t> bytes) { sponge_.squeeze(bytes); }

    /// The first `length` bytes for this message; resets before and after.
    [[nodiscard]] element outputOf(std::span<const std::uint8_t> message, std::uint32_t length);

private:
    ccrypto::internal::KeccakSponge sponge_;
};
