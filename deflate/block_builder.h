#pragma once

#include "core/memory/wiped.h"
#include "deflate/deflate_block.h"

#include <cstddef>
#include <cstdint>

namespace ccrypto::deflate {

/// Gathers symbols into blocks and writes each when it is full, or when what comes differs so much from what came before that codes
/// of its own save more than they cost.
class BlockBuilder {
public:
    /// `window` holds the bytes that the symbols stand for, from its beginning on; both must outlive the builder.
    BlockBuilder(const std::uint8_t* window, BitOutput& output) : output_(output), window_(window), symbols_(maxSymbols) {}

    void add(Symbol symbol)
    {
        symbols_[count_++] = symbol;
        recent_.count(symbol);
        recentLength_ += symbol.covers();
        if (count_ == nextCheck_)
            check();
    }

    /// The window moves on by `count` bytes, those in front of it are gone. A block that might best be stored is written before.
    void slide(std::size_t count);

    /// Writes what is gathered; `last` ends the stream, with an empty block if need be.
    void finish(bool last);

private:
    /// Joins the recent symbols to the block, or writes the block and lets them begin the next one.
    void check();
    void write(std::size_t symbols, bool last);

    static constexpr std::size_t maxSymbols = 32768;
    static constexpr std::size_t checkEvery = 2048;

    BitOutput& output_;
    const std::uint8_t* window_;
    std::ptrdiff_t start_ = 0; ///< where the block starts in the window; below 0 its bytes are not all there
    WipedArray<Symbol> symbols_;
    std::size_t count_ = 0;
    std::size_t nextCheck_ = checkEvery;

    Frequencies frequencies_; ///< of the symbols up to the last check
    std::size_t checked_ = 0;
    std::size_t length_ = 0;
    Frequencies recent_; ///< of those since
    std::size_t recentLength_ = 0;
};

} // namespace ccrypto::deflate
