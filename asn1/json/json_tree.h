#pragma once

#include "asn1/tree/element_node.h"

#include <string_view>

// The shapes that JSON has in a tree.
//
// An ordinary document: the members of an object are identifiers, and siblings of each other; a member's value is its short value,
// or for an array its bracket list, or for an object its content. In an array an object is a node without a token with the members
// as its content, an array one with the items as its bracket list. An empty array is a list of one "%" token; an empty object has
// no content.

namespace ccrypto {

/// The name of the one member that holds a list of items as its array, where not all of a tree is one item of an ASN.1 type.
constexpr std::string_view jsonItemsName = "ASN.1";

constexpr ElementType emptyJsonArray = ElementType::percent;

/// Whether a tree is that of an ordinary document.
bool IsOrdinaryJson(const elementNode* first);

/// A value of an item that stands behind the item's name, without an array around it.
bool HasPlainJsonValue(const elementNode& item);
bool IsPlainJsonTruth(const element& value);
/// Character data that is a JSON number, and no integer.
bool IsJsonNumberOfText(const element& value);
/// Whether a value of an item is printed as this text in quotes.
bool IsJsonItemString(const element& value, const elementNode* owner, std::string_view text);

/// A node that stands by itself in an array: a value or null.
bool IsJsonScalar(const elementNode& node);
bool IsEmptyJsonArray(const elementNode* list);

} // namespace ccrypto
