#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// The numbers of RFC 1951, 3.2.5 to 3.2.7.
namespace ccrypto::deflate {

inline constexpr std::size_t literalCodes = 288; ///< 286 and 287 are part of the fixed code but not used
inline constexpr std::size_t usedLiteralCodes = 286;
inline constexpr std::size_t distanceCodes = 32; ///< 30 and 31 likewise
inline constexpr std::size_t usedDistanceCodes = 30;
inline constexpr std::size_t codeLengthCodes = 19;
inline constexpr std::uint32_t endOfBlock = 256;
inline constexpr std::uint32_t firstLengthCode = 257;
inline constexpr std::uint32_t maxCode = 15;
inline constexpr std::uint32_t maxCodeLengthCode = 7;

inline constexpr std::uint32_t minMatch = 3;
inline constexpr std::uint32_t maxMatch = 258;
inline constexpr std::uint32_t windowSize = 32768;
inline constexpr std::uint32_t maxStored = 65535;

enum class BlockType : std::uint32_t { stored = 0, fixed = 1, dynamic = 2 };

/// A code for a run of values: the first of them, and the number of bits that select one.
struct ValueRun {
    std::uint16_t base;
    std::uint8_t extraBits;
};

/// By length code, from 257 on.
inline constexpr std::array<ValueRun, 29> lengthRuns = {
    {{3, 0},  {4, 0},  {5, 0},  {6, 0},   {7, 0},   {8, 0},   {9, 0},   {10, 0},  {11, 1}, {13, 1},
     {15, 1}, {17, 1}, {19, 2}, {23, 2},  {27, 2},  {31, 2},  {35, 3},  {43, 3},  {51, 3}, {59, 3},
     {67, 4}, {83, 4}, {99, 4}, {115, 4}, {131, 5}, {163, 5}, {195, 5}, {227, 5}, {258, 0}}};

inline constexpr std::array<ValueRun, usedDistanceCodes> distanceRuns = {
    {{1, 0},    {2, 0},    {3, 0},     {4, 0},     {5, 1},     {7, 1},     {9, 2},     {13, 2},     {17, 3},     {25, 3},
     {33, 4},   {49, 4},   {65, 5},    {97, 5},    {129, 6},   {193, 6},   {257, 7},   {385, 7},    {513, 8},    {769, 8},
     {1025, 9}, {1537, 9}, {2049, 10}, {3073, 10}, {4097, 11}, {6145, 11}, {8193, 12}, {12289, 12}, {16385, 13}, {24577, 13}}};

/// The codes of code lengths that repeat: 16 the length before, 17 and 18 zero.
inline constexpr std::uint32_t repeatPrevious = 16;
inline constexpr std::uint32_t repeatZero = 17;
inline constexpr std::uint32_t repeatZeroLong = 18;
inline constexpr std::array<ValueRun, 3> repeatRuns = {{{3, 2}, {3, 3}, {11, 7}}};

/// The order in which the lengths of the code length codes are written.
inline constexpr std::array<std::uint8_t, codeLengthCodes> codeLengthOrder = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                                              11, 4,  12, 3, 13, 2, 14, 1, 15};

/// A code in the order of bits of the input: codes are written from their most significant bit, everything else from the least.
constexpr std::uint32_t Reversed(std::uint32_t code, std::uint32_t length)
{
    code = ((code & 0x5555) << 1) | ((code >> 1) & 0x5555);
    code = ((code & 0x3333) << 2) | ((code >> 2) & 0x3333);
    code = ((code & 0x0F0F) << 4) | ((code >> 4) & 0x0F0F);
    code = ((code & 0x00FF) << 8) | (code >> 8);
    return code >> (16 - length);
}

constexpr std::array<std::uint8_t, literalCodes> MakeFixedLiteralLengths()
{
    std::array<std::uint8_t, literalCodes> lengths{};
    for (std::size_t code = 0; code < literalCodes; ++code)
        lengths[code] = static_cast<std::uint8_t>(code < 144 ? 8 : code < 256 ? 9 : code < 280 ? 7 : 8);
    return lengths;
}
constexpr std::array<std::uint8_t, distanceCodes> MakeFixedDistanceLengths()
{
    std::array<std::uint8_t, distanceCodes> lengths{};
    lengths.fill(5);
    return lengths;
}
inline constexpr auto fixedLiteralLengths = MakeFixedLiteralLengths();
inline constexpr auto fixedDistanceLengths = MakeFixedDistanceLengths();

} // namespace ccrypto::deflate
