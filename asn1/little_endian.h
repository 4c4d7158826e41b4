#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

/// Words of Deflate and GZIP: least significant byte first, at any address.

inline std::uint64_t LoadLittleEndian64(const std::uint8_t* bytes)
{
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    if constexpr (std::endian::native == std::endian::big)
        word = __builtin_bswap64(word);
    return word;
}

inline std::uint32_t LoadLittleEndian32(const std::uint8_t* bytes)
{
    std::uint32_t word;
    std::memcpy(&word, bytes, sizeof word);
    if constexpr (std::endian::native == std::endian::big)
        word = __builtin_bswap32(word);
    return word;
}

inline void StoreLittleEndian64(std::uint8_t* bytes, std::uint64_t word)
{
    if constexpr (std::endian::native == std::endian::big)
        word = __builtin_bswap64(word);
    std::memcpy(bytes, &word, sizeof word);
}

inline void StoreLittleEndian32(std::uint8_t* bytes, std::uint32_t word)
{
    if constexpr (std::endian::native == std::endian::big)
        word = __builtin_bswap32(word);
    std::memcpy(bytes, &word, sizeof word);
}
