#include "asn1/text/decimal.h"

#include "core/base/ascii.h"
#include "core/memory/wiped.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdio>
#include <span>

namespace ccrypto {

namespace {

/// Two's complement of a magnitude, and the magnitude of two's complement.
void Negate(element& number)
{
    std::uint32_t carry = 1;
    for (std::uint32_t index = number.length(); index-- > 0;) {
        std::uint8_t& byte = number.data()[index];
        carry += static_cast<std::uint8_t>(~byte);
        byte = static_cast<std::uint8_t>(carry);
        carry >>= 8;
    }
}

element WithByteInFront(std::uint8_t byte, const element& number)
{
    element longer(&byte, 1, ElementType::integer);
    longer.append(number.data(), number.length());
    return longer;
}

bool IsShortest(const element& number)
{
    if (number.length() < 2)
        return number.length() == 1;
    const std::uint8_t first = number.data()[0];
    return number.negative() ? first != 0xFF || number.data()[1] < 0x80 : first != 0;
}

/// A number in limbs of a base up to 2^32, the lowest first, that is multiplied up from nothing. It may be a key, and is wiped.
template <std::uint64_t Base>
class Limbs {
public:
    /// \param most of them that there will be.
    explicit Limbs(std::size_t most) : limbs_(most) {}

    void multiplyAdd(std::uint32_t factor, std::uint32_t summand)
    {
        std::uint64_t carry = summand;
        for (std::size_t index = 0; index < used_; ++index) {
            carry += std::uint64_t{limbs_[index]} * factor;
            limbs_[index] = static_cast<std::uint32_t>(carry % Base);
            carry /= Base;
        }
        if (carry != 0)
            limbs_[used_++] = static_cast<std::uint32_t>(carry);
    }

