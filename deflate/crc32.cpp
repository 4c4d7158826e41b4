#include "deflate/crc32.h"

#include "core/base/byte_order.h"

#include <array>
#include <cstddef>

using namespace ccrypto;

namespace {

constexpr std::uint32_t polynomial = 0xEDB88320U;
constexpr std::size_t slices = 16;

using Slices = std::array<std::array<std::uint32_t, 256>, slices>;

/// Row n holds what a byte does to the checksum n bytes further on.
constexpr Slices MakeSlices()
{
    Slices table{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t remainder = byte;
        for (int bit = 0; bit < 8; ++bit)
            remainder = (remainder >> 1) ^ ((remainder & 1) != 0 ? polynomial : 0);
        table[0][byte] = remainder;
    }
    for (std::size_t row = 1; row < slices; ++row) {
        for (std::size_t byte = 0; byte < 256; ++byte)
            table[row][byte] = (table[row - 1][byte] >> 8) ^ table[0][table[row - 1][byte] & 0xFF];
    }
    return table;
}

constexpr Slices table = MakeSlices();

/// What the four bytes of `word` do, the last of them `row` bytes before the end.
std::uint32_t Fold(std::uint32_t word, std::size_t row)
{
    return table[row + 3][word & 0xFF] ^ table[row + 2][(word >> 8) & 0xFF] ^ table[row + 1][(word >> 16) & 0xFF] ^
           table[row][word >> 24];
}

} // namespace

void CCryptoCRC32::update(std::span<const std::uint8_t> bytes)
{
    const std::uint8_t* next = bytes.data();
    std::size_t left = bytes.size();
    std::uint32_t state = state_;
    for (; left >= slices; left -= slices, next += slices) {
        state = Fold(state ^ LoadLittleEndian<std::uint32_t>(next), 12) ^ Fold(LoadLittleEndian<std::uint32_t>(next + 4), 8) ^
                Fold(LoadLittleEndian<std::uint32_t>(next + 8), 4) ^ Fold(LoadLittleEndian<std::uint32_t>(next + 12), 0);
    }
    for (; left != 0; --left, ++next)
        state = (state >> 8) ^ table[0][(state ^ *next) & 0xFF];
    state_ = state;
}
