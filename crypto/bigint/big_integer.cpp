#include "crypto/bigint/big_integer.h"

#include "core/log/log_writers.h"
#include "core/platform/secure_wipe.h"
#include "crypto/bigint/limbs.h"

#include <algorithm>
#include <bit>

using namespace ccrypto;

using limbs::bitsOfLimb;
using limbs::Limb;

namespace {

/// From this many limbs on, three products of half the length are faster than one.
constexpr std::size_t karatsubaLimbs = 32;

using Limbs = std::vector<std::uint64_t>;

int Compare(const Limbs& left, const Limbs& right)
{
    if (left.size() != right.size())
        return left.size() < right.size() ? -1 : 1;
    for (std::size_t i = left.size(); i-- > 0;)
        if (left[i] != right[i])
            return left[i] < right[i] ? -1 : 1;
    return 0;
}

Limbs Sum(const Limbs& left, const Limbs& right)
{
    const Limbs& longer = left.size() < right.size() ? right : left;
    const Limbs& shorter = left.size() < right.size() ? left : right;
    Limbs sum(longer.size() + 1);
    std::copy(longer.begin(), longer.end(), sum.begin());
    const Limb carry = limbs::Add(sum.data(), sum.data(), shorter.data(), shorter.size());
    limbs::AddWord(sum.data() + shorter.size(), sum.size() - shorter.size(), carry);
    return sum;
}

/// larger - smaller
Limbs Difference(const Limbs& larger, const Limbs& smaller)
{
    Limbs difference = larger;
    const Limb borrow = limbs::Subtract(difference.data(), difference.data(), smaller.data(), smaller.size());
    limbs::SubtractWord(difference.data() + smaller.size(), difference.size() - smaller.size(), borrow);
    return difference;
}

/// result += number, whose carry result has scratch for.
void AddAt(Limb* result, std::size_t resultCount, const Limb* number, std::size_t count)
{
    const Limb carry = limbs::Add(result, result, number, count);
    limbs::AddWord(result + count, resultCount - count, carry);
}

/// |left - right|. \return true when it is right - left.
bool Distance(Limb* result, const Limb* left, const Limb* right, std::size_t count)
{
    if (limbs::Subtract(result, left, right, count) == 0)
        return false;
    limbs::Subtract(result, right, left, count);
    return true;
}

/// result = left * right, of the same length, in 2 * count limbs. `scratch` has 4 * count + 128 limbs.
void MultiplyKaratsuba(Limb* result, const Limb* left, const Limb* right, std::size_t count, Limb* scratch)
{
    if (count < karatsubaLimbs) {
        limbs::Multiply(result, left, count, right, count);
        return;
    }
    // (l1 B + l0)(r1 B + r0) with l1 r0 + l0 r1 = l1 r1 + l0 r0 - (l1 - l0)(r1 - r0), B = 2^(64 half). The low halves are as long
    // as the high ones or one limb longer; the high ones are then taken as having a zero on top.
    const std::size_t half = (count + 1) / 2;
    const std::size_t high = count - half;
    Limb* leftDistance = scratch;
    Limb* rightDistance = scratch + half;
    Limb* middle = scratch + 2 * half;
    Limb* next = scratch + 4 * half;

    Limb* padded = result; // free until the products go there
    std::copy_n(left + half, high, padded);
    std::fill_n(padded + high, half - high, 0);
    const bool leftBelow = Distance(leftDistance, padded, left, half);
    std::copy_n(right + half, high, padded);
    std::fill_n(padded + high, half - high, 0);
    const bool rightBelow = Distance(rightDistance, padded, right, half);

    MultiplyKaratsuba(middle, leftDistance, rightDistance, half, next);
    MultiplyKaratsuba(result, left, right, half, next);
    MultiplyKaratsuba(result + 2 * half, left + half, right + half, high, next);

    // The distances are not needed any more: sum = l0 r0 + l1 r1 -+ middle, one limb longer than a product of halves.
    Limb* sum = next;
    std::copy_n(result, 2 * half, sum);
    sum[2 * half] = 0;
    AddAt(sum, 2 * half + 1, result + 2 * half, 2 * high);
    if (leftBelow == rightBelow)
        sum[2 * half] -= limbs::Subtract(sum, sum, middle, 2 * half);
    else
        sum[2 * half] += limbs::Add(sum, sum, middle, 2 * half);
    AddAt(result + half, 2 * count - half, sum, std::min(2 * half + 1, 2 * count - half));
}

Limbs Product(const Limbs& left, const Limbs& right)
{
    const Limbs& longer = left.size() < right.size() ? right : left;
    const Limbs& shorter = left.size() < right.size() ? left : right;
    Limbs product(longer.size() + shorter.size());
    const std::size_t piece = shorter.size();
    if (piece < karatsubaLimbs) {
        limbs::Multiply(product.data(), longer.data(), longer.size(), shorter.data(), piece);
        return product;
    }
    // The longer one in pieces of the shorter one's length.
    Limbs scratch(4 * piece + 128);
    Limbs part(2 * piece);
    std::size_t at = 0;
    for (; at + piece <= longer.size(); at += piece) {
        MultiplyKaratsuba(part.data(), longer.data() + at, shorter.data(), piece, scratch.data());
        AddAt(product.data() + at, product.size() - at, part.data(), 2 * piece);
    }
    if (const std::size_t rest = longer.size() - at; rest != 0) {
        limbs::Multiply(part.data(), shorter.data(), piece, longer.data() + at, rest);
        AddAt(product.data() + at, product.size() - at, part.data(), piece + rest);
    }
    platform::SecureWipe(scratch.data(), scratch.size() * sizeof(Limb));
    platform::SecureWipe(part.data(), part.size() * sizeof(Limb));
    return product;
}

} // namespace

