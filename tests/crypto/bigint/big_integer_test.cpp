#include "crypto/bigint/big_integer.h"
#include "tests/crypto/base/vector_file.h"
#include "tests/crypto/bigint/slow_integer.h"

#include <gtest/gtest.h>

#include <random>

using namespace ccrypto;

namespace {

/// Numbers with many digits of all zeros and all ones, at which carries go wrong.
class ByteSource {
public:
    Bytes bytes(std::size_t longest)
    {
        Bytes bytes(engine_() % (longest + 1));
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(run_-- > 0 ? fill_ : next());
        return bytes;
    }

private:
    unsigned next()
    {
        run_ = static_cast<int>(engine_() % 12);
        const auto kind = engine_() % 3;
        fill_ = static_cast<unsigned>(kind == 0 ? 0 : kind == 1 ? 255 : engine_() & 255);
        return static_cast<unsigned>(engine_() & 255);
    }

    std::mt19937 engine_{20240229};
    int run_ = 0;
    unsigned fill_ = 0;
};

Bytes BytesOfNumber(const CCryptoBigInteger& number)
{
    const element bytes = number.toBytes();
    return {bytes.data(), bytes.data() + bytes.length()};
}

void ExpectSame(const CCryptoBigInteger& number, const slow::Number& twin)
{
    ASSERT_TRUE(number.isValid());
    ASSERT_FALSE(number.isNegative());
    ASSERT_EQ(Hex(BytesOfNumber(number)), Hex(slow::ToBytes(twin)));
}

CCryptoBigInteger Hexadecimal(std::string_view digits)
{
    return CCryptoBigInteger::FromHex(digits);
}

} // namespace

TEST(BigInteger, ComputesAsTheSlowTwinDoes)
{
    ByteSource source;
    // The last ones are long enough for products of products of halves.
    for (const std::size_t longest : {8, 40, 120, 300, 1100}) {
        for (int i = 0; i < (longest > 300 ? 6 : 60); ++i) {
            const Bytes left = source.bytes(longest);
            const Bytes right = source.bytes(i % 2 == 0 ? longest : longest / 2);
            SCOPED_TRACE(Hex(left) + " and " + Hex(right));
            const slow::Number a = slow::FromBytes(left);
            const slow::Number b = slow::FromBytes(right);
            const CCryptoBigInteger x = CCryptoBigInteger::FromBytes(left);
            const CCryptoBigInteger y = CCryptoBigInteger::FromBytes(right);
            ExpectSame(x + y, slow::Add(a, b));
            ExpectSame(x * y, slow::Multiply(a, b));
            ExpectSame(slow::Less(a, b) ? y - x : x - y, slow::Less(a, b) ? slow::Subtract(b, a) : slow::Subtract(a, b));
            EXPECT_EQ(x < y, slow::Less(a, b));
            if (b.empty())
                continue;
            const auto [quotient, rest] = slow::Divide(a, b);
            ExpectSame(x / y, quotient);
            ExpectSame(x % y, rest);
        }
    }
}

