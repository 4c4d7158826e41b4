#include "asn1/decimal.h"

#include "core/platform/secure_wipe.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <vector>

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

CCryptoString DecimalFromMagnitude(std::span<const std::uint8_t> magnitude)
{
    constexpr std::uint32_t limbBase = 1000000000;
    std::vector<std::uint32_t> limbs{0};
    for (const std::uint8_t byte : magnitude) {
        std::uint64_t carry = byte;
        for (std::uint32_t& limb : limbs) {
            carry += static_cast<std::uint64_t>(limb) << 8;
            limb = static_cast<std::uint32_t>(carry % limbBase);
            carry /= limbBase;
        }
        if (carry != 0)
            limbs.push_back(static_cast<std::uint32_t>(carry));
    }
    CCryptoString text;
    char digits[12];
    for (auto limb = limbs.rbegin(); limb != limbs.rend(); ++limb) {
        const int length = std::snprintf(digits, sizeof digits, limb == limbs.rbegin() ? "%u" : "%09u", *limb);
        text.append({digits, static_cast<std::size_t>(length)});
    }
    // The value may be a key.
    platform::SecureWipe(digits, sizeof digits);
    platform::SecureWipe(limbs.data(), limbs.size() * sizeof limbs[0]);
    return text;
}

} // namespace

element IntegerFromDecimal(std::string_view digits)
{
    constexpr std::size_t digitsPerStep = 9;
    constexpr std::uint32_t powers[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};

    // 32-bit limbs, the lowest first.
    std::vector<std::uint32_t> limbs;
    while (!digits.empty()) {
        const std::size_t count = digits.size() % digitsPerStep != 0 ? digits.size() % digitsPerStep : digitsPerStep;
        std::uint32_t step = 0;
        std::from_chars(digits.data(), digits.data() + count, step);
        digits.remove_prefix(count);
        std::uint64_t carry = step;
        for (std::uint32_t& limb : limbs) {
            carry += std::uint64_t{limb} * powers[count];
            limb = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
        if (carry != 0)
            limbs.push_back(static_cast<std::uint32_t>(carry));
    }

    element number(ElementType::integer);
    for (auto limb = limbs.rbegin(); limb != limbs.rend(); ++limb) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            const auto byte = static_cast<std::uint8_t>(*limb >> shift);
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
    const bool isNumber = std::ranges::all_of(digits, [](char digit) { return digit >= '0' && digit <= '9'; });
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
