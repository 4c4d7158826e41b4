#pragma once

#include "crypto/base/cpu_features.h"

#include <cstdint>
#include <span>

namespace ccrypto {

/// The function X25519 of RFC 7748, 5: scalar, point and result are 32 bytes each, little-endian; `result` may be one of the
/// others. The time does not depend on scalar and point. \return false when the result is all zeros, which means that the point is
/// of low order; the result is then not a secret.
[[nodiscard]] bool X25519(std::uint8_t* result, const std::uint8_t* scalar, const std::uint8_t* point);
/// The public key of a scalar: X25519 with the point 9, which is never zero.
void X25519Public(std::uint8_t* result, const std::uint8_t* scalar);

/// The ladder of X25519 for a scalar that is clamped and a point whose highest bit is clear. \return all ones when the result is
/// zero, otherwise 0.
using X25519Ladder = std::uint64_t (*)(std::uint8_t* result, const std::uint8_t* scalar, const std::uint8_t* point);

[[nodiscard]] std::uint64_t X25519Portable(std::uint8_t* result, const std::uint8_t* scalar, const std::uint8_t* point);
[[nodiscard]] std::uint64_t X25519Adx(std::uint8_t* result, const std::uint8_t* scalar, const std::uint8_t* point);

/// "portable" and "adx".
[[nodiscard]] std::span<const Variant<X25519Ladder>> X25519Variants();

} // namespace ccrypto
