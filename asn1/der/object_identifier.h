#pragma once

#include "core/text/element.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace ccrypto {

/// The dotted text of an encoded object identifier (X.690, 8.19). The first two arcs are taken from the first octet alone.
/// \return false when the octets have no dotted form that is encoded the same: none at all, a subidentifier that is cut short,
/// begins with a zero group, or exceeds 64 bits.
bool DottedFromDer(std::span<const std::uint8_t> octets, element& dotted);

/// The octets of dotted text. \return false, logged, when the text is not arcs of decimal digits separated by dots, the first two
/// exceed one octet, or an arc exceeds 64 bits.
bool DerFromDotted(std::string_view dotted, element& octets);

} // namespace ccrypto