TEST(BigInteger, KeepsTheLawsOfArithmetic)
{
    ByteSource source;
    for (int i = 0; i < 100; ++i) {
        const auto draw = [&](std::size_t longest) {
            const CCryptoBigInteger number = CCryptoBigInteger::FromBytes(source.bytes(longest));
            return source.bytes(8).size() % 2 == 0 ? number : -number;
        };
        const CCryptoBigInteger a = draw(700);
        const CCryptoBigInteger b = draw(400);
        const CCryptoBigInteger c = draw(900);
        SCOPED_TRACE(std::string(a.toHex().c_str()) + ", " + b.toHex().c_str() + ", " + c.toHex().c_str());
        EXPECT_EQ((a + b) * c, a * c + b * c);
        EXPECT_EQ(a - b, -(b - a));
        EXPECT_EQ((a + b) * (a - b), a * a - b * b);
        EXPECT_EQ((a << 131) >> 131, a);
        EXPECT_EQ(a << 77, a * (CCryptoBigInteger(1) << 77));
        EXPECT_EQ(CCryptoBigInteger::FromHex(a.toHex().view()), a);
        EXPECT_EQ(CCryptoBigInteger::FromDecimal(a.toDecimal().view()), a);
        if (b.isZero())
            continue;
        EXPECT_EQ(a / b * b + a % b, a);
        EXPECT_LT((a % b).absolute(), b.absolute());
        EXPECT_EQ((a * b) / b, a);
        const CCryptoBigInteger divisor = CCryptoBigInteger::Gcd(a, b);
        EXPECT_TRUE((a % divisor).isZero() && (b % divisor).isZero());
        EXPECT_EQ(CCryptoBigInteger::Gcd(a * c, b * c), divisor * c.absolute());
        const CCryptoBigInteger modulus = b.absolute() + 2;
        if (CCryptoBigInteger::Gcd(a, modulus) == CCryptoBigInteger(1)) {
            EXPECT_EQ((a.modInverse(modulus) * a).modulo(modulus), CCryptoBigInteger(1));
        }
    }
}

TEST(BigInteger, DividesWhereASuggestedDigitIsTooLarge)
{
    // Each divides to a digit that the highest limbs suggest one or two too large (Knuth, 4.3.1, exercises 21 and 22).
    const struct {
        const char* dividend;
        const char* divisor;
    } cases[] = {
        {"7fffffffffffffff80000000000000000000000000000000", "80000000000000000000000000000001"},
        {"800000000000000000000000000000000000000000000003", "200000000000000000000000000000000000000000000001"},
        {"8000000000000000fffffffffffffffe00000000000000000000000000000000", "8000000000000000ffffffffffffffff"},
        {"ffffffffffffffff0000000000000000ffffffffffffffff0000000000000000", "ffffffffffffffff0000000000000001"},
        {"80000000000000000000000000000000000000000000000000000000000000000000000000000003",
         "800000000000000000000000000000000000000000000000ffffffffffffffff"},
        {"ffffffffffffffffffffffffffffffffffffffffffffffff", "ffffffffffffffffffffffffffffffff"},
        {"fffffffffffffffefffffffffffffffffffffffffffffffe0000000000000000", "ffffffffffffffffffffffffffffffff"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.dividend);
        const CCryptoBigInteger dividend = Hexadecimal(c.dividend);
        const CCryptoBigInteger divisor = Hexadecimal(c.divisor);
        const auto [quotient, rest] =
            slow::Divide(slow::FromBytes(BytesOfNumber(dividend)), slow::FromBytes(BytesOfNumber(divisor)));
        ExpectSame(dividend / divisor, quotient);
        ExpectSame(dividend % divisor, rest);
    }
}

TEST(BigInteger, RaisesToPowersModuloOddAndEvenNumbers)
{
    ByteSource source;
    for (int i = 0; i < 15; ++i) {
        const Bytes base = source.bytes(30);
        const Bytes exponent = source.bytes(10);
        Bytes modulus = source.bytes(24);
        modulus.push_back(static_cast<std::uint8_t>(i % 3 == 0 ? 2 : 2 * i + 1));
        SCOPED_TRACE(Hex(base) + "^" + Hex(exponent) + " mod " + Hex(modulus));
        ExpectSame(CCryptoBigInteger::FromBytes(base).modPower(CCryptoBigInteger::FromBytes(exponent),
                                                               CCryptoBigInteger::FromBytes(modulus)),
                   slow::Power(slow::FromBytes(base), slow::FromBytes(exponent), slow::FromBytes(modulus)));
    }
    EXPECT_EQ(CCryptoBigInteger(-3).modPower(3, 10), CCryptoBigInteger(3));
    EXPECT_EQ(CCryptoBigInteger(5).modPower(0, 1), CCryptoBigInteger(0));
    EXPECT_EQ(CCryptoBigInteger(0).modPower(0, 7), CCryptoBigInteger(1));
}

