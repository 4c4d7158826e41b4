#pragma once

#include <cstddef>

namespace ccrypto::platform {

/// The bytes that may be used of a block from std::malloc: what was asked for, or more. `block` must not be null.
std::size_t HeapBlockSize(void* block);

} // namespace ccrypto::platform
