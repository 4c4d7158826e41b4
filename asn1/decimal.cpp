#include "asn1/decimal.h"

#include <charconv>
#include <vector>

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
