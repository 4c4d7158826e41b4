#pragma once

#include <cstdint>

namespace ccrypto {

/// The function X448 of RFC 7748, 5: scalar, point and result are 56 bytes each, little-endian; `result` may be one of the others.
/// The time does not depend on scalar and point.
/// \return false when the result is all zeros, which means that the point is of low order; the result is then not a secret.
[[nodiscard]] bool X448(std::uint8_t* result, const std::uint8_t* scalar, const std::uint8_t* point);
/// The public key of a scalar: X448 with the point 5, which is never zero.
void X448Public(std::uint8_t* result, const std::uint8_t* scalar);

} // namespace ccrypto
