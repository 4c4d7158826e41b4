#pragma once

#include <cstddef>
#include <cstdint>

namespace ccrypto {

/// SHA-1 with the processor's SHA instructions.
void CompressSHA1WithShaNi(std::uint32_t* state, const std::uint8_t* blocks, std::size_t count);

} // namespace ccrypto
