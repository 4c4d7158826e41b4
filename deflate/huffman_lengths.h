#pragma once

#include <cstdint>
#include <span>

namespace ccrypto {

/// Chooses the lengths of a canonical Huffman code: as few bits in all as a code without a word longer than `longest` bits takes,
/// or nearly so where the limit bites. A symbol that does not occur gets no code (0), except that a set with one symbol gets a
/// second, since decoders differ on codes of one word; a set with none stays empty.
void MakeCodeLengths(std::span<const std::uint32_t> frequencies, std::uint32_t longest, std::span<std::uint8_t> lengths);

/// The words of the code with these lengths (RFC 1951, 3.2.2), their first bit lowest.
void MakeCodeWords(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> words);

} // namespace ccrypto
