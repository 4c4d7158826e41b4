#pragma once

#include "asn1/tree/element_node.h"

/// Primitive or constructed (X.690, 8.1.2.5); `either` where a node does not tell.
enum class EncodingForm { either, primitive, constructed };

/// Whether a list holds an element of its own: one that "EXCLUDE" takes apart counts by what is inside it. Goes as deep as such
/// items stand inside each other, which the caller bounds.
bool HoldsElement(const elementNode* list);

/// The form of a decoded or built node. The decoder marks constructed data by its children or by "CONSTRUCTED", and what it found
/// inside a string by "PRIMITIVE".
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
