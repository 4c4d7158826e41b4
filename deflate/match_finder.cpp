#include "deflate/match_finder.h"

#include "core/base/byte_order.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace ccrypto {

namespace {

constexpr std::size_t windowMask = deflate::windowSize - 1;
constexpr std::uint32_t threeBytes = 0xFFFFFF;

std::uint32_t Hash(std::uint32_t word, std::uint32_t bits)
{
    return (word * 0x9E3779B1U) >> (32 - bits);
}

/// How many bytes from `first` and `second` on are equal, `most` at most; the four before that were compared.
std::uint32_t EqualBytes(const std::uint8_t* first, const std::uint8_t* second, std::uint32_t most)
{
    for (std::uint32_t length = 4; length < most; length += 8) {
        const std::uint64_t difference =
            LoadLittleEndian<std::uint64_t>(first + length) ^ LoadLittleEndian<std::uint64_t>(second + length);
        if (difference != 0)
            return std::min(most, length + static_cast<std::uint32_t>(std::countr_zero(difference)) / 8);
    }
    return most;
}

/// A number of turns known in advance lets the compiler take many at a time.
template <std::size_t Count>
void MoveBack(std::uint16_t* positions)
{
    for (std::size_t index = 0; index < Count; ++index) {
        const std::uint32_t position = positions[index];
        positions[index] = static_cast<std::uint16_t>(position > deflate::windowSize ? position - deflate::windowSize : 0);
    }
}

} // namespace

MatchFinder::MatchFinder()
    : window_(capacity + slack), latest_(chainHashes), latestShort_(shortHashes), before_(deflate::windowSize)
{
}

void MatchFinder::append(std::span<const std::uint8_t>& input)
{
    const std::size_t count = std::min(input.size(), capacity - end_);
    if (count != 0)
        std::memcpy(window_.data() + end_, input.data(), count);
    end_ += count;
    input = input.subspan(count);
}

void MatchFinder::slide()
{
    std::memmove(window_.data(), window_.data() + deflate::windowSize, end_ - deflate::windowSize);
    end_ -= deflate::windowSize;
    MoveBack<chainHashes>(latest_.data());
    MoveBack<shortHashes>(latestShort_.data());
    MoveBack<deflate::windowSize>(before_.data());
}

MatchFinder::Match MatchFinder::find(std::size_t position, std::uint32_t shortest, const Effort& effort)
{
    Match best;
    const auto most = static_cast<std::uint32_t>(std::min<std::size_t>(deflate::maxMatch, end_ - position));
    if (most < sizeof(std::uint32_t))
        return best;
    const std::uint8_t* const window = window_.data();
    const std::uint8_t* const here = window + position;
    const std::uint32_t word = LoadLittleEndian<std::uint32_t>(here);

    std::uint16_t& latestShort = latestShort_[Hash(word & threeBytes, shortHashBits)];
    const std::size_t shortCandidate = latestShort;
    latestShort = static_cast<std::uint16_t>(position);
    std::uint16_t& latest = latest_[Hash(word, chainHashBits)];
    std::size_t candidate = latest;
    latest = static_cast<std::uint16_t>(position);
    before_[position & windowMask] = static_cast<std::uint16_t>(candidate);

    const std::size_t oldest = position > farthest ? position - farthest : 1;
    std::uint32_t length = std::max(shortest, deflate::minMatch);
    if (shortest < deflate::minMatch && shortCandidate >= oldest && position - shortCandidate <= farthestShort &&
        ((LoadLittleEndian<std::uint32_t>(window + shortCandidate) ^ word) & threeBytes) == 0)
        best = {deflate::minMatch, static_cast<std::uint32_t>(position - shortCandidate)};
    if (length >= most)
        return best;

    const std::uint32_t nice = std::min(effort.nice, most);
    std::uint32_t tail = LoadLittleEndian<std::uint32_t>(here + length - 3);
    for (std::uint32_t tries = effort.chain; candidate >= oldest && tries > 0; --tries) {
        const std::uint8_t* const there = window + candidate;
        // The four bytes that end where a better match would are the likeliest to differ.
        if (LoadLittleEndian<std::uint32_t>(there + length - 3) == tail && LoadLittleEndian<std::uint32_t>(there) == word) {
            const std::uint32_t equal = EqualBytes(here, there, most);
            if (equal > length) {
                length = equal;
                best = {equal, static_cast<std::uint32_t>(position - candidate)};
                if (length >= nice)
                    break;
                tail = LoadLittleEndian<std::uint32_t>(here + length - 3);
            }
        }
        candidate = before_[candidate & windowMask];
    }
    return best;
}

void MatchFinder::enter(std::size_t position)
{
    if (end_ - position < sizeof(std::uint32_t))
        return;
    const std::uint32_t word = LoadLittleEndian<std::uint32_t>(window_.data() + position);
    latestShort_[Hash(word & threeBytes, shortHashBits)] = static_cast<std::uint16_t>(position);
    std::uint16_t& latest = latest_[Hash(word, chainHashBits)];
    before_[position & windowMask] = latest;
    latest = static_cast<std::uint16_t>(position);
}

} // namespace ccrypto
