#pragma once

#include "crypto/base/constant_time.h"

#include <cstddef>
#include <cstdint>

/// Padding to whole blocks with as many bytes of that value as are added, at least one (RFC 5652, 6.3).
namespace ccrypto::pkcs7 {

/// Fills a block of `size` bytes, 1 to 255, of which `used`, less than `size`, are text.
void Pad(std::uint8_t* block, std::size_t used, std::size_t size);

/// How many bytes of the last block are text, 0 when the padding is wrong; `good` says which. Takes the same time for every
/// content.
[[nodiscard]] std::size_t TextLength(const std::uint8_t* block, std::size_t size, constant_time::Mask& good);

} // namespace ccrypto::pkcs7
