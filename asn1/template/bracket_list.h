#pragma once

#include "asn1/tree/element_node.h"

namespace ccrypto {

/// Questions to the bracket and modifier lists of a node. A word counts whether it was written plain or in quotes.
bool HasBracket(const elementNode& node, ElementType word);
bool HasModifier(const elementNode& node, ElementType word);

/// "EXCLUDE" in the bracket list: the node stands for its content, without a wrapper.
bool IsExcluded(const elementNode& node);

/// The first number of the bracket list, a tag number or the unused bits of a BIT_STRING; null when there is none.
const element* BracketNumber(const elementNode& node);

/// What a node's parts say about its encoding, found in one pass.
struct EncodingMarks {
    const elementNode* value = nullptr; ///< as elementNode::value()
    const element* number = nullptr;    ///< as BracketNumber()
    bool excluded = false;
    bool optional = false;
    bool primitive = false;   ///< "PRIMITIVE" or "IMPLICIT"
    bool constructed = false; ///< "CONSTRUCTED" or "EXPLICIT"
};
EncodingMarks EncodingMarksOf(const elementNode& node);

} // namespace ccrypto
