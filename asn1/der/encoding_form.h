#pragma once

#include "asn1/tree/element_node.h"

namespace ccrypto {

/// Primitive or constructed (X.690, 8.1.2.5); `either` where a node does not determine it.
enum class EncodingForm { either, primitive, constructed };

/// Whether a list holds an element of its own: for one with "EXCLUDE" its content counts. Goes as deep as such
/// items stand inside each other, which the caller bounds.
bool HoldsElement(const elementNode* list);

/// The form of a decoded or built node. The decoder marks constructed data by its children or by "CONSTRUCTED", and what it found
/// inside a string by "PRIMITIVE". A SEQUENCE, a SET or a tag without contents has either form: some encode an empty constructed
/// element as a primitive one, such as the NULL of an implicit tag.
EncodingForm FormOfData(const elementNode& data);

/// The form that an item of a template asks for.
///
/// | the item                                                           | wants       |
/// |--------------------------------------------------------------------|-------------|
/// | "CONSTRUCTED" or "EXPLICIT", SEQUENCE, SET                         | constructed |
/// | "PRIMITIVE", "IMPLICIT" with a value, another universal type       | primitive   |
/// | a tag with typed items inside, or several                          | constructed |
/// | an OCTET or BIT STRING with typed items inside: its octets are DER | either      |
/// | a tag with a lone name, with nothing, or with NULL inside          | either      |
EncodingForm FormOfItem(const elementNode& item);

/// Whether an item of a universal type other than SEQUENCE, SET and EXTERNAL is encoded as constructed, which DER forbids (X.690,
/// 10.2): OCTET_STRING{SEQUENCE{a}} has the identifier 24. "PRIMITIVE" gives 04.
[[nodiscard]] bool IsConstructedString(const elementNode& item);

} // namespace ccrypto
