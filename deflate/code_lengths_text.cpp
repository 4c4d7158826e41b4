#include "deflate/code_lengths_text.h"

#include "deflate/huffman.h"

#include <algorithm>

namespace ccrypto::deflate {
namespace {

std::size_t WithoutTail(std::span<const std::uint8_t> lengths, std::size_t least)
{
    std::size_t count = lengths.size();
    while (count > least && lengths[count - 1] == 0)
        --count;
    return count;
}

std::uint32_t ExtraBits(std::uint32_t code)
{
    return code < repeatPrevious ? 0 : repeatRuns[code - repeatPrevious].extraBits;
}

} // namespace

CodeLengthsText::CodeLengthsText(std::span<const std::uint8_t> literals, std::span<const std::uint8_t> distances)
    : literalCount_(WithoutTail(literals, firstLengthCode)), distanceCount_(WithoutTail(distances, 1))
{
    Wiped<std::array<std::uint8_t, usedLiteralCodes + usedDistanceCodes>> all;
    const auto next = std::copy_n(literals.begin(), literalCount_, all.begin());
    std::copy_n(distances.begin(), distanceCount_, next);
    shorten({all.data(), literalCount_ + distanceCount_});

    Wiped<std::array<std::uint32_t, codeLengthCodes>> frequencies{};
    for (std::size_t index = 0; index < itemCount_; ++index)
        ++frequencies[items_[index].code];
    MakeCodeLengths(frequencies, maxCodeLengthCode, lengths_);
    MakeCodeWords(lengths_, words_);
    while (codeCount_ > 4 && lengths_[codeLengthOrder[codeCount_ - 1]] == 0)
        --codeCount_;

    bits_ = 5 + 5 + 4 + 3 * codeCount_;
    for (std::uint32_t code = 0; code < codeLengthCodes; ++code)
        bits_ += std::uint64_t{frequencies[code]} * (lengths_[code] + ExtraBits(code));
}

void CodeLengthsText::shorten(std::span<const std::uint8_t> lengths)
{
    for (std::size_t start = 0; start < lengths.size();) {
        std::size_t end = start + 1;
        while (end < lengths.size() && lengths[end] == lengths[start])
            ++end;
        addRun(lengths[start], end - start);
        start = end;
    }
}

void CodeLengthsText::addRun(std::uint8_t length, std::size_t count)
{
    if (length != 0) {
        add(length, 0);
        --count;
    }
    while (count >= 3) {
        const std::uint32_t code = length != 0 ? repeatPrevious : count <= 10 ? repeatZero : repeatZeroLong;
        const ValueRun& run = repeatRuns[code - repeatPrevious];
        const std::size_t most = run.base + (std::size_t{1} << run.extraBits) - 1;
        const std::size_t taken = std::min(count, most);
        add(code, taken - run.base);
        count -= taken;
    }
    for (; count > 0; --count)
        add(length, 0);
}

void CodeLengthsText::add(std::uint32_t code, std::size_t extra)
{
    items_[itemCount_++] = {static_cast<std::uint8_t>(code), static_cast<std::uint8_t>(extra)};
}

void CodeLengthsText::write(BitOutput& output) const
{
    output.put((literalCount_ - 257) | (distanceCount_ - 1) << 5 | (codeCount_ - 4) << 10, 14);
    for (std::size_t index = 0; index < codeCount_; ++index)
        output.put(lengths_[codeLengthOrder[index]], 3);
    for (std::size_t index = 0; index < itemCount_; ++index) {
        const Item item = items_[index];
        const std::uint64_t word = words_[item.code] | std::uint64_t{item.extra} << lengths_[item.code];
        output.put(word, lengths_[item.code] + ExtraBits(item.code));
    }
}

} // namespace ccrypto::deflate
