#pragma once

#include "crypto/base/constant_time.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// Padding method 2 of ISO/IEC 9797-1: a byte 0x80 and as many zeros as fill the block. At least one byte is added.
namespace ccrypto::iso9797 {

/// Fills a block of which `used` bytes, less than its size, are text.
void Pad(std::span<std::uint8_t> block, std::size_t used);

/// The text of `padded` without its padding; the text itself may be secret, its length becomes public. \return the length; `good`
/// says whether the last `blockSize` bytes, 1 to 255, hold a padding, otherwise the length is 0. Takes the same time for every
/// content.
[[nodiscard]] std::size_t TextLength(std::span<const std::uint8_t> padded, std::size_t blockSize,
                                     ccrypto::constant_time::Mask& good);

} // namespace ccrypto::iso9797
