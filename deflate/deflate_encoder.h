#pragma once

#include "deflate/block_builder.h"
#include "deflate/match_finder.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace ccrypto {

/// Packs bytes that arrive in pieces of any size into one Deflate stream (RFC 1951). Memory is constant, about 450 KiB. What comes
/// out does not depend on how the input was cut.
class DeflateEncoder {
public:
    /// `level` is 1 to 9; `output` must outlive the encoder.
    DeflateEncoder(int level, BitOutput& output);

    void Write(std::span<const std::uint8_t> piece);
    /// Ends the stream and fills its last byte.
    void Finish();

private:
    struct Level;
    static const Level levels[];

    /// Packs what may be packed: with `all` to the end, else as far as matches are sure to be seen whole.
    void pack(bool all);
    void packGreedily(std::size_t limit);
    void packLazily(std::size_t limit);
    void takePending();
    void slide();
    void enter(std::size_t from, std::size_t to);
    MatchFinder::Match find(std::uint32_t shortest);

    const Level& level_;
    BitOutput& output_;
    MatchFinder finder_;
    deflate::BlockBuilder blocks_;
    std::size_t position_ = 0;
    MatchFinder::Match pending_;  ///< for the byte before the position, if a better one does not come here
    bool hasPendingByte_ = false; ///< the byte before the position is not packed yet
};

} // namespace ccrypto
