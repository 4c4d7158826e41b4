#pragma once

#include <cstddef>
#include <cstdint>

namespace ccrypto {

extern const std::uint32_t sha256Constants[64];

/// SHA-256 with the processor's SHA instructions.
void CompressSHA256WithShaNi(std::uint32_t* state, const std::uint8_t* blocks, std::size_t count);

} // namespace ccrypto