TEST(BigInteger, ReadsAndWritesText)
{
    const struct {
        const char* hex;
        const char* decimal;
    } cases[] = {
        {"0", "0"},
        {"-1", "-1"},
        {"ffffffffffffffff", "18446744073709551615"},
        {"10000000000000000", "18446744073709551616"},
        {"-de0b6b3a7640000", "-1000000000000000000"},
        {"204fce5e3e25026110000000", "10000000000000000000000000000"},
    };
    for (const auto& c : cases) {
        EXPECT_STREQ(CCryptoBigInteger::FromDecimal(c.decimal).toHex().c_str(), c.hex);
        EXPECT_STREQ(CCryptoBigInteger::FromHex(c.hex).toDecimal().c_str(), c.decimal);
    }
    EXPECT_EQ(Hexadecimal("-000F"), CCryptoBigInteger(-15));
    EXPECT_EQ(CCryptoBigInteger(INT64_MIN).toDecimal(), CCryptoString("-9223372036854775808"));
    EXPECT_FALSE(CCryptoBigInteger::FromHex("-0").isNegative());
    for (const char* text : {"", "-", "--1", "+1", " 1", "1 ", "0x1", "g", "1-"}) {
        EXPECT_FALSE(CCryptoBigInteger::FromHex(text).isValid()) << text;
        EXPECT_FALSE(CCryptoBigInteger::FromDecimal(text).isValid()) << text;
    }
    EXPECT_FALSE(CCryptoBigInteger::FromDecimal("a").isValid());
}

TEST(BigInteger, HasNoValueWhereThereIsNone)
{
    const CCryptoBigInteger one = 1;
    const CCryptoBigInteger longest = (one << (CCryptoBigInteger::maxBits - 1)) - 1 + (one << (CCryptoBigInteger::maxBits - 1));
    EXPECT_TRUE(longest.isValid());
    EXPECT_EQ(longest.bits(), CCryptoBigInteger::maxBits);
    const CCryptoBigInteger none[] = {
        longest + 1,
        -longest - 1,
        longest * 2,
        longest * longest,
        one << CCryptoBigInteger::maxBits,
        one << 0xFFFFFFFF,
        one / 0,
        one % 0,
        one.modulo(0),
        one.modulo(-5),
        CCryptoBigInteger(6).modInverse(9),
        CCryptoBigInteger(0).modInverse(9),
        one.modInverse(1),
        one.modPower(1, 0),
        one.modPower(-1, 7),
        one.modPower(1, (one << 16384) + 1),
        CCryptoBigInteger::FromHex(std::string(CCryptoBigInteger::maxBits / 4 + 1, '1')),
        CCryptoBigInteger::FromDecimal(std::string(CCryptoBigInteger::maxBits / 3 + 1, '1')),
        CCryptoBigInteger::FromBytes(Bytes(CCryptoBigInteger::maxBits / 8 + 1, 1)),
    };
    for (const CCryptoBigInteger& number : none) {
        SCOPED_TRACE(&number - none);
        EXPECT_FALSE(number.isValid());
        EXPECT_FALSE((number + 1).isValid() || (one * number).isValid() || (-number).isValid() || (number >> 1).isValid());
        EXPECT_FALSE(number == number || number < one || number > one);
        EXPECT_STREQ(number.toDecimal().c_str(), "invalid");
        EXPECT_TRUE(number.toBytes().isEmpty());
    }
    std::uint8_t target[2] = {7, 7};
    EXPECT_FALSE(CCryptoBigInteger(0x10000).toBytes(target));
    EXPECT_EQ(target[0] | target[1], 0);
    EXPECT_TRUE(CCryptoBigInteger(0x1234).toBytes(target));
    EXPECT_EQ(target[0], 0x12);
}
