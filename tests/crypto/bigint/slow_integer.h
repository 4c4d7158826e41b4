#pragma once

#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

/// Natural numbers as one learns them at school, digit by digit in base 256, lowest first and without leading zeros: slow, and
/// nothing in common with what it is compared with.
namespace ccrypto::slow {

using Number = std::vector<std::uint8_t>;

Number Trim(Number number);

/// From and to big-endian bytes.
template <typename Range>
Number FromBytes(const Range& bytes)
{
    return Trim(Number(std::make_reverse_iterator(bytes.end()), std::make_reverse_iterator(bytes.begin())));
}
Number ToBytes(const Number& number);

bool Less(const Number& left, const Number& right);
Number Add(const Number& left, const Number& right);
/// left - right, which is not larger.
Number Subtract(Number left, const Number& right);
Number Multiply(const Number& left, const Number& right);
/// Quotient and remainder; the divisor is not 0.
std::pair<Number, Number> Divide(const Number& dividend, const Number& divisor);
/// base to the power exponent, modulo a number that is not 0.
Number Power(const Number& base, const Number& exponent, const Number& modulus);

} // namespace ccrypto::slow
