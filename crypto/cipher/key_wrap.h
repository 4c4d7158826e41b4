#pragma once

#include "core/text/element.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// AES key wrap (RFC 3394; SP 800-38F, KW) and the one with padding (RFC 5649; SP 800-38F, KWP): a key, or other short secret,
/// encrypted and authenticated with a key of 16, 24 or 32 bytes, without an initialization vector. Takes time that depends on
/// lengths only; whether an unwrapping succeeded is public.
class CCryptoKeyWrap {
public:
    /// Of the secret, in bytes.
    static constexpr std::size_t maxSecret = 65536;

    using Bytes = std::span<const std::uint8_t>;

    /// \param secret 16 bytes or more, a multiple of 8. \return 8 bytes more than the secret; empty, logged, for wrong lengths.
    [[nodiscard]] static element Wrap(Bytes key, Bytes secret);
    /// \return the secret; empty, logged, when the lengths are wrong or `wrapped` was not made with this key.
    [[nodiscard]] static element Unwrap(Bytes key, Bytes wrapped);

    /// The same for a secret of 1 byte or more, which is padded with zeros to a multiple of 8.
    [[nodiscard]] static element WrapPadded(Bytes key, Bytes secret);
    [[nodiscard]] static element UnwrapPadded(Bytes key, Bytes wrapped);
};
