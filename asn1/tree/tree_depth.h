#pragma once

#include <cstdint>

namespace ccrypto {

/// How many levels of a tree the text forms write, the lists in an item's parts among them.
constexpr std::uint32_t maxTreeDepth = 256;

} // namespace ccrypto