    std::span<const std::uint32_t> used() const { return {limbs_.data(), used_}; }

private:
    WipedArray<std::uint32_t> limbs_;
    std::size_t used_ = 0;
};

CCryptoString DecimalFromMagnitude(std::span<const std::uint8_t> magnitude)
{
    constexpr std::size_t bitsPerLimb = 29; // at least
    Limbs<1000000000> limbs(magnitude.size() * 8 / bitsPerLimb + 1);
    for (const std::uint8_t byte : magnitude)
        limbs.multiplyAdd(256, byte);

    CCryptoString text;
    Wiped<std::array<char, 12>> digits;
    const std::span<const std::uint32_t> used = limbs.used();
    for (std::size_t index = used.size(); index-- > 0;) {
        const int length = std::snprintf(digits.data(), digits.size(), index + 1 == used.size() ? "%u" : "%09u", used[index]);
        text.append({digits.data(), static_cast<std::size_t>(length)});
    }
    return text.isEmpty() ? CCryptoString("0") : text;
}

constexpr std::size_t digitsPerStep = 9;
using BinaryLimbs = Limbs<std::uint64_t{1} << 32>;

void MultiplyUp(std::string_view digits, BinaryLimbs& limbs)
{
    constexpr std::uint32_t powers[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};
    while (!digits.empty()) {
        const std::size_t count = digits.size() % digitsPerStep != 0 ? digits.size() % digitsPerStep : digitsPerStep;
        std::uint32_t step = 0;
        std::from_chars(digits.data(), digits.data() + count, step);
        digits.remove_prefix(count);
        limbs.multiplyAdd(powers[count], step);
    }
}

// Long numbers are put together of blocks, two of which make one of the next size: the ratio of digits to limbs is the same for
// every size, and the limbs halve evenly down to the 15 limbs that are multiplied plainly.
constexpr std::size_t digitsPerBlock = 2304;
constexpr std::size_t limbsPerBlock = 240;
static_assert(digitsPerBlock * 3322 < limbsPerBlock * 32 * 1000, "a digit has less than 3.322 bits");
constexpr std::size_t maxPlainLimbs = 15;

/// Adds `count` limbs. \return the carry.
std::uint32_t Add(const std::uint32_t* summand, std::size_t count, std::uint32_t* sum)
{
    std::uint64_t carry = 0;
    for (std::size_t index = 0; index < count; ++index, carry >>= 32) {
        carry += std::uint64_t{sum[index]} + summand[index];
        sum[index] = static_cast<std::uint32_t>(carry);
    }
    return static_cast<std::uint32_t>(carry);
}

/// Subtracts `count` limbs. \return the borrow.
std::uint32_t Subtract(const std::uint32_t* subtrahend, std::size_t count, std::uint32_t* difference)
{
    std::uint32_t borrow = 0;
    for (std::size_t index = 0; index < count; ++index) {
        const std::uint64_t limb = std::uint64_t{difference[index]} - subtrahend[index] - borrow;
        difference[index] = static_cast<std::uint32_t>(limb);
        borrow = static_cast<std::uint32_t>(limb >> 63);
    }
    return borrow;
}

/// The distance of two numbers. \return whether the first is the smaller one.
bool Distance(const std::uint32_t* first, const std::uint32_t* second, std::size_t count, std::uint32_t* distance)
{
    std::size_t index = count;
    while (index > 0 && first[index - 1] == second[index - 1])
        --index;
    const bool isLess = index > 0 && first[index - 1] < second[index - 1];
    std::copy_n(isLess ? second : first, count, distance);
    Subtract(isLess ? first : second, count, distance);
    return isLess;
}

/// The product, of twice as many limbs (Karatsuba's three products of halves). \param scratch six times as many.
void Multiply(const std::uint32_t* left, const std::uint32_t* right, std::size_t count, std::uint32_t* product,
              std::uint32_t* scratch)
{
    if (count <= maxPlainLimbs) {
        std::fill_n(product, 2 * count, 0u);
        for (std::size_t row = 0; row < count; ++row) {
            std::uint64_t carry = 0;
            for (std::size_t index = 0; index < count; ++index, carry >>= 32) {
                carry += std::uint64_t{left[row]} * right[index] + product[row + index];
                product[row + index] = static_cast<std::uint32_t>(carry);
            }
            product[row + count] = static_cast<std::uint32_t>(carry);
        }
        return;
    }
    const std::size_t half = count / 2;
    std::uint32_t* const distances = scratch;
    std::uint32_t* const middle = scratch + count;
    std::uint32_t* const sum = middle + count;
    std::uint32_t* const rest = sum + count;
    Multiply(left, right, half, product, rest);
    Multiply(left + half, right + half, half, product + count, rest);
    const bool isLeftLess = Distance(left, left + half, half, distances);
    const bool isRightLess = Distance(right, right + half, half, distances + half);
    Multiply(distances, distances + half, half, middle, rest);

    std::copy_n(product, count, sum);
    std::uint32_t carry = Add(product + count, count, sum);
    if (isLeftLess == isRightLess)
        carry -= Subtract(middle, count, sum);
    else
        carry += Add(middle, count, sum);
    carry += Add(sum, count, product + half);
    for (std::size_t index = half + count; carry != 0; ++index) {
        product[index] += carry;
        carry = product[index] < carry ? 1 : 0;
    }
}

std::size_t LimbsOfBlocks(std::size_t digits)
{
    return std::bit_ceil((digits + digitsPerBlock - 1) / digitsPerBlock) * limbsPerBlock;
}

/// \param number of LimbsOfBlocks() limbs, zero; the number may fill fewer.
void MultiplyUpInBlocks(std::string_view digits, WipedArray<std::uint32_t>& number)
{
    const std::size_t size = number.size();
    for (std::size_t block = 0; !digits.empty(); ++block) {
        const std::size_t count = std::min(digits.size(), digitsPerBlock);
        BinaryLimbs limbs(limbsPerBlock);
        MultiplyUp(digits.substr(digits.size() - count), limbs);
        std::ranges::copy(limbs.used(), number.data() + block * limbsPerBlock);
        digits.remove_suffix(count);
    }

    WipedArray<std::uint32_t> power(size);
    BinaryLimbs first(limbsPerBlock);
    first.multiplyAdd(1, 1);
    for (std::size_t step = 0; step < digitsPerBlock / digitsPerStep; ++step)
        first.multiplyAdd(1000000000, 0);
    std::ranges::copy(first.used(), power.data());

    WipedArray<std::uint32_t> product(size);
    WipedArray<std::uint32_t> scratch(3 * size);
    for (std::size_t count = limbsPerBlock; count < size; count *= 2) {
        for (std::uint32_t* pair = number.data(); pair != number.end(); pair += 2 * count) {
            Multiply(pair + count, power.data(), count, product.data(), scratch.data());
            std::fill_n(pair + count, count, 0u);
            Add(product.data(), 2 * count, pair);
        }
        if (2 * count < size) {
            Multiply(power.data(), power.data(), count, product.data(), scratch.data());
            std::copy_n(product.data(), 2 * count, power.data());
        }
    }
}

} // namespace

element IntegerFromDecimal(std::string_view digits)
{
    element number(ElementType::integer);
    const auto append = [&number](std::span<const std::uint32_t> limbs) {
        for (std::size_t index = limbs.size(); index-- > 0;) {
            for (int shift = 24; shift >= 0; shift -= 8) {
                const auto byte = static_cast<std::uint8_t>(limbs[index] >> shift);
                if (byte != 0 || !number.isEmpty())
                    number.append(byte);
            }
        }
    };
    if (digits.size() <= digitsPerBlock) {
        BinaryLimbs limbs(digits.size() / digitsPerStep + 1);
        MultiplyUp(digits, limbs);
        append(limbs.used());
    } else {
        WipedArray<std::uint32_t> limbs(LimbsOfBlocks(digits.size()));
        MultiplyUpInBlocks(digits, limbs);
        append({limbs.data(), limbs.size()});
    }
    if (number.isEmpty())
        number.append(std::uint8_t{0});
    return number;
}

bool SignedFromDecimal(std::string_view text, element& number)
{
    const bool negative = text.starts_with('-');
    const std::string_view digits = text.substr(negative ? 1 : 0);
    const bool needless = digits.starts_with('0') && (negative || digits.size() > 1);
    const bool isNumber = std::ranges::all_of(digits, IsDigit);
    if (digits.empty() || digits.size() > maxSignedDecimal || needless || !isNumber)
        return false;
    number = IntegerFromDecimal(digits);
    if (!negative)
        return true;
    Negate(number);
    // The magnitude did not leave its top bit free, unless it is a power of two.
    if (number.data()[0] < 0x80)
        number = WithByteInFront(0xFF, number);
    number.setNegative(true);
    return true;
}

CCryptoString DecimalFromSigned(const element& number)
{
    if (number.length() > maxSignedInteger || !IsShortest(number) || (number.negative() && number.data()[0] < 0x80))
        return {};
    element magnitude = number;
    if (number.negative())
        Negate(magnitude);
    const CCryptoString digits = DecimalFromMagnitude(magnitude.bytes());
    if (digits.length() > maxSignedDecimal)
        return {};
    return number.negative() ? CCryptoString("-") + digits : digits;
}

} // namespace ccrypto
