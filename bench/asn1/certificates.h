#pragma once

#include "core/text/element.h"

namespace ccrypto {

/// The one of middle size among the certificates of the system's trust store that are 900 to 2048 bytes long, as most are. Ends the
/// program when the store is missing.
const element& Certificate();

/// A revocation list of at least `bytes` bytes, without a signature that would hold. An entry is 39 bytes: a serial number of 20
/// and a date; 14 more with a reason.
element RevocationList(std::uint32_t bytes, bool withReasons = false);

} // namespace ccrypto
