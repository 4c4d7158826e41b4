#pragma once

#include <cstddef>
#include <cstdint>

namespace ccrypto {

// The compression of hash functions with instructions that not every processor has; shapes as in CompressBlocks.

/// With the processor's SHA instructions.
void CompressSHA1WithShaNi(std::uint32_t* state, const std::uint8_t* blocks, std::size_t count);
void CompressSHA256WithShaNi(std::uint32_t* state, const std::uint8_t* blocks, std::size_t count);

/// With 256-bit registers for the message and BMI2 rotations for the state.
void CompressSHA512WithAvx2(std::uint64_t* state, const std::uint8_t* blocks, std::size_t count);
/// The same with rotations and three-operand logic of AVX-512 for the message.
void CompressSHA512WithAvx512(std::uint64_t* state, const std::uint8_t* blocks, std::size_t count);

} // namespace ccrypto
