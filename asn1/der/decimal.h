#pragma once

#include "core/text/element.h"
#include "core/text/string.h"

#include <cstdint>
#include <string_view>

/// The integer element of decimal digits: its big-endian magnitude without leading zeros; zero is one zero byte. The time grows
/// with the square of the length, which the caller bounds.
element IntegerFromDecimal(std::string_view digits);

/// What any text writes in decimal: longer numbers would take too long to convert.
constexpr std::uint32_t longestSignedInteger = 4097; ///< bytes, a sign octet among them
constexpr std::size_t longestSignedDecimal = 9864;   ///< digits, of which every number fits these bytes

/// The integer element of a decimal number as DER holds it: below zero in two's complement. \return false unless the text is a "-"
/// or nothing and up to `longestSignedDecimal` digits without a needless zero.
bool SignedFromDecimal(std::string_view text, element& number);

/// The decimal text from which SignedFromDecimal gives the same element; empty when there is none: for superfluous bytes in front,
/// a sign beside a magnitude, and more than `longestSignedInteger` bytes.
CCryptoString DecimalFromSigned(const element& number);
