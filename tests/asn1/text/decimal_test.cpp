#include "asn1/parser/parser.h"
#include "asn1/text/decimal.h"
#include "core/text/hex.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using namespace ccrypto;

namespace {

/// The number that decimal digits and big-endian bytes stand for, modulo a prime.
template <typename Digits>
std::uint64_t Remainder(const Digits& digits, std::uint64_t base, std::uint64_t zero)
{
    constexpr std::uint64_t prime = 4294967291;
    std::uint64_t remainder = 0;
    for (const auto digit : digits)
        remainder = (remainder * base + static_cast<std::uint8_t>(digit) - zero) % prime;
    return remainder;
}

TEST(Decimal, ReadsNumbersOfAnyLength)
{
    // Sizes around a block of digits and its multiples.
    for (const std::size_t length : {2303u, 2304u, 2305u, 4608u, 4609u, 9865u, 9216u, 9217u, 50000u}) {
        SCOPED_TRACE(length);
        std::uint32_t state = static_cast<std::uint32_t>(length);
        std::string digits(length, '9');
        for (const bool isRandom : {false, true}) {
            for (char& digit : digits) {
                state = state * 1664525 + 1013904223;
                digit = isRandom ? static_cast<char>('0' + state / 65536 % 10) : digit;
            }
            digits[0] = '9';
            const element number = IntegerFromDecimal(digits);
            EXPECT_EQ(Remainder(number.bytes(), 256, 0), Remainder(digits, 10, '0'));
            // log2(9) to log2(10) bits more for the first digit.
            EXPECT_NEAR(number.length(), static_cast<double>(length) * 3.321928 / 8, 1);
            EXPECT_NE(number[0], 0);
        }
    }
    std::string power = "1" + std::string(30000, '0');
    const element number = IntegerFromDecimal(power);
    const element one = IntegerFromDecimal(std::string(9000, '0') + "1");
    EXPECT_EQ(HexText(one.bytes()), "01");
    // Divisible by two as often as by ten.
    for (std::uint32_t octet = 1; octet <= 3750; ++octet)
        ASSERT_EQ(number[number.length() - octet], 0);
    CCryptoParser parser;
    ASSERT_TRUE(parser.Load_ASCII_Memory("INTEGER=" + power));
    EXPECT_EQ(parser.root()->value()->token(), number);
}

TEST(Decimal, BoundsSignedNumbers)
{
    element number;
    const std::string longest(maxSignedDecimal, '9');
    for (const std::string& digits : {longest, "-" + longest}) {
        ASSERT_TRUE(SignedFromDecimal(digits, number));
        EXPECT_EQ(DecimalFromSigned(number).view(), digits);
        EXPECT_FALSE(SignedFromDecimal(digits + "9", number));
    }
    element tooLong;
    tooLong.resize(maxSignedInteger);
    tooLong.data()[0] = 0x7F;
    EXPECT_TRUE(DecimalFromSigned(tooLong).isEmpty());
    element padded("\xFF\xFB", 2, ElementType::integer);
    padded.setNegative(true);
    EXPECT_TRUE(DecimalFromSigned(padded).isEmpty());
}

} // namespace
