#pragma once

#include "crypto/base/constant_time.h"

#include <cstddef>
#include <cstdint>
#include <span>

// Padding of texts to whole blocks. At least one byte is added. Removing it takes the same time for every content of the bytes that
// are looked at; the length of the text becomes public, the text does not.

/// As many bytes as are added, each with that number as its value (RFC 5652, 6.3).
namespace ccrypto::pkcs7 {

/// Fills a block of `size` bytes, 1 to 255, of which `used`, less than `size`, are text.
void Pad(std::uint8_t* block, std::size_t used, std::size_t size);

/// How many bytes of the last block are text, 0 when the padding is wrong; `good` says which.
[[nodiscard]] std::size_t TextLength(const std::uint8_t* block, std::size_t size, constant_time::Mask& good);

} // namespace ccrypto::pkcs7

/// Padding method 2 of ISO/IEC 9797-1: a byte 0x80 and as many zeros as fill the block.
namespace ccrypto::iso9797 {

/// Fills a block of which `used` bytes, less than its size, are text.
void Pad(std::span<std::uint8_t> block, std::size_t used);

/// The length of the text in whole blocks of `blockSize` bytes, 1 to 255; `good` says whether the last block holds a padding,
/// otherwise the length is 0.
[[nodiscard]] std::size_t TextLength(std::span<const std::uint8_t> padded, std::size_t blockSize, constant_time::Mask& good);

} // namespace ccrypto::iso9797
