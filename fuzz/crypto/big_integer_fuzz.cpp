#include "crypto/bigint/big_integer.h"
#include "fuzz/require.h"
#include "tests/crypto/bigint/slow_integer.h"

#include <span>

using namespace ccrypto;

namespace {

bool Same(const CCryptoBigInteger& number, const slow::Number& twin)
{
    return number.isValid() && !number.isNegative() && slow::FromBytes(number.toBytes().bytes()) == twin;
}

} // namespace

/// Two bytes say how the rest is cut into three numbers: products, and quotients, remainders and powers where they are short, are
/// those of the slow twin; any quotient times its divisor is the dividend again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    constexpr std::size_t longest = 1200;
    const std::span<const std::uint8_t> digits(data + 2, std::min(size - 2, longest));
    const std::size_t firstEnd = digits.size() * data[0] / 256;
    const std::size_t secondEnd = firstEnd + (digits.size() - firstEnd) * data[1] / 256;
    const auto first = digits.first(firstEnd);
    const auto second = digits.subspan(firstEnd, secondEnd - firstEnd);
    const auto third = digits.subspan(secondEnd);
    const CCryptoBigInteger a = CCryptoBigInteger::FromBytes(first);
    const CCryptoBigInteger b = CCryptoBigInteger::FromBytes(second);
    const slow::Number slowA = slow::FromBytes(first);
    const slow::Number slowB = slow::FromBytes(second);

    Require(Same(a * b, slow::Multiply(slowA, slowB)));
    Require(Same(a + b, slow::Add(slowA, slowB)));
    Require(CCryptoBigInteger::FromDecimal(a.toDecimal().view()) == a);
    if (slowB.empty())
        return 0;
    CCryptoBigInteger q;
    CCryptoBigInteger r;
    Require(CCryptoBigInteger::Divide(a, b, q, r));
    Require(q * b + r == a && r < b);
    // The twin divides by subtracting, for which long numbers leave no patience.
    constexpr std::size_t maxBytesOfDivision = 64;
    if (first.size() > maxBytesOfDivision)
        return 0;
    const auto [quotient, rest] = slow::Divide(slowA, slowB);
    Require(Same(q, quotient) && Same(r, rest));
    constexpr std::size_t maxBytesOfPower = 24;
    if (third.size() <= 8 && first.size() <= maxBytesOfPower && second.size() <= maxBytesOfPower) {
        const slow::Number power = slow::Power(rest, slow::FromBytes(third), slowB);
        Require(Same(a.modPower(CCryptoBigInteger::FromBytes(third), b), power));
    }
    return 0;
}