CCryptoBigInteger::CCryptoBigInteger(std::int64_t value) : negative_(value < 0)
{
    if (value != 0)
        limbs_.push_back(negative_ ? 0 - static_cast<Limb>(value) : static_cast<Limb>(value));
}

CCryptoBigInteger::CCryptoBigInteger(Limbs limbs, bool negative) : limbs_(std::move(limbs)), negative_(negative)
{
    while (!limbs_.empty() && limbs_.back() == 0)
        limbs_.pop_back();
    if (limbs_.empty())
        negative_ = false;
    if (bits() > maxBits)
        *this = Refuse("it is too long");
}

CCryptoBigInteger CCryptoBigInteger::Invalid()
{
    CCryptoBigInteger none;
    none.valid_ = false;
    return none;
}

CCryptoBigInteger CCryptoBigInteger::Refuse(const char* reason)
{
    WriteErrorEx_G("A big integer has no value: %s", reason);
    return Invalid();
}

CCryptoBigInteger& CCryptoBigInteger::operator=(const CCryptoBigInteger& other)
{
    if (this != &other) {
        wipe();
        limbs_ = other.limbs_;
        negative_ = other.negative_;
        valid_ = other.valid_;
    }
    return *this;
}

CCryptoBigInteger& CCryptoBigInteger::operator=(CCryptoBigInteger&& other) noexcept
{
    if (this != &other) {
        wipe();
        limbs_ = std::move(other.limbs_);
        negative_ = other.negative_;
        valid_ = other.valid_;
    }
    return *this;
}

void CCryptoBigInteger::wipe()
{
    limbs_.resize(limbs_.capacity());
    platform::SecureWipe(limbs_.data(), limbs_.size() * sizeof(Limb));
}

CCryptoBigInteger CCryptoBigInteger::FromWord(std::uint64_t value)
{
    return CCryptoBigInteger(Limbs{value}, false);
}

CCryptoBigInteger CCryptoBigInteger::FromBytes(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty() && bytes.front() == 0)
        bytes = bytes.subspan(1);
    if (bytes.size() > maxBits / 8)
        return Refuse("it is too long");
    Limbs limbs(limbs::CountFor(8 * bytes.size()));
    limbs::FromBytes(limbs.data(), limbs.size(), bytes);
    return CCryptoBigInteger(std::move(limbs), false);
}

std::uint32_t CCryptoBigInteger::bits() const
{
    if (limbs_.empty())
        return 0;
    return static_cast<std::uint32_t>(limbs_.size() * bitsOfLimb) - static_cast<std::uint32_t>(std::countl_zero(limbs_.back()));
}

