#pragma once

#include "crypto/base/cpu_features.h"

#include <cstdint>
#include <span>

namespace ccrypto {

/// The ladder of a scalar that is clamped and a point whose highest bit is clear; 32 bytes each. \return all ones when the result
/// is zero.
using X25519Ladder = std::uint64_t (*)(std::uint8_t* result, const std::uint8_t* scalar, const std::uint8_t* point);

std::uint64_t X25519Portable(std::uint8_t* result, const std::uint8_t* scalar, const std::uint8_t* point);
std::uint64_t X25519Adx(std::uint8_t* result, const std::uint8_t* scalar, const std::uint8_t* point);

std::span<const Variant<X25519Ladder>> X25519Variants();

} // namespace ccrypto
