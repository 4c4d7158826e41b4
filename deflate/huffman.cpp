#include "deflate/huffman.h"

#include "deflate/deflate_tables.h"

#include <algorithm>

using namespace ccrypto;

namespace {

constexpr std::uint32_t distanceBits = 8;

std::uint32_t PrimaryBits(CCryptoHuffman::Alphabet alphabet)
{
    switch (alphabet) {
    case CCryptoHuffman::Alphabet::codeLengths:
        return deflate::longestCodeLengthCode;
    case CCryptoHuffman::Alphabet::literals:
        return CCryptoHuffman::literalBits;
    default:
        return distanceBits;
    }
}

} // namespace

CCryptoHuffman::CCryptoHuffman(Alphabet alphabet)
    : alphabet_(alphabet), primaryBits_(PrimaryBits(alphabet)), primaryMask_((std::uint64_t{1} << primaryBits_) - 1)
{
    entries_.fill(invalidFlag | (1U << 8) | 1U);
}

CCryptoHuffman::Fault CCryptoHuffman::check(const Counts& counts, std::size_t used) const
{
    std::int32_t open = 1;
    for (std::uint32_t length = 1; length <= longest; ++length) {
        open = open * 2 - counts[length];
        if (open < 0)
            return Fault::overSubscribed;
    }
    if (open == 0)
        return Fault::none;
    const bool single = used == 1 && counts[1] == 1 && alphabet_ != Alphabet::codeLengths;
    const bool noDistances = used == 0 && alphabet_ == Alphabet::distances;
    return single || noDistances ? Fault::none : Fault::incomplete;
}

CCryptoHuffman::Fault CCryptoHuffman::Build(std::span<const std::uint8_t> lengths)
{
    std::fill_n(entries_.begin(), primaryMask_ + 1, invalidFlag | (1U << 8) | 1U);
    used_ = static_cast<std::uint32_t>(primaryMask_ + 1);

    Counts counts{};
    for (const std::uint8_t length : lengths)
        ++counts[length];
    const std::size_t coded = lengths.size() - counts[0];
    counts[0] = 0;
    const Fault fault = check(counts, coded);
    if (fault != Fault::none)
        return fault;

    Counts starts{};
    for (std::uint32_t length = 1; length < longest; ++length)
        starts[length + 1] = static_cast<std::uint16_t>(starts[length] + counts[length]);
    Wiped<std::array<std::uint16_t, deflate::literalCodes>> sorted;
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
        if (lengths[symbol] != 0)
            sorted[starts[lengths[symbol]]++] = static_cast<std::uint16_t>(symbol);
    }
    fill({sorted.data(), coded}, counts);
    return Fault::none;
}

void CCryptoHuffman::fill(std::span<const std::uint16_t> sorted, Counts& counts)
{
    constexpr std::uint32_t noPrefix = 0xFFFFFFFF;
    std::uint32_t code = 0;
    std::uint32_t length = 1;
    std::uint32_t openPrefix = noPrefix;
    std::uint32_t openStart = 0;
    for (const std::uint16_t symbol : sorted) {
        while (counts[length] == 0) {
            ++length;
            code <<= 1;
        }
        const std::uint32_t stored = deflate::Reversed(code++, length);
        const std::uint32_t entry = describe(symbol, length);
        if (length <= primaryBits_) {
            for (std::uint32_t index = stored; index <= primaryMask_; index += 1U << length)
                entries_[index] = entry;
        } else {
            const auto prefix = static_cast<std::uint32_t>(stored & primaryMask_);
            if (prefix != openPrefix) {
                openPrefix = prefix;
                openStart = openSecondary(prefix, length, counts);
            }
            for (std::uint32_t index = stored >> primaryBits_; index < (1U << secondaryBits_);
                 index += 1U << (length - primaryBits_))
                entries_[openStart + index] = entry;
        }
        --counts[length];
    }
}

std::uint32_t CCryptoHuffman::openSecondary(std::uint32_t prefix, std::uint32_t length, const Counts& left)
{
    // As wide as the longest code behind this prefix: the first width at which the codes left fill it.
    secondaryBits_ = length - primaryBits_;
    std::int32_t open = 1 << secondaryBits_;
    for (;; ++secondaryBits_, open <<= 1) {
        const std::uint32_t width = primaryBits_ + secondaryBits_;
        open -= left[width];
        if (open <= 0 || width == longest)
            break;
    }
    const std::uint32_t start = used_;
    used_ += 1U << secondaryBits_;
    entries_[prefix] = (start << 16) | linkFlag | secondaryBits_;
    return start;
}

std::uint32_t CCryptoHuffman::describe(std::uint32_t symbol, std::uint32_t length) const
{
    const std::uint32_t code = length << 8;
    const auto run = [&](const deflate::ValueRun& values) {
        return (std::uint32_t{values.base} << 16) | code | (length + values.extraBits);
    };
    const auto itself = [&](std::uint32_t flags) { return (symbol << 16) | flags | code | length; };

    switch (alphabet_) {
    case Alphabet::codeLengths:
        return symbol < deflate::repeatPrevious ? itself(literalFlag) : itself(0);
    case Alphabet::literals:
        if (symbol < deflate::endOfBlock)
            return itself(literalFlag);
        if (symbol == deflate::endOfBlock)
            return itself(endFlag);
        return symbol < deflate::usedLiteralCodes ? run(deflate::lengthRuns[symbol - deflate::firstLengthCode])
                                                  : itself(invalidFlag);
    default:
        return symbol < deflate::usedDistanceCodes ? run(deflate::distanceRuns[symbol]) : itself(invalidFlag);
    }
}
