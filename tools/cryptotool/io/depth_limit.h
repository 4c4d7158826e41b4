#pragma once

#include "asn1/tree/element_node.h"

#include <cstdint>

namespace ccrypto {

/// Turns what lies below the first `levels` levels of decoded data back into bytes. The tree encodes to the same DER as before.
void LimitDepth(elementNode* first, std::uint32_t levels);

} // namespace ccrypto
