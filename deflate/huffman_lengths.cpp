#include "deflate/huffman_lengths.h"

#include "core/memory/wiped.h"
#include "deflate/deflate_tables.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace ccrypto {

namespace {

using Counts = Wiped<std::array<std::uint32_t, deflate::longestCode + 1>>;

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

/// How deep each symbol lies in the Huffman tree, counted by depth; what lies below the deepest level allowed is counted there.
/// Joined nodes come into being in the order of their weight, so two queues take the place of a heap.
Counts CountDepths(const Weights& weights, std::uint32_t longest)
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

    Counts counts{};
    Wiped<std::array<std::uint16_t, deflate::literalCodes>> depth;
    const std::size_t root = leaves - 2;
    depth[root] = 0;
    for (std::size_t node = root; node-- > 0;)
        depth[node] = static_cast<std::uint16_t>(depth[parent[leaves + node]] + 1);
    for (std::size_t leaf = 0; leaf < leaves; ++leaf)
        ++counts[std::min<std::uint32_t>(depth[parent[leaf]] + 1U, longest)];
    return counts;
}

/// Makes room for the words that the limit shortened: as long as there are too many, one word of the greatest length below the
/// limit becomes the parent of two, itself and one from the limit.
void Fit(Counts& counts, std::uint32_t longest)
{
    std::uint64_t taken = 0;
    for (std::uint32_t length = 1; length <= longest; ++length)
        taken += std::uint64_t{counts[length]} << (longest - length);
    for (; taken > std::uint64_t{1} << longest; --taken) {
        std::uint32_t length = longest - 1;
        while (counts[length] == 0)
            --length;
        --counts[length];
        counts[length + 1] += 2;
        --counts[longest];
    }
}

} // namespace

void MakeCodeLengths(std::span<const std::uint32_t> frequencies, std::uint32_t longest, std::span<std::uint8_t> lengths)
{
    std::fill(lengths.begin(), lengths.end(), std::uint8_t{0});
    const Weights weights = Order(frequencies);
    if (weights.count == 0)
        return;
    Counts counts = CountDepths(weights, longest);
    Fit(counts, longest);
    std::size_t index = 0;
    for (std::uint32_t length = longest; length > 0; --length) {
        for (std::uint32_t left = counts[length]; left > 0; --left)
            lengths[weights.symbol(index++)] = static_cast<std::uint8_t>(length);
    }
}

void MakeCodeWords(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> words)
{
    Wiped<std::array<std::uint32_t, deflate::longestCode + 2>> next{};
    for (const std::uint8_t length : lengths) {
        if (length != 0)
            ++next[length + 1U];
    }
    for (std::uint32_t length = 2; length <= deflate::longestCode; ++length)
        next[length] = (next[length] + next[length - 1]) << 1;
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
        std::uint32_t word = 0;
        if (lengths[symbol] != 0)
            word = deflate::Reversed(next[lengths[symbol]]++, lengths[symbol]);
        words[symbol] = static_cast<std::uint16_t>(word);
    }
}

} // namespace ccrypto
