#pragma once

#include "asn1/tree/element_node.h"
#include "core/text/string.h"

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

/// Whether an item's value follows its name without an array around it.
bool HasPlainJsonValue(const elementNode& item);
/// Character data that is a JSON number, and no integer.
bool IsJsonNumberOfText(const element& value);

/// A value as it is written: the text, and whether it is a JSON string.
struct JsonScalar {
    CCryptoString text;
    bool isString = false;
};
/// A value of an item under `owner`, which may be null. Numbers of 2^53 and more in magnitude are strings, since other programs
/// round them to a double (RFC 8259, 6).
JsonScalar JsonItemScalar(const element& value, const elementNode* owner);
/// The same of a value in an ordinary document, where a number keeps its notation.
JsonScalar JsonOrdinaryScalar(const element& value);
/// Whether a string of an item is written as its value prints, or is a decimal number for a number type.
bool IsJsonItemString(const element& value, const elementNode* owner, std::string_view text);
bool IsPlainJsonTruth(const element& value);

/// A node that is an array element by itself: a value or null.
bool IsJsonScalar(const elementNode& node);
bool IsEmptyJsonArray(const elementNode* list);

} // namespace ccrypto
