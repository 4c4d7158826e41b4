#pragma once

#include "asn1/template/template_match.h"
#include "asn1/tree/element_node.h"
#include "core/text/element.h"

#include <cstdint>
#include <span>

// What the readers of certificates and requests have in common.

namespace ccrypto {

/// The octets of a primitive BIT STRING of whole bytes; null for any other, and for one without bits.
[[nodiscard]] const element* WholeBytes(const elementNode* bitString);

/// Whether a primitive BIT STRING has bits of which some in the last octet are unused.
[[nodiscard]] bool HasUnusedBits(const elementNode* bitString);

/// The octets of an INTEGER in no more of them than it needs (X.690, 8.3.2); null for any other value.
[[nodiscard]] const element* MinimalInteger(const elementNode* value);
/// Whether the contents of an INTEGER have no octet that DER leaves out.
[[nodiscard]] bool IsMinimalInteger(std::span<const std::uint8_t> octets);

/// The SEQUENCE of the elements that a placeholder stands for.
[[nodiscard]] element OctetsOfList(const TemplateBinding& items);

/// The octets of a SubjectPublicKeyInfo's key (RFC 5280, 4.1.2.7); null for another structure.
[[nodiscard]] const element* PublicKeyBits(const elementNode& publicKeyInfo);

/// The contents of an INTEGER of this magnitude: a zero octet before a first bit that is set, none that is not needed.
[[nodiscard]] element IntegerOctets(const element& magnitude);

} // namespace ccrypto
