#pragma once

#include "core/text/element.h"
#include "core/text/string.h"

#include <cstdint>
#include <string_view>

namespace ccrypto {

/// What template text may hold: these take a fraction of a second.
constexpr std::size_t maxDecimalDigits = 1000000;

/// The integer element of decimal digits: its big-endian magnitude without leading zeros; zero is one zero byte. The time grows
/// with the length to the power of 1.6; the caller bounds it.
[[nodiscard]] element IntegerFromDecimal(std::string_view digits);

/// What any text writes in decimal: longer numbers would take too long to convert.
constexpr std::uint32_t maxSignedInteger = 4097; ///< bytes, a sign octet among them
constexpr std::size_t maxSignedDecimal = 9864;   ///< digits, of which every number fits these bytes

/// The integer element of a decimal number as DER holds it: below zero in two's complement. \return false unless the text is a "-"
/// or nothing, followed by up to `maxSignedDecimal` digits without a needless zero.
[[nodiscard]] bool SignedFromDecimal(std::string_view text, element& number);

/// The decimal text from which SignedFromDecimal gives the same element; empty when there is none: for superfluous leading
/// bytes, a sign with a magnitude, and more than `maxSignedInteger` bytes.
[[nodiscard]] CCryptoString DecimalFromSigned(const element& number);

} // namespace ccrypto
