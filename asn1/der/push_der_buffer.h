#pragma once

#include "asn1/tree/push_buffer.h"

/// Writes a tree as DER (X.690). Each node becomes one element; in order:
///
/// - "EXCLUDE" in the bracket list leaves out the node's own identifier and length;
/// - an item with "OPTIONAL" whose placeholders were not filled is left out, as is a placeholder by itself;
/// - the constructed bit is a SEQUENCE's and SET's, and follows elsewhere from content that is typed, unless "PRIMITIVE" or
///   "IMPLICIT" says otherwise; "CONSTRUCTED" and "EXPLICIT" set it for a value without a type, too;
/// - a value is written as its node's type asks: the sign of an INTEGER, the arcs of an OBJECT_IDENTIFIER, the character set of a
///   UTF8String or BMPString, the unused bits of a BIT_STRING before its bytes;
/// - octets or a number with a value are the tag of a BER-TLV data object: tag, length, value; without one they stand for
///   themselves, so that #BF81,id{…} writes the last octet of a tag from a name. Any other value with content is refused.
class CPushDerBuffer : public CPushBuffer {
public:
    [[nodiscard]] bool Push(const elementNode* first) override;
};

namespace ccrypto {

/// The contents octets (X.690, 8.1.4) of a value: what follows identifier and length.
///
/// \param owner the item whose value it is; its type says how the value is written. \param value the value, or the list of
/// elements. \return false, logged, when the value cannot be written.
[[nodiscard]] bool ValueOctets(const elementNode& owner, const elementNode* value, element& octets);

/// The same of the one node, whatever follows it.
[[nodiscard]] bool SingleValueOctets(const elementNode& owner, const elementNode& value, element& octets);

} // namespace ccrypto