bool CCryptoBigInteger::bit(std::uint32_t index) const
{
    return index < limbs_.size() * bitsOfLimb && (limbs_[index / bitsOfLimb] >> index % bitsOfLimb & 1) != 0;
}

element CCryptoBigInteger::toBytes() const
{
    element bytes;
    bytes.resize((bits() + 7) / 8);
    limbs::ToBytes({bytes.data(), bytes.length()}, limbs_.data(), limbs_.size());
    return bytes;
}

bool CCryptoBigInteger::toBytes(std::span<std::uint8_t> bytes) const
{
    if (!valid_ || bits() > 8 * bytes.size()) {
        std::fill(bytes.begin(), bytes.end(), std::uint8_t{0});
        return false;
    }
    limbs::ToBytes(bytes, limbs_.data(), limbs_.size());
    return true;
}

CCryptoBigInteger CCryptoBigInteger::operator-() const
{
    CCryptoBigInteger result = *this;
    result.negative_ = !negative_ && !limbs_.empty();
    return result;
}

CCryptoBigInteger CCryptoBigInteger::absolute() const
{
    return negative_ ? -*this : *this;
}

CCryptoBigInteger CCryptoBigInteger::operator+(const CCryptoBigInteger& other) const
{
    if (!valid_ || !other.valid_)
        return Invalid();
    if (negative_ == other.negative_)
        return CCryptoBigInteger(Sum(limbs_, other.limbs_), negative_);
    if (Compare(limbs_, other.limbs_) >= 0)
        return CCryptoBigInteger(Difference(limbs_, other.limbs_), negative_);
    return CCryptoBigInteger(Difference(other.limbs_, limbs_), other.negative_);
}

CCryptoBigInteger CCryptoBigInteger::operator-(const CCryptoBigInteger& other) const
{
    return *this + -other;
}

CCryptoBigInteger CCryptoBigInteger::operator*(const CCryptoBigInteger& other) const
{
    if (!valid_ || !other.valid_)
        return Invalid();
    if (bits() + other.bits() > maxBits + 1)
        return Refuse("a product is too long");
    return CCryptoBigInteger(Product(limbs_, other.limbs_), negative_ != other.negative_);
}

CCryptoBigInteger CCryptoBigInteger::operator<<(std::uint32_t count) const
{
    if (!valid_ || limbs_.empty())
        return *this;
    if (count > maxBits - bits())
        return Refuse("it is too long");
    const std::size_t whole = count / bitsOfLimb;
    const std::size_t part = count % bitsOfLimb;
    Limbs result(limbs_.size() + whole + 1);
    for (std::size_t i = 0; i < limbs_.size(); ++i) {
        result[whole + i] |= limbs_[i] << part;
        if (part != 0)
            result[whole + i + 1] = limbs_[i] >> (bitsOfLimb - part);
    }
    return CCryptoBigInteger(std::move(result), negative_);
}

CCryptoBigInteger CCryptoBigInteger::operator>>(std::uint32_t count) const
{
    if (!valid_)
        return *this;
    const std::size_t whole = count / bitsOfLimb;
    const std::size_t part = count % bitsOfLimb;
    if (whole >= limbs_.size())
        return {};
    Limbs result(limbs_.begin() + static_cast<std::ptrdiff_t>(whole), limbs_.end());
    if (part != 0)
        for (std::size_t i = 0; i < result.size(); ++i)
            result[i] = result[i] >> part | (i + 1 < result.size() ? result[i + 1] << (bitsOfLimb - part) : 0);
    return CCryptoBigInteger(std::move(result), negative_);
}

std::partial_ordering CCryptoBigInteger::operator<=>(const CCryptoBigInteger& other) const
{
    if (!valid_ || !other.valid_)
        return std::partial_ordering::unordered;
    if (negative_ != other.negative_)
        return negative_ ? std::partial_ordering::less : std::partial_ordering::greater;
    const int magnitudes = Compare(limbs_, other.limbs_);
    return (negative_ ? -magnitudes : magnitudes) <=> 0;
}
