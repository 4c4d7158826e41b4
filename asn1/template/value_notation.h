#pragma once

#include "asn1/tree/element_node.h"
#include "asn1/tree/node_parts.h"
#include "core/text/string.h"

#include <string_view>

// How values are written in the JSON and XML forms of a tree of ASN.1 types: every value has exactly one text, and every text is a
// value.
//
// - Text is written unchanged; "#00ff" are bytes, and 'text' is text of single quotes.
// - A word before the "#" names another kind: "utf8Text#c3a4", "integer#0080", "-integer#05", "truth#02", "text#e4".
// - "characterData'1.5'" is character data.
// - Text that looks like one of these has a "\" before it, which is removed when it is read.
// - In an INTEGER or ENUMERATED a decimal number is a number, as DER holds it.
//
// Template text names kinds by the same words: %utf8Text"AB", %integer#0080.

namespace ccrypto {

/// The kind of value that a word names. \return false for any other word.
bool FindValueKind(std::string_view name, ElementType& type, bool& negative);
/// The word for the kind of a value; empty when it has none.
std::string_view ValueKindName(const element& value);

/// A type whose values are numbers.
constexpr bool IsNumberType(ElementType type)
{
    return type == ElementType::asn1Integer || type == ElementType::enumerated;
}
/// Whether `owner`, which may be null, is of such a type.
bool HoldsNumber(const elementNode* owner);

/// The text of a value. \param owner the node whose value it is, or null; the text depends on its type.
CCryptoString StringNotation(const element& value, const elementNode* owner);
/// The same text with the kind and the bytes spelled out: "text#e4".
CCryptoString MarkedNotation(const element& value);
element FromStringNotation(std::string_view text, const elementNode* owner);

/// An integer without the zero octet that DER puts before a magnitude with its top bit set (200 is 00 C8). `owner` is the type it
/// belongs to: only a number type gets the octet back when it is written.
element WithoutSignOctet(const element& value, ElementType owner);

/// The decimal text of an integer under `owner`; empty when its bytes are not what the number alone would give.
CCryptoString DecimalNotation(const element& value, const elementNode* owner);

} // namespace ccrypto
