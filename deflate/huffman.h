#pragma once

#include "core/memory/wiped.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// A table that decodes a canonical Huffman code of Deflate (RFC 1951, 3.2.2) several bits at a time.
///
/// One look-up by the next bits of the input finds a code of up to `primaryBits` bits; longer ones go through one further table.
/// An entry holds all that a decoder needs: the value or the first value of a run, the number of bits that select one of the run,
/// and the number of bits of the whole.
class CCryptoHuffman {
public:
    enum class Alphabet { codeLengths, literals, distances };
    enum class Fault { none, overSubscribed, incomplete };

    /// What a look-up finds, packed in 32 bits.
    struct Entry {
        std::uint32_t packed = 0;

        bool isLiteral() const { return (packed & literalFlag) != 0; }
        /// The code is longer than the primary table is wide.
        bool isLink() const { return (packed & linkFlag) != 0; }
        bool isEndOfBlock() const { return (packed & endFlag) != 0; }
        /// No code begins with these bits, or only an unused one.
        bool isInvalid() const { return (packed & invalidFlag) != 0; }
        /// A link, an end of block or invalid.
        bool isSpecial() const { return (packed & (linkFlag | endFlag | invalidFlag)) != 0; }

        /// The bits of the code and those after it that select a value of the run.
        std::uint32_t allBits() const { return packed & 0x3F; }
        std::uint32_t codeBits() const { return (packed >> 8) & 0xF; }
        /// A literal, a code length, or the first value of the run.
        std::uint32_t value() const { return packed >> 16; }
        /// The value that `bits`, which begin with the code, stand for.
        std::uint32_t valueOf(std::uint64_t bits) const
        {
            const std::uint64_t code = bits & ((std::uint64_t{1} << allBits()) - 1);
            return value() + static_cast<std::uint32_t>(code >> codeBits());
        }
    };

    explicit CCryptoHuffman(Alphabet alphabet);

    /// Makes the table of the code whose lengths are given by symbol; 0 is a symbol without a code, the greatest length is 15.
    /// Literals and distances may do with one code of one bit, distances with no code at all; every other set must be complete.
    /// After a fault the table decodes nothing.
    Fault Build(std::span<const std::uint8_t> lengths);

    /// The entry of the next bits, bit 0 first. When the input has fewer bits than the entry's allBits(), padded with zeros, the
    /// entry is not yet known.
    Entry find(std::uint64_t bits) const
    {
        const Entry entry = primary(bits);
        return entry.isLink() ? secondary(entry, bits) : entry;
    }
    /// The first of at most two look-ups.
    Entry primary(std::uint64_t bits) const { return {entries_[bits & primaryMask_]}; }
    /// The second, where the first found a link.
    Entry secondary(Entry link, std::uint64_t bits) const
    {
        return {entries_[link.value() + ((bits >> primaryBits_) & ((std::uint64_t{1} << link.allBits()) - 1))]};
    }

    static constexpr std::uint32_t literalBits = 11; ///< width of the primary table of literals

private:
    static constexpr std::uint32_t maxLength = 15;
    static constexpr std::uint32_t endFlag = 1U << 12;
    static constexpr std::uint32_t invalidFlag = 1U << 13;
    static constexpr std::uint32_t linkFlag = 1U << 14;
    static constexpr std::uint32_t literalFlag = 1U << 15;
    /// The most that any complete code of 288 symbols and 15 bits needs after a primary table of 11 bits.
    static constexpr std::size_t capacity = 2342;

    using Counts = ccrypto::Wiped<std::array<std::uint16_t, maxLength + 1>>;

    Fault check(const Counts& counts, std::size_t used) const;
    std::uint32_t describe(std::uint32_t symbol, std::uint32_t length) const;
    /// Uses `counts` up.
    void fill(std::span<const std::uint16_t> sorted, Counts& counts);
    /// The start of the table for codes that begin with `prefix`, made of the remaining codes of `length` bits and more.
    std::uint32_t openSecondary(std::uint32_t prefix, std::uint32_t length, const Counts& left);

    Alphabet alphabet_;
    std::uint32_t primaryBits_;
    std::uint64_t primaryMask_;
    std::uint32_t used_ = 0;
    std::uint32_t secondaryBits_ = 0;
    ccrypto::Wiped<std::array<std::uint32_t, capacity>> entries_{};
};

namespace ccrypto {

/// Chooses the lengths of a canonical Huffman code: the fewest bits in all that a code without a word longer than `maxLength` bits
/// takes, or slightly more where the limit matters. A symbol that does not occur gets no code (0), except that a set with one
/// symbol gets a second, since decoders differ on codes of one word; an empty set stays empty.
void MakeCodeLengths(std::span<const std::uint32_t> frequencies, std::uint32_t maxLength, std::span<std::uint8_t> lengths);

/// The words of the code with these lengths (RFC 1951, 3.2.2), their first bit lowest.
void MakeCodeWords(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> words);

} // namespace ccrypto
