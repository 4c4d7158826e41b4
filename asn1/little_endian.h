#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>

/// Words of Deflate and GZIP: least significant byte first, at any address.

/// From this machine's order of bytes to that one, and back.
template <std::unsigned_integral Word>
Word LittleEndian(Word word)
{
    static_assert(sizeof word == 4 || sizeof word == 8);
    if constexpr (std::endian::native == std::endian::little)
        return word;
    else if constexpr (sizeof word == 8)
        return __builtin_bswap64(word);
    else
        return __builtin_bswap32(word);
}

template <std::unsigned_integral Word>
Word LoadLittleEndian(const std::uint8_t* bytes)
{
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return LittleEndian(word);
}

template <std::unsigned_integral Word>
void StoreLittleEndian(std::uint8_t* bytes, Word word)
{
    word = LittleEndian(word);
    std::memcpy(bytes, &word, sizeof word);
}
