#pragma once

#include "core/memory/wiped.h"
#include "deflate/bit_output.h"
#include "deflate/deflate_tables.h"

#include <array>
#include <bit>
#include <cstdint>
#include <span>

namespace ccrypto::deflate {

/// A literal, or a match.
struct Symbol {
    std::uint32_t packed = 0;

    static Symbol Literal(std::uint8_t byte) { return {byte}; }
    static Symbol Match(std::uint32_t length, std::uint32_t distance) { return {distance << 9 | length}; }

    bool isMatch() const { return packed >> 9 != 0; }
    std::uint32_t literal() const { return packed & 0xFF; }
    std::uint32_t length() const { return packed & 0x1FF; }
    std::uint32_t distance() const { return packed >> 9; }
    /// The number of bytes that it represents.
    std::uint32_t covers() const { return isMatch() ? length() : 1; }
};

constexpr std::array<std::uint8_t, maxMatch + 1> MakeLengthCodes()
{
    std::array<std::uint8_t, maxMatch + 1> codes{};
    for (std::size_t code = 0; code < lengthRuns.size(); ++code) {
        for (std::size_t length = lengthRuns[code].base; length <= maxMatch; ++length)
            codes[length] = static_cast<std::uint8_t>(code);
    }
    return codes;
}
/// By length: the length code, counted from 257.
inline constexpr auto lengthCodeOf = MakeLengthCodes();

inline std::uint32_t DistanceCodeOf(std::uint32_t distance)
{
    const std::uint32_t offset = distance - 1;
    if (offset < 4)
        return offset;
    const auto width = static_cast<std::uint32_t>(std::bit_width(offset));
    return 2 * (width - 1) + ((offset >> (width - 2)) & 1);
}

/// How often each code occurs. Since that says much about the bytes, it is wiped as they are.
struct Frequencies {
    Wiped<std::array<std::uint32_t, usedLiteralCodes>> literals{};
    Wiped<std::array<std::uint32_t, usedDistanceCodes>> distances{};

    void count(Symbol symbol)
    {
        if (symbol.isMatch()) {
            ++literals[firstLengthCode + lengthCodeOf[symbol.length()]];
            ++distances[DistanceCodeOf(symbol.distance())];
        } else {
            ++literals[symbol.literal()];
        }
    }
    void add(const Frequencies& other);
};

/// The symbols of one block, and what they stand for.
struct Block {
    std::span<const Symbol> symbols;
    const Frequencies& frequencies; ///< of the symbols, the end of the block not among them
    /// The bytes themselves; a null pointer where they are gone.
    const std::uint8_t* bytes = nullptr;
    std::size_t length = 0;
    bool last = false;
};

/// Writes a block in whichever form is the shortest: stored, where its bytes are there, with the fixed codes, or with its own.
void WriteBlock(const Block& block, BitOutput& output);

} // namespace ccrypto::deflate
