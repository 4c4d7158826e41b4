#pragma once

#include "asn1/tree/element_node.h"

#include <cstdint>
#include <span>

// BER-TLV data objects as smart cards exchange them (ISO/IEC 7816-4:2005, 5.2.2): tags of up to three octets, definite lengths of
// up to four. In the tree such an object is a node of its tag's octets with a value: the template #7F49{#86{point}} describes one.

namespace ccrypto {

struct BerTlv {
    static constexpr std::uint32_t maxTagOctets = 3;
    static constexpr std::uint32_t maxLengthOctets = 4;
    static constexpr std::uint32_t maxDepth = 32;
    static constexpr std::uint32_t maxSize = 1 << 20; ///< bytes of one input
};

/// Octets or a number with a value: a data object, or an item of a template that describes one.
[[nodiscard]] bool IsDataObject(const elementNode& node);

/// Decodes data objects. A constructed one holds its objects as content; a primitive one its bytes, which are empty for length 0,
/// in the slot that CCryptoDERParser would use. Octets 00 before, between and after objects are ignored, as are octets FF up to the
/// end of the input, which is how erased memory reads.
/// \return the first object with the others as its siblings; null, logged, when the bytes do not decode or hold no object.
[[nodiscard]] ccrypto::ElementNodePtr DecodeBerTlv(std::span<const std::uint8_t> input);

} // namespace ccrypto
