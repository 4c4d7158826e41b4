#include "asn1/der/decimal.h"

#include "core/base/ascii.h"
#include "core/memory/wiped.h"
#include "core/memory/wiped_array.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <span>

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

} // namespace

element IntegerFromDecimal(std::string_view digits)
{
    constexpr std::size_t digitsPerStep = 9;
    constexpr std::uint32_t powers[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};

    Limbs<std::uint64_t{1} << 32> limbs(digits.size() / digitsPerStep + 1);
    while (!digits.empty()) {
        const std::size_t count = digits.size() % digitsPerStep != 0 ? digits.size() % digitsPerStep : digitsPerStep;
        std::uint32_t step = 0;
        std::from_chars(digits.data(), digits.data() + count, step);
        digits.remove_prefix(count);
        limbs.multiplyAdd(powers[count], step);
    }

    element number(ElementType::integer);
    const std::span<const std::uint32_t> used = limbs.used();
    for (std::size_t index = used.size(); index-- > 0;) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            const auto byte = static_cast<std::uint8_t>(used[index] >> shift);
            if (byte != 0 || !number.isEmpty())
                number.append(byte);
        }
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
    if (digits.empty() || digits.size() > longestSignedDecimal || needless || !isNumber)
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
    if (number.length() > longestSignedInteger || !IsShortest(number) || (number.negative() && number.data()[0] < 0x80))
        return {};
    element magnitude = number;
    if (number.negative())
        Negate(magnitude);
    const CCryptoString digits = DecimalFromMagnitude(magnitude.bytes());
    if (digits.length() > longestSignedDecimal)
        return {};
    return number.negative() ? CCryptoString("-") + digits : digits;
}
