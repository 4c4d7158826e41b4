#include "deflate/huffman.h"

#include "core/memory/wiped.h"
#include "deflate/deflate_tables.h"

#include <algorithm>
#include <array>
#include <cstddef>

using namespace ccrypto;

namespace {

constexpr std::uint32_t distanceBits = 8;

std::uint32_t PrimaryBits(CCryptoHuffman::Alphabet alphabet)
{
    switch (alphabet) {
    case CCryptoHuffman::Alphabet::codeLengths:
        return deflate::maxCodeLengthCode;
    case CCryptoHuffman::Alphabet::literals:
        return CCryptoHuffman::literalBits;
    default:
        return distanceBits;
    }
}

using LengthCounts = Wiped<std::array<std::uint32_t, deflate::maxCode + 1>>;

/// A symbol and how often it occurs, in one number that sorts by frequency.
struct Weights {
    Wiped<std::array<std::uint64_t, deflate::literalCodes>> ordered;
    std::size_t count = 0;

    static constexpr std::uint32_t symbolBits = 16;
    std::size_t symbol(std::size_t index) const { return ordered[index] & ((1U << symbolBits) - 1); }
    std::uint64_t frequency(std::size_t index) const { return ordered[index] >> symbolBits; }
    void add(std::size_t symbol, std::uint64_t frequency) { ordered[count++] = frequency << symbolBits | symbol; }
};

Weights Order(std::span<const std::uint32_t> frequencies)
{
    Weights weights;
    for (std::size_t symbol = 0; symbol < frequencies.size(); ++symbol) {
        if (frequencies[symbol] != 0)
            weights.add(symbol, frequencies[symbol]);
    }
    if (weights.count == 1)
        weights.add(weights.symbol(0) == 0 ? 1 : 0, 0);
    std::sort(weights.ordered.begin(), weights.ordered.begin() + static_cast<std::ptrdiff_t>(weights.count));
    return weights;
}

/// The number of symbols at each depth of the Huffman tree; what lies deeper than `maxLength` is counted there. Joined nodes are
/// made in the order of their weight, so two queues replace a heap.
LengthCounts CountDepths(const Weights& weights, std::uint32_t maxLength)
{
    const std::size_t leaves = weights.count;
    Wiped<std::array<std::uint64_t, deflate::literalCodes>> joined;
    Wiped<std::array<std::uint16_t, 2 * deflate::literalCodes>> parent; // leaves first, then joined nodes
    std::size_t nextLeaf = 0;
    std::size_t nextJoined = 0;
    for (std::size_t made = 0; made + 1 < leaves; ++made) {
        joined[made] = 0;
        for (int child = 0; child < 2; ++child) {
            const bool leaf = nextLeaf < leaves && (nextJoined == made || weights.frequency(nextLeaf) <= joined[nextJoined]);
            joined[made] += leaf ? weights.frequency(nextLeaf) : joined[nextJoined];
            parent[leaf ? nextLeaf++ : leaves + nextJoined++] = static_cast<std::uint16_t>(made);
        }
    }

    LengthCounts counts{};
    Wiped<std::array<std::uint16_t, deflate::literalCodes>> depth;
    const std::size_t root = leaves - 2;
    depth[root] = 0;
    for (std::size_t node = root; node-- > 0;)
        depth[node] = static_cast<std::uint16_t>(depth[parent[leaves + node]] + 1);
    for (std::size_t leaf = 0; leaf < leaves; ++leaf)
        ++counts[std::min<std::uint32_t>(depth[parent[leaf]] + 1U, maxLength)];
    return counts;
}

/// Makes the code complete again after the limit shortened words: while there are too many, one word of the greatest length below
/// the limit becomes the parent of two, itself and one from the limit.
void Fit(LengthCounts& counts, std::uint32_t maxLength)
{
    std::uint64_t taken = 0;
    for (std::uint32_t length = 1; length <= maxLength; ++length)
        taken += std::uint64_t{counts[length]} << (maxLength - length);
    for (; taken > std::uint64_t{1} << maxLength; --taken) {
        std::uint32_t length = maxLength - 1;
        while (counts[length] == 0)
            --length;
        --counts[length];
        counts[length + 1] += 2;
        --counts[maxLength];
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
    for (std::uint32_t length = 1; length <= maxLength; ++length) {
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
    for (std::uint32_t length = 1; length < maxLength; ++length)
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
    // As wide as the longest code after this prefix: the first width at which the codes left fill it.
    secondaryBits_ = length - primaryBits_;
    std::int32_t open = 1 << secondaryBits_;
    for (;; ++secondaryBits_, open <<= 1) {
        const std::uint32_t width = primaryBits_ + secondaryBits_;
        open -= left[width];
        if (open <= 0 || width == maxLength)
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

namespace ccrypto {

void MakeCodeLengths(std::span<const std::uint32_t> frequencies, std::uint32_t maxLength, std::span<std::uint8_t> lengths)
{
    std::fill(lengths.begin(), lengths.end(), std::uint8_t{0});
    const Weights weights = Order(frequencies);
    if (weights.count == 0)
        return;
    LengthCounts counts = CountDepths(weights, maxLength);
    Fit(counts, maxLength);
    std::size_t index = 0;
    for (std::uint32_t length = maxLength; length > 0; --length) {
        for (std::uint32_t left = counts[length]; left > 0; --left)
            lengths[weights.symbol(index++)] = static_cast<std::uint8_t>(length);
    }
}

void MakeCodeWords(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> words)
{
    Wiped<std::array<std::uint32_t, deflate::maxCode + 2>> next{};
    for (const std::uint8_t length : lengths) {
        if (length != 0)
            ++next[length + 1U];
    }
    for (std::uint32_t length = 2; length <= deflate::maxCode; ++length)
        next[length] = (next[length] + next[length - 1]) << 1;
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
        std::uint32_t word = 0;
        if (lengths[symbol] != 0)
            word = deflate::Reversed(next[lengths[symbol]]++, lengths[symbol]);
        words[symbol] = static_cast<std::uint16_t>(word);
    }
}

} // namespace ccrypto
