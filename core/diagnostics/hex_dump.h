#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace ccrypto {

class BoundedText;

/// Bytes of a full row of a hex dump.
constexpr std::size_t hexDumpRow = 32;

/// One row of a hex dump of 1 to 32 bytes: `depth` times "-", the bytes as two upper-case digits and a blank each, blanks up to
/// column 98, a blank, and the bytes as characters, "." for all but blank to "Z" without "%" and "a" to "z". A row of fewer than
/// 32 bytes has blanks up to column 50 only, so its characters do not stand below those of a full row.
void AppendHexDumpRow(std::uint32_t depth, std::span<const std::uint8_t> bytes, BoundedText& row);

/// The bytes as two lower-case digits each. \return false when they do not fit.
bool AppendHexadecimal(std::span<const std::uint8_t> bytes, BoundedText& text);

} // namespace ccrypto
