#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// Bytes of cipher blocks, with constant time for a given length.
namespace block_bytes {

inline std::uint32_t Load32(const std::uint8_t* bytes)
{
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

inline std::uint64_t Load64(const std::uint8_t* bytes)
{
    return std::uint64_t{Load32(bytes)} << 32 | Load32(bytes + 4);
}

inline void Store32(std::uint8_t* bytes, std::uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
}

inline void Store64(std::uint8_t* bytes, std::uint64_t value)
{
    Store32(bytes, static_cast<std::uint32_t>(value >> 32));
    Store32(bytes + 4, static_cast<std::uint32_t>(value));
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

} // namespace block_bytes
