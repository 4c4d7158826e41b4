#pragma once

#include "asn1/tree/element_node.h"

namespace ccrypto {

/// The contents octets (X.690, 8.1.4) of a value: what follows identifier and length.
///
/// \param owner the item whose value it is; its type says how the value is written. \param value the value, or the list of
/// elements. \return false, logged, when the value cannot be written.
bool ValueOctets(const elementNode& owner, const elementNode* value, element& octets);

/// The same of the one node, whatever follows it.
bool SingleValueOctets(const elementNode& owner, const elementNode& value, element& octets);

/// The bytes of a value without its kind: a text that is filled in or found as an OCTET STRING.
inline element Octets(const element& value)
{
    return {value.data(), value.length()};
}

} // namespace ccrypto
