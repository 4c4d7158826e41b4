#include "deflate/deflate_encoder.h"

namespace ccrypto {

/// How hard to look.
struct DeflateEncoder::Level {
    bool lazy;
    std::uint32_t good; ///< with a match of this length pending, a quarter of the tries are made
    std::uint32_t sure; ///< with a match of this length, the next byte is not tried
    MatchFinder::Effort effort;
};

const DeflateEncoder::Level DeflateEncoder::levels[] = {
    {false, 0, 0, {2, 8}},     {false, 0, 0, {6, 16}},       {false, 0, 0, {16, 32}},
    {true, 4, 8, {16, 32}},    {true, 8, 16, {32, 32}},      {true, 8, 16, {128, 128}},
    {true, 8, 32, {256, 128}}, {true, 32, 128, {1024, 258}}, {true, 32, 258, {4096, 258}},
};

DeflateEncoder::DeflateEncoder(int level, BitOutput& output)
    : level_(levels[level - 1]), output_(output), blocks_(finder_.bytes(), output)
{
}

void DeflateEncoder::Write(std::span<const std::uint8_t> piece)
{
    while (!piece.empty()) {
        finder_.append(piece);
        pack(false);
        if (finder_.isFull())
            slide();
    }
}

void DeflateEncoder::Finish()
{
    pack(true);
    if (hasPendingByte_)
        blocks_.add(deflate::Symbol::Literal(finder_.bytes()[position_ - 1]));
    hasPendingByte_ = false;
    blocks_.finish(true);
    output_.alignToByte();
}

void DeflateEncoder::pack(bool all)
{
    const std::size_t held = all ? 0 : MatchFinder::lookahead;
    const std::size_t limit = finder_.end() > held ? finder_.end() - held : 0;
    if (level_.lazy)
        packLazily(limit);
    else
        packGreedily(limit);
}

void DeflateEncoder::slide()
{
    blocks_.slide(deflate::windowSize);
    finder_.slide();
    position_ -= deflate::windowSize;
}

void DeflateEncoder::enter(std::size_t from, std::size_t to)
{
    for (std::size_t position = from; position < to; ++position)
        finder_.enter(position);
}

void DeflateEncoder::packGreedily(std::size_t limit)
{
    while (position_ < limit) {
        const MatchFinder::Match match = finder_.find(position_, 0, level_.effort);
        if (match.length == 0) {
            blocks_.add(deflate::Symbol::Literal(finder_.bytes()[position_++]));
            continue;
        }
        blocks_.add(deflate::Symbol::Match(match.length, match.distance));
        enter(position_ + 1, position_ + match.length);
        position_ += match.length;
    }
}

MatchFinder::Match DeflateEncoder::find(std::uint32_t shortest)
{
    if (shortest >= level_.sure) {
        finder_.enter(position_);
        return {};
    }
    MatchFinder::Effort effort = level_.effort;
    if (shortest >= level_.good)
        effort.chain /= 4;
    return finder_.find(position_, shortest, effort);
}

void DeflateEncoder::packLazily(std::size_t limit)
{
    while (position_ < limit) {
        const MatchFinder::Match match = find(pending_.length);
        if (pending_.length != 0 && match.length <= pending_.length) {
            takePending();
            continue;
        }
        if (hasPendingByte_)
            blocks_.add(deflate::Symbol::Literal(finder_.bytes()[position_ - 1]));
        pending_ = match;
        hasPendingByte_ = true;
        ++position_;
    }
    // At the end of the input the position may be past it, after a match that ends there.
    if (limit == finder_.end() && pending_.length != 0)
        takePending();
}

void DeflateEncoder::takePending()
{
    const std::size_t end = position_ - 1 + pending_.length;
    blocks_.add(deflate::Symbol::Match(pending_.length, pending_.distance));
    enter(position_ + 1, end);
    position_ = end;
    pending_ = {};
    hasPendingByte_ = false;
}

} // namespace ccrypto
