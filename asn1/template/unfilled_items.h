#pragma once

#include "asn1/tree/element_node.h"

namespace ccrypto {

/// Takes out of a template what writes nothing: names by themselves that nothing was put into, and items with "OPTIONAL" that so
/// have nothing inside. What is left reads back as it would from DER. Bracket lists stay as they are.
void DropUnfilledItems(ElementNodePtr& list);

} // namespace ccrypto
