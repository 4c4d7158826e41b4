#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>

/// Words in bytes of either order, at any address.

namespace ccrypto {

template <std::unsigned_integral Word>
constexpr Word ReversedBytes(Word word)
{
    if constexpr (sizeof(Word) == 8)
        return __builtin_bswap64(word);
    else
        return __builtin_bswap32(word);
}

/// \param order of the bytes.
template <std::unsigned_integral Word, std::endian order>
inline Word LoadWord(const std::uint8_t* bytes)
{
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return order == std::endian::native ? word : ReversedBytes(word);
}

template <std::unsigned_integral Word, std::endian order>
inline void StoreWord(std::uint8_t* bytes, Word word)
{
    if (order != std::endian::native)
        word = ReversedBytes(word);
    std::memcpy(bytes, &word, sizeof word);
}

/// Between this machine's order and least significant byte first.
template <std::unsigned_integral Word>
constexpr Word LittleEndian(Word word)
{
    static_assert(sizeof word == 4 || sizeof word == 8);
    return std::endian::native == std::endian::little ? word : ReversedBytes(word);
}

template <std::unsigned_integral Word>
Word LoadLittleEndian(const std::uint8_t* bytes)
{
    return LoadWord<Word, std::endian::little>(bytes);
}

template <std::unsigned_integral Word>
void StoreLittleEndian(std::uint8_t* bytes, Word word)
{
    StoreWord<Word, std::endian::little>(bytes, word);
}

} // namespace ccrypto
