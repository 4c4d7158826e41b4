#pragma once

#include "core/base/byte_order.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

/// Bytes of cipher blocks, with constant time for a given length. Words are big-endian.
namespace ccrypto::block_bytes {

inline std::uint32_t Load32(const std::uint8_t* bytes)
{
    return LoadWord<std::uint32_t, std::endian::big>(bytes);
}

inline std::uint64_t Load64(const std::uint8_t* bytes)
{
    return LoadWord<std::uint64_t, std::endian::big>(bytes);
}

inline void Store32(std::uint8_t* bytes, std::uint32_t value)
{
    StoreWord<std::uint32_t, std::endian::big>(bytes, value);
}

inline void Store64(std::uint8_t* bytes, std::uint64_t value)
{
    StoreWord<std::uint64_t, std::endian::big>(bytes, value);
}

/// out = a ^ b; `out` may be either of them.
inline void Xor(std::uint8_t* out, const std::uint8_t* a, const std::uint8_t* b, std::size_t length)
{
    for (; length >= 8; length -= 8, out += 8, a += 8, b += 8) {
        std::uint64_t left = 0;
        std::uint64_t right = 0;
        std::memcpy(&left, a, 8);
        std::memcpy(&right, b, 8);
        left ^= right;
        std::memcpy(out, &left, 8);
    }
    for (std::size_t i = 0; i < length; ++i)
        out[i] = static_cast<std::uint8_t>(a[i] ^ b[i]);
}

/// Adds one to a big-endian number of `length` bytes, and wraps.
inline void Increment(std::uint8_t* number, std::size_t length)
{
    std::uint32_t carry = 1;
    while (length-- > 0) {
        carry += number[length];
        number[length] = static_cast<std::uint8_t>(carry);
        carry >>= 8;
    }
}

} // namespace ccrypto::block_bytes
