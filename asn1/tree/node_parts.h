#pragma once

#include "asn1/tree/element_node.h"

namespace ccrypto {

/// Text, bytes, a number or truth, but not a word of the template language.
[[nodiscard]] bool IsValue(ElementType type);
/// A node without any part.
[[nodiscard]] inline bool IsBare(const elementNode& node)
{
    return node.firstPart() == nullptr;
}
/// A node that is nothing but a value.
[[nodiscard]] inline bool IsBareValue(const elementNode& node)
{
    return IsBare(node) && IsValue(node.type());
}
/// Whether a list is one bare value and no more.
[[nodiscard]] inline bool IsSingleValue(const elementNode* list)
{
    return list != nullptr && list->next() == nullptr && IsBareValue(*list);
}

/// Questions to the bracket and modifier lists of a node. A word counts whether it was written plain or in quotes.
[[nodiscard]] bool HasBracket(const elementNode& node, ElementType word);
[[nodiscard]] bool HasModifier(const elementNode& node, ElementType word);

/// "EXCLUDE" in the bracket list: the node stands for its content, without a wrapper.
[[nodiscard]] bool IsExcluded(const elementNode& node);

/// The first number of the bracket list, a tag number or the unused bits of a BIT_STRING; null when there is none.
[[nodiscard]] const element* BracketNumber(const elementNode& node);

/// What a node's parts say about its encoding, found in one pass.
struct EncodingMarks {
    const elementNode* value = nullptr; ///< as elementNode::value()
    const element* number = nullptr;    ///< as BracketNumber()
    bool excluded = false;
    bool optional = false;
    bool primitive = false;   ///< "PRIMITIVE" or "IMPLICIT"
    bool constructed = false; ///< "CONSTRUCTED" or "EXPLICIT"
};
[[nodiscard]] EncodingMarks EncodingMarksOf(const elementNode& node);

} // namespace ccrypto
