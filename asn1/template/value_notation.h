#pragma once

#include "asn1/tree/element_node.h"
#include "core/text/string.h"

#include <string_view>

// How values stand in the JSON and XML forms of a tree of ASN.1 types: every value has exactly one text, and every text is a value.
//
// - Text stands for itself; "#00ff" are bytes, and 'text' is text of single quotes.
// - A word in front of the "#" names another kind: "utf8Text#c3a4", "integer#0080", "-integer#05", "truth#02", "text#e4".
// - "characterData'1.5'" is character data.
// - Text that looks like one of these has a "\" in front, which is taken off when it is read.
//
// Template text names kinds by the same words: %utf8Text"AB", %integer#0080.

namespace ccrypto {

/// The kind of value that a word names. \return false for any other word.
bool FindValueKind(std::string_view name, ElementType& type, bool& negative);
/// The word for the kind of a value; empty when it has none.
std::string_view ValueKindName(const element& value);

/// Text, bytes, a number or truth: what stands for itself, not for a word of the language.
bool IsValue(ElementType type);
/// A node that is nothing but a value.
bool IsBareValue(const elementNode& node);
bool IsBare(const elementNode& node);
/// The types whose values are numbers.
constexpr bool IsNumberType(ElementType type)
{
    return type == ElementType::asn1Integer || type == ElementType::enumerated;
}
/// Whether a list is one bare value and no more.
bool IsSingleValue(const elementNode* list);

/// The text of a value. \param owner the node whose value it is, or null: the kind of text matters to some types alone.
CCryptoString StringNotation(const element& value, const elementNode* owner);
/// The same text with the kind and the bytes spelled out: "text#e4".
CCryptoString MarkedNotation(const element& value);
element FromStringNotation(std::string_view text);

/// An integer without the sign octet in front of its magnitude, where `owner` is a type that gets it when it is written, whether
/// the value holds it or not.
element WithoutSignOctet(const element& value, ElementType owner);

/// The decimal text of an integer under `owner`; empty when its bytes are not what the number alone would give.
CCryptoString DecimalNotation(const element& value, const elementNode* owner);

} // namespace ccrypto
