#pragma once

#include "core/memory/wiped.h"
#include "deflate/deflate_tables.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace ccrypto {

/// The text that is being packed, as far as it may be referred to, and where its beginnings were seen before.
///
/// Positions are those of the window, which slides by half when it is full. Four bytes are looked up in chains, the latest position
/// first; three bytes in a table of the latest position alone, since a short match far away saves nothing.
class MatchFinder {
public:
    /// Bytes before the end of the window that are packed only when more has come or none will.
    static constexpr std::size_t lookahead = deflate::maxMatch + 4;
    /// What is referred to at most; a slide always leaves that much.
    static constexpr std::size_t farthest = deflate::windowSize - lookahead;

    struct Match {
        std::uint32_t length = 0; ///< 0 where there is none
        std::uint32_t distance = 0;
    };
    struct Effort {
        std::uint32_t chain; ///< positions tried
        std::uint32_t nice;  ///< a match of this length is not improved on
    };

    MatchFinder();

    /// Takes what fits of the front of `input`, which is cut to the rest.
    void append(std::span<const std::uint8_t>& input);
    bool isFull() const { return end_ == capacity; }
    /// Drops the oldest half. Positions from then on are less by windowSize.
    void slide();

    std::size_t end() const { return end_; }
    const std::uint8_t* bytes() const { return window_.data(); }

    /// The longest match for the bytes at `position`, when longer than `shortest`; the position is entered.
    Match find(std::size_t position, std::uint32_t shortest, const Effort& effort);
    /// Enters a position that is not matched.
    void enter(std::size_t position);

private:
    static constexpr std::size_t capacity = std::size_t{2} * deflate::windowSize;
    static constexpr std::size_t slack = 16; ///< comparisons may read, and ignore, this many bytes after the end
    static constexpr std::uint32_t chainHashBits = 15;
    static constexpr std::size_t chainHashes = std::size_t{1} << chainHashBits;
    static constexpr std::uint32_t shortHashBits = 14;
    static constexpr std::size_t shortHashes = std::size_t{1} << shortHashBits;
    static constexpr std::size_t farthestShort = 4096;

    WipedArray<std::uint8_t> window_;
    /// By hash; 0 is none. What stands at position 0 is never found.
    WipedArray<std::uint16_t> latest_;
    WipedArray<std::uint16_t> latestShort_;
    /// By position modulo the window: the one before with the same hash.
    WipedArray<std::uint16_t> before_;
    std::size_t end_ = 0;
};

} // namespace ccrypto
