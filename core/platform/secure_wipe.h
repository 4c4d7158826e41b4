#pragma once

#include <cstddef>

namespace platform {

/// Overwrites `count` bytes at `bytes` with zeros in a way the optimiser keeps, although nothing reads them afterwards.
/// `bytes` may be null when `count` is 0.
void SecureWipe(void* bytes, std::size_t count);

} // namespace platform
