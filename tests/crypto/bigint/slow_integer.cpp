#include "tests/crypto/bigint/slow_integer.h"

using namespace ccrypto;

using slow::Number;

namespace ccrypto {

Number slow::Trim(Number number)
{
    while (!number.empty() && number.back() == 0)
        number.pop_back();
    return number;
}

Number slow::ToBytes(const Number& number)
{
    return Number(number.rbegin(), number.rend());
}

bool slow::Less(const Number& left, const Number& right)
{
    if (left.size() != right.size())
        return left.size() < right.size();
    for (std::size_t i = left.size(); i-- > 0;)
        if (left[i] != right[i])
            return left[i] < right[i];
    return false;
}

Number slow::Add(const Number& left, const Number& right)
{
    Number sum;
    unsigned carry = 0;
    for (std::size_t i = 0; i < left.size() || i < right.size() || carry != 0; ++i) {
        carry += (i < left.size() ? left[i] : 0u) + (i < right.size() ? right[i] : 0u);
        sum.push_back(static_cast<std::uint8_t>(carry & 255));
        carry >>= 8;
    }
    return Trim(std::move(sum));
}

Number slow::Subtract(Number left, const Number& right)
{
    int borrow = 0;
    for (std::size_t i = 0; i < left.size(); ++i) {
        const int digit = left[i] - borrow - (i < right.size() ? right[i] : 0);
        borrow = digit < 0 ? 1 : 0;
        left[i] = static_cast<std::uint8_t>(digit & 255);
    }
    return Trim(std::move(left));
}

Number slow::Multiply(const Number& left, const Number& right)
{
    Number product(left.size() + right.size());
    for (std::size_t i = 0; i < left.size(); ++i) {
        unsigned carry = 0;
        for (std::size_t j = 0; j < right.size(); ++j) {
            carry += product[i + j] + unsigned{left[i]} * right[j];
            product[i + j] = static_cast<std::uint8_t>(carry & 255);
            carry >>= 8;
        }
        product[i + right.size()] = static_cast<std::uint8_t>(carry);
    }
    return Trim(std::move(product));
}

std::pair<Number, Number> slow::Divide(const Number& dividend, const Number& divisor)
{
    Number quotient(dividend.size());
    Number rest;
    for (std::size_t i = dividend.size(); i-- > 0;) {
        rest.insert(rest.begin(), dividend[i]);
        rest = Trim(std::move(rest));
        while (!Less(rest, divisor)) {
            rest = Subtract(std::move(rest), divisor);
            ++quotient[i];
        }
    }
    return {Trim(std::move(quotient)), std::move(rest)};
}

Number slow::Power(const Number& base, const Number& exponent, const Number& modulus)
{
    Number result = Divide({1}, modulus).second;
    for (std::size_t i = 8 * exponent.size(); i-- > 0;) {
        result = Divide(Multiply(result, result), modulus).second;
        if ((exponent[i / 8] >> i % 8 & 1) != 0)
            result = Divide(Multiply(result, base), modulus).second;
    }
    return result;
}

} // namespace ccrypto
