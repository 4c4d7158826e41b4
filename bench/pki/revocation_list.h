#pragma once

#include "core/text/element.h"

#include <cstdint>
#include <vector>

namespace ccrypto {

/// A revocation list of 10^6 entries of 38 bytes, without a signature that would hold. Serial numbers are 19 random bytes.
const element& MillionEntries();
/// The contents of the INTEGERs of 4096 entries all over that list, in random order.
const std::vector<element>& SomeSerialNumbers();

} // namespace ccrypto
