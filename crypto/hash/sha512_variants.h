#pragma once

#include <cstddef>
#include <cstdint>

namespace ccrypto {

extern const std::uint64_t sha512Constants[80];

/// SHA-512 with 256-bit registers for the message and BMI2 rotations for the state.
void CompressSHA512WithAvx2(std::uint64_t* state, const std::uint8_t* blocks, std::size_t count);
/// The same with rotations and three-operand logic of AVX-512 for the message.
void CompressSHA512WithAvx512(std::uint64_t* state, const std::uint8_t* blocks, std::size_t count);

} // namespace ccrypto
