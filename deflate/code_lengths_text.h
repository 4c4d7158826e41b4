#pragma once

#include "core/memory/wiped.h"
#include "deflate/bit_output.h"
#include "deflate/deflate_tables.h"

#include <array>
#include <cstdint>
#include <span>

namespace ccrypto::deflate {

/// The lengths of a block's codes in the form in which they precede it (RFC 1951, 3.2.7): runs shortened, and coded themselves.
class CodeLengthsText {
public:
    /// Literal and length codes from 257 on, distance codes from 1 on; surplus symbols without a code are left out.
    CodeLengthsText(std::span<const std::uint8_t> literals, std::span<const std::uint8_t> distances);

    std::uint64_t bits() const { return bits_; }
    void write(BitOutput& output) const;

private:
    /// A code length code and the value of its extra bits.
    struct Item {
        std::uint8_t code;
        std::uint8_t extra;
    };

    void shorten(std::span<const std::uint8_t> lengths);
    void addRun(std::uint8_t length, std::size_t count);
    void add(std::uint32_t code, std::size_t extra);

    std::size_t literalCount_;
    std::size_t distanceCount_;
    std::size_t codeCount_ = codeLengthCodes; ///< code length codes written
    Wiped<std::array<Item, usedLiteralCodes + usedDistanceCodes>> items_;
    std::size_t itemCount_ = 0;
    Wiped<std::array<std::uint8_t, codeLengthCodes>> lengths_{};
    Wiped<std::array<std::uint16_t, codeLengthCodes>> words_{};
    std::uint64_t bits_ = 0;
};

} // namespace ccrypto::deflate
