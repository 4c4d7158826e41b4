#include "crypto/bigint/primality.h"

#include <gtest/gtest.h>

#include <vector>

using namespace ccrypto;

namespace {

CCryptoBigInteger PowerOfTwo(std::uint32_t exponent)
{
    return CCryptoBigInteger(1) << exponent;
}

} // namespace

TEST(Primality, AgreesWithASieveOnSmallNumbers)
{
    constexpr std::uint32_t limit = 12000; // past where division ends and the probable test begins
    std::vector<bool> composite(limit);
    for (std::uint32_t i = 2; i < limit; ++i)
        for (std::uint32_t multiple = 2 * i; multiple < limit; multiple += i)
            composite[multiple] = true;
    for (std::uint32_t i = 0; i < limit; ++i)
        ASSERT_EQ(IsProbablePrime(i), i > 1 && !composite[i]) << i;
    EXPECT_FALSE(IsProbablePrime(-7));
    EXPECT_FALSE(IsProbablePrime(CCryptoBigInteger::Invalid()));
}

TEST(Primality, KnowsPrimes)
{
    const CCryptoBigInteger primes[] = {
        PowerOfTwo(61) - 1,
        PowerOfTwo(64) - 59,
        PowerOfTwo(89) - 1,
        PowerOfTwo(127) - 1,
        PowerOfTwo(255) - 19,
        PowerOfTwo(256) - PowerOfTwo(224) + PowerOfTwo(192) + PowerOfTwo(96) - 1,
        PowerOfTwo(448) - PowerOfTwo(224) - 1,
        PowerOfTwo(521) - 1,
        PowerOfTwo(607) - 1,
    };
    for (const CCryptoBigInteger& prime : primes)
        EXPECT_TRUE(IsProbablePrime(prime)) << prime.toHex().c_str();
}

TEST(Primality, IsNotDeceivedByNumbersThatResemblePrimes)
{
    const CCryptoBigInteger composites[] = {
        // Carmichael numbers.
        561,
        41041,
        825265,
        321197185,
        5394826801,
        232250619601,
        9746347772161,
        // Strong pseudoprimes to the first 4, 7, 9, 12 and 13 prime bases.
        3215031751,
        341550071728321,
        3825123056546413051,
        CCryptoBigInteger::FromDecimal("318665857834031151167461"),
        CCryptoBigInteger::FromDecimal("3317044064679887385961981"),
        // Products of two primes above the sieve, and a square.
        (PowerOfTwo(61) - 1) * (PowerOfTwo(89) - 1),
        (PowerOfTwo(127) - 1) * (PowerOfTwo(127) - 1),
        (PowerOfTwo(521) - 1) * (PowerOfTwo(607) - 1),
        // A Mersenne number and a Fermat number.
        PowerOfTwo(67) - 1,
        PowerOfTwo(64) + 1,
        PowerOfTwo(128) + 1,
    };
    for (const CCryptoBigInteger& composite : composites)
        EXPECT_FALSE(IsProbablePrime(composite)) << composite.toDecimal().c_str();
}

TEST(Primality, SieveFindsExactlyTheSmallDivisors)
{
    // 8191 is the last prime of the sieve, 8209 the next one.
    const struct {
        std::int64_t divisor;
        bool found;
    } cases[] = {{3, true}, {5, true}, {47, true}, {53, true}, {8191, true}, {8209, false}, {1, false}};
    for (const auto& c : cases) {
        const CCryptoBigInteger number = (PowerOfTwo(521) - 1) * c.divisor;
        limbs::Limb value[9];
        limbs::FromBytes(value, 9, number.toBytes().bytes());
        EXPECT_EQ(constant_time::Declassify(primality::HasSmallDivisor(value, 9)), c.found) << c.divisor;
    }
}
