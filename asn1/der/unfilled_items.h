#pragma once

#include "asn1/tree/element_node.h"

#include <cstdint>

// What of a template writes nothing: names by themselves that nothing was put into, and items with "OPTIONAL" that so have nothing
// inside.

namespace ccrypto {

/// Whether a list, which stands `depth` levels deep, holds anything that is written. A list too deep to be written counts as
/// filled, so that the writing says so.
[[nodiscard]] bool IsFilled(const elementNode* list, std::uint32_t depth);

/// Takes it out of a template. What is left reads back as it would from DER. Bracket lists stay as they are.
void DropUnfilledItems(ElementNodePtr& list);

} // namespace ccrypto
