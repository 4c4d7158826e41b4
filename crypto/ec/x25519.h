#pragma once

#include <cstdint>

namespace ccrypto {

/// The function X25519 of RFC 7748: 32 bytes each; `result` may be one of the others. Takes the same time for all scalars and
/// points. \return false when the result is all zeros, which means that the point is of low order; the result is then nobody's
/// secret.
bool X25519(std::uint8_t* result, const std::uint8_t* scalar, const std::uint8_t* point);

/// The public key of a scalar.
void X25519Public(std::uint8_t* result, const std::uint8_t* scalar);

} // namespace ccrypto
