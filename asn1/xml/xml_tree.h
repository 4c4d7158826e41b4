#pragma once

#include "asn1/tree/element_node.h"
#include "core/text/string.h"

#include <string_view>

// The shapes that XML has in a tree.
//
// An ordinary document: an element is an identifier, its attributes are its bracket list, identifiers with a text as their short
// value; child elements and text, as characterData, are its content.
//
// The tree of a template: an element of the namespace is an item, named for its word; its parts are attributes, a single short
// value is its text. What cannot name an element is an element "item": a value, with its notation as text, or an item with its
// word in the attribute "token".

namespace ccrypto {

constexpr std::string_view xmlNamespaceAttribute = "xmlns";
constexpr std::string_view xmlNamespace = "urn:x-asn1:template";

constexpr std::string_view xmlItemTag = "item";
constexpr std::string_view xmlListTag = "list"; ///< around the items of a tree that has more than one root

constexpr std::string_view xmlTokenAttribute = "token";
constexpr std::string_view xmlBracketsAttribute = "brackets";
constexpr std::string_view xmlModifiersAttribute = "modifiers";
constexpr std::string_view xmlValueAttribute = "value";
constexpr std::string_view xmlOperationAttribute = "operation";

/// Whether no two attributes have the same name.
bool NamesDiffer(const elementNode* attributes);
/// Whether the attributes of a root declare a template.
bool DeclaresTemplate(const elementNode* attributes);
/// Whether a tree is that of an ordinary document.
bool IsOrdinaryXml(const elementNode* first);

/// The tag of an item: its word, or "item".
CCryptoString XmlItemTag(const element& token);
/// The token of a tag other than "item".
element TokenOfXmlTag(std::string_view tag);

/// The text of a value under `owner`, which may be null. FromStringNotation reads it.
CCryptoString XmlText(const element& value, const elementNode* owner);

} // namespace ccrypto
