#pragma once

#include "core/element.h"

#include <vector>

/// The certificates of the system's trust store that are 900 to 2048 bytes long, as most are; none without a store.
const std::vector<element>& Certificates();

/// A revocation list of `entries` entries with a reason each, some 50 bytes an entry, without a signature that would hold.
element RevocationList(std::uint32_t entries);
