#pragma once

#include "asn1/template/template_match.h"
#include "asn1/tree/element_node.h"
#include "core/text/element.h"

#include <cstdint>
#include <optional>
#include <span>

// What the readers of certificates and requests have in common.

namespace ccrypto {

/// The octets of a primitive BIT STRING of whole bytes; null for any other, and for one without bits.
[[nodiscard]] const element* WholeBytes(const elementNode* bitString);

/// The octets of a signature. Where some bits of the last octet are unused it is empty, which no key verifies: what it signs can be
/// shown, and be called badly signed. \return none for any other value.
[[nodiscard]] std::optional<element> SignatureOctets(const elementNode* bitString);

/// The octets of an INTEGER in no more of them than it needs (X.690, 8.3.2); null for any other value.
[[nodiscard]] const element* MinimalInteger(const elementNode* value);
/// Whether these are the contents of an INTEGER in no more octets than it needs.
[[nodiscard]] inline bool IsMinimalInteger(std::span<const std::uint8_t> octets)
{
    if (octets.size() < 2)
        return !octets.empty();
    return (octets[0] != 0 && octets[0] != 0xFF) || ((octets[0] ^ octets[1]) & 0x80) != 0;
}
/// The same for one of 0 or above.
[[nodiscard]] inline bool IsUnsignedInteger(std::span<const std::uint8_t> octets)
{
    return IsMinimalInteger(octets) && octets[0] < 0x80;
}

/// Whether these are the contents of an OBJECT IDENTIFIER (X.690, 8.19): whole, minimal subidentifiers.
[[nodiscard]] bool IsIdentifierContent(std::span<const std::uint8_t> octets);

/// The SEQUENCE of the elements that a placeholder stands for.
[[nodiscard]] element OctetsOfList(const TemplateBinding& items);

/// The octets of a SubjectPublicKeyInfo's key (RFC 5280, 4.1.2.7); null for another structure.
[[nodiscard]] const element* PublicKeyBits(const elementNode& publicKeyInfo);

/// The contents of an INTEGER of this magnitude: a zero octet before a first bit that is set, none that is not needed.
[[nodiscard]] element IntegerOctets(const element& magnitude);

} // namespace ccrypto
