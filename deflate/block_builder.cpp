#include "deflate/block_builder.h"

#include <algorithm>
#include <array>
#include <bit>

namespace ccrypto::deflate {
namespace {

/// What codes of its own take at the head of a block, about, in bits.
constexpr std::uint64_t codesCost = 600;

constexpr std::uint32_t fractionBits = 8;
constexpr std::uint32_t tableBits = 7;

/// log2(1 + index / 128), with 8 fraction bits: each squaring of the number gives one.
constexpr auto MakeFractions()
{
    std::array<std::uint16_t, 1U << tableBits> fractions{};
    for (std::uint64_t index = 0; index < fractions.size(); ++index) {
        std::uint64_t number = ((std::uint64_t{1} << tableBits) + index) << (31 - tableBits);
        std::uint32_t fraction = 0;
        for (std::uint32_t bit = 0; bit < fractionBits; ++bit) {
            number = (number * number) >> 31;
            const bool two = number >= std::uint64_t{1} << 32;
            fraction = fraction << 1 | (two ? 1 : 0);
            number >>= two ? 1 : 0;
        }
        fractions[index] = static_cast<std::uint16_t>(fraction);
    }
    return fractions;
}
constexpr auto fractions = MakeFractions();

/// n * log2(n), with 8 fraction bits.
std::uint64_t TimesOwnLogarithm(std::uint32_t number)
{
    if (number < 2)
        return 0;
    const auto whole = static_cast<std::uint32_t>(std::bit_width(number)) - 1;
    const std::uint32_t leading = whole <= tableBits ? number << (tableBits - whole) : number >> (whole - tableBits);
    const std::uint32_t logarithm = (whole << fractionBits) + fractions[leading & ((1U << tableBits) - 1)];
    return std::uint64_t{number} * logarithm;
}

/// A lower bound on the bits that code symbols with these counts, with 8 fraction bits.
template <typename CountOf>
std::uint64_t Entropy(std::size_t codes, CountOf countOf)
{
    std::uint32_t total = 0;
    std::uint64_t sum = 0;
    for (std::size_t code = 0; code < codes; ++code) {
        const std::uint32_t count = countOf(code);
        total += count;
        sum += TimesOwnLogarithm(count);
    }
    const std::uint64_t all = TimesOwnLogarithm(total);
    return all > sum ? all - sum : 0;
}

template <typename Counts>
std::int64_t Saved(const Counts& first, const Counts& second)
{
    const std::uint64_t apart = Entropy(first.size(), [&](std::size_t code) { return first[code]; }) +
                                Entropy(second.size(), [&](std::size_t code) { return second[code]; });
    const std::uint64_t together = Entropy(first.size(), [&](std::size_t code) { return first[code] + second[code]; });
    return static_cast<std::int64_t>(together) - static_cast<std::int64_t>(apart);
}

/// Whether codes of their own for two runs of symbols pay.
bool BetterApart(const Frequencies& first, const Frequencies& second)
{
    const std::int64_t saved = Saved(first.literals, second.literals) + Saved(first.distances, second.distances);
    return saved > static_cast<std::int64_t>(codesCost << fractionBits);
}

} // namespace

void BlockBuilder::check()
{
    if (checked_ != 0 && BetterApart(frequencies_, recent_))
        write(checked_, false);
    frequencies_.add(recent_);
    recent_ = Frequencies();
    length_ += recentLength_;
    recentLength_ = 0;
    checked_ = count_;
    if (count_ == maxSymbols)
        write(count_, false);
    nextCheck_ = count_ + checkEvery;
}

void BlockBuilder::write(std::size_t symbols, bool last)
{
    const std::uint8_t* const bytes = start_ >= 0 ? window_ + start_ : nullptr;
    WriteBlock(
        {.symbols = {symbols_.data(), symbols}, .frequencies = frequencies_, .bytes = bytes, .length = length_, .last = last},
        output_);
    start_ += static_cast<std::ptrdiff_t>(length_);
    std::copy(symbols_.data() + symbols, symbols_.data() + count_, symbols_.data());
    count_ -= symbols;
    checked_ = 0;
    frequencies_ = Frequencies();
    length_ = 0;
}

void BlockBuilder::slide(std::size_t count)
{
    constexpr std::size_t storedLooksBetter = 3; // bytes a symbol
    const bool mayBeStored = count_ * storedLooksBetter > length_ + recentLength_;
    if (start_ < static_cast<std::ptrdiff_t>(count) && mayBeStored)
        finish(false);
    start_ -= static_cast<std::ptrdiff_t>(count);
}

void BlockBuilder::finish(bool last)
{
    if (checked_ != count_)
        check();
    if (count_ != 0 || last)
        write(count_, last);
    nextCheck_ = checkEvery;
}

} // namespace ccrypto::deflate
