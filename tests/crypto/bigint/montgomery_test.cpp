#include "crypto/bigint/big_integer.h"
#include "crypto/bigint/montgomery.h"
#include "crypto/bigint/montgomery_calls.h"
#include "crypto/bigint/montgomery_digits.h"
#include "tests/crypto/base/vector_file.h"
#include "tests/crypto/bigint/slow_integer.h"

#include <gtest/gtest.h>

#include <deque>
#include <random>

using namespace ccrypto;

using limbs::Limb;

namespace {

using LimbVector = std::vector<Limb>;

class LimbSource {
public:
    LimbVector limbs(std::size_t count)
    {
        LimbVector result(count);
        for (Limb& limb : result) {
            const unsigned kind = static_cast<unsigned>(engine_() % 5);
            limb = kind == 0 ? 0 : kind == 1 ? ~Limb{0} : engine_();
        }
        return result;
    }
    LimbVector modulus(std::size_t count)
    {
        LimbVector result = limbs(count);
        result.front() |= 1;
        result.back() |= 2;
        return result;
    }
    Limb word() { return engine_(); }

private:
    std::mt19937_64 engine_{7};
};

slow::Number Slow(const LimbVector& number)
{
    Bytes bytes(8 * number.size());
    limbs::ToBytes(bytes, number.data(), number.size());
    return slow::FromBytes(bytes);
}

LimbVector FromSlow(const slow::Number& number, std::size_t count)
{
    LimbVector result(count);
    limbs::FromBytes(result.data(), count, slow::ToBytes(number));
    return result;
}

LimbVector Modulo(const LimbVector& number, const LimbVector& modulus, std::size_t count)
{
    return FromSlow(slow::Divide(Slow(number), Slow(modulus)).second, count);
}

} // namespace

class MontgomeryVariant : public ::testing::TestWithParam<std::size_t> {};

TEST_P(MontgomeryVariant, GivesWhatThePortableOneGives)
{
    const Variant<MontgomeryCalls>& variant = MontgomeryVariants()[GetParam()];
    if ((variant.needs & ~cpu::PresentFeatures()) != 0)
        GTEST_SKIP() << "this processor lacks " << variant.name;
    const MontgomeryCalls& calls = variant.calls;
    const MontgomeryCalls& portable = MontgomeryVariants()[0].calls;
    LimbSource source;
    for (std::size_t count = 8; count <= 128; count += count < 40 ? 8 : 24) {
        for (int i = 0; i < 30; ++i) {
            SCOPED_TRACE(testing::Message() << count << " limbs, " << i);
            const LimbVector full(count, ~Limb{0});
            const LimbVector left = i == 0 ? full : source.limbs(count);
            const LimbVector right = i == 0 ? full : source.limbs(count);
            const LimbVector modulus = i < 2 ? full : source.modulus(count);
            LimbVector expected(2 * count, 5);
            LimbVector given(2 * count, 9);
            portable.multiply(expected.data(), left.data(), right.data(), count);
            calls.multiply(given.data(), left.data(), right.data(), count);
            ASSERT_EQ(given, expected);
            portable.square(expected.data(), left.data(), count);
            calls.square(given.data(), left.data(), count);
            ASSERT_EQ(given, expected);

            // Products up to the largest one that may be reduced, below m R.
            const LimbVector factor = Modulo(right, modulus, count);
            portable.multiply(expected.data(), left.data(), i < 2 ? modulus.data() : factor.data(), count);
            if (i < 2)
                limbs::SubtractWord(expected.data(), 2 * count, 1);
            given = expected;
            const Limb negativeInverse = 0 - limbs::InverseModuloLimb(modulus[0]);
            LimbVector expectedRest(count);
            LimbVector givenRest(count);
            portable.reduce(expectedRest.data(), expected.data(), modulus.data(), negativeInverse, count);
            calls.reduce(givenRest.data(), given.data(), modulus.data(), negativeInverse, count);
            ASSERT_EQ(givenRest, expectedRest);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, MontgomeryVariant, ::testing::Range<std::size_t>(0, MontgomeryVariants().size()),
                         [](const auto& entry) { return MontgomeryVariants()[entry.param].name; });

TEST(Montgomery, PortableProductsAreTheSlowTwins)
{
    LimbSource source;
    const MontgomeryCalls& portable = MontgomeryVariants()[0].calls;
    for (int i = 0; i < 20; ++i) {
        const LimbVector left = source.limbs(8);
        const LimbVector right = source.limbs(8);
        LimbVector product(16);
        portable.multiply(product.data(), left.data(), right.data(), 8);
        ASSERT_EQ(product, FromSlow(slow::Multiply(Slow(left), Slow(right)), 16));
        portable.square(product.data(), left.data(), 8);
        ASSERT_EQ(product, FromSlow(slow::Multiply(Slow(left), Slow(left)), 16));
    }
}

TEST(Montgomery, ComputesModuloNumbersOfAnyLength)
{
    LimbSource source;
    for (const std::size_t length : {1, 2, 7, 8, 9, 16, 17}) {
        for (int i = 0; i < 5; ++i) {
            LimbVector modulus = source.modulus(length);
            if (length == 1 && i == 0)
                modulus = {3};
            const MontgomeryModulus m{std::span<const Limb>(modulus)};
            const std::size_t count = m.limbs();
            ASSERT_EQ(count % 8, 0u);
            SCOPED_TRACE(testing::Message() << length << " limbs, " << i);
            MontgomeryModulus::Scratch scratch(m);
            const LimbVector a = Modulo(source.limbs(length), modulus, count);
            const LimbVector b = Modulo(source.limbs(length), modulus, count);
            LimbVector x(count);
            LimbVector y(count);
            m.enter(x.data(), a.data(), scratch);
            m.enter(y.data(), b.data(), scratch);
            LimbVector product(count);
            m.multiply(product.data(), x.data(), y.data(), scratch);
            m.leave(product.data(), product.data(), scratch);
            EXPECT_EQ(Slow(product), slow::Divide(slow::Multiply(Slow(a), Slow(b)), Slow(modulus)).second);

            const LimbVector wide = source.limbs(2 * count + 3);
            m.enterWide(product.data(), wide, scratch);
            m.leave(product.data(), product.data(), scratch);
            EXPECT_EQ(Slow(product), slow::Divide(Slow(wide), Slow(modulus)).second);
            LimbVector slowly(length);
            limbs::Reduce(slowly.data(), wide.data(), wide.size(), modulus.data(), length);
            EXPECT_EQ(Slow(slowly), Slow(product));

            // Of two ways to a power, the twin has the patience for one of short numbers.
            const LimbVector exponent = i == 0 ? LimbVector{1} : LimbVector{source.word() >> (8 * i)};
            LimbVector power(count);
            LimbVector publicPower(count);
            m.power(power.data(), a.data(), exponent);
            m.powerPublic(publicPower.data(), a.data(), exponent[0]);
            EXPECT_EQ(power, publicPower);
            if (length <= 2) {
                EXPECT_EQ(Slow(power), slow::Power(Slow(a), Slow(exponent), Slow(modulus)));
                const LimbVector longer = source.limbs(2);
                m.power(power.data(), a.data(), longer);
                EXPECT_EQ(Slow(power), slow::Power(Slow(a), Slow(longer), Slow(modulus)));
            }
            m.power(power.data(), a.data(), LimbVector{0});
            EXPECT_EQ(Slow(power), slow::Number{1});
        }
    }
}

/// base^exponent in Montgomery form, bit by bit.
LimbVector PowerByBits(const MontgomeryModulus& m, const LimbVector& base, const LimbVector& exponent)
{
    MontgomeryModulus::Scratch scratch(m);
    LimbVector power(m.one(), m.one() + m.limbs());
    for (std::size_t bit = exponent.size() * limbs::bitsOfLimb; bit-- > 0;) {
        m.square(power.data(), power.data(), scratch);
        if (limbs::BitsAt(exponent, bit, 1) != 0)
            m.multiply(power.data(), power.data(), base.data(), scratch);
    }
    return power;
}

LimbVector Square(const LimbVector& root)
{
    LimbVector square(2 * root.size());
    limbs::Multiply(square.data(), root.data(), root.size(), root.data(), root.size());
    return square;
}

class DigitVariant : public ::testing::TestWithParam<std::size_t> {};

TEST_P(DigitVariant, RaisesToPowersSideBySide)
{
    const auto& variant = DigitVariants()[GetParam()];
    if ((variant.needs & ~cpu::PresentFeatures()) != 0)
        GTEST_SKIP() << "this processor lacks " << variant.name;
    LimbSource source;
    for (const DigitCalls& calls : variant.calls) {
        for (int i = 0; i < 12; ++i) {
            SCOPED_TRACE(testing::Message() << calls.limbs << " limbs, " << calls.moduli << " moduli, " << i);
            std::deque<MontgomeryModulus> moduli;
            std::vector<LimbVector> bases;
            std::vector<LimbVector> exponents;
            std::vector<LimbVector> results;
            for (std::size_t p = 0; p < calls.moduli; ++p) {
                const LimbVector full(calls.limbs, ~Limb{0});
                const LimbVector root = source.modulus(calls.limbs / 2);
                const LimbVector modulus = i == 0 ? full : i == 3 ? Square(root) : source.modulus(calls.limbs);
                const MontgomeryModulus& m = moduli.emplace_back(std::span<const Limb>(modulus));
                bases.push_back(Modulo(source.limbs(calls.limbs), modulus, calls.limbs));
                if (i == 1) {
                    bases.back().assign(m.modulus(), m.modulus() + calls.limbs);
                    bases.back()[0] -= 1;
                }
                if (i == 3) { // its square is the modulus itself before the last reduction
                    bases.back() = root;
                    bases.back().resize(calls.limbs);
                }
                exponents.push_back(i == 2 ? LimbVector(2) : i == 3 ? LimbVector{2, 0} : source.limbs(2));
                results.emplace_back(calls.limbs);
            }
            std::vector<MontgomeryPower> powers;
            for (std::size_t p = 0; p < calls.moduli; ++p)
                powers.push_back({results[p].data(), bases[p].data(), exponents[p], moduli[p].modulus(), moduli[p].one(),
                                  0 - limbs::InverseModuloLimb(moduli[p].modulus()[0])});
            RaiseWithDigits(calls, powers, 2 * limbs::bitsOfLimb);
            for (std::size_t p = 0; p < calls.moduli; ++p)
                EXPECT_EQ(results[p], PowerByBits(moduli[p], bases[p], exponents[p]));
        }
        // m = 2^(52 (digits - 1)) - 1 times 1 is 0 modulo m, given as m itself: m + (R' - 1) m, divided by R', has all digits full.
        const std::size_t digits = DigitCalls::Digits(calls.limbs);
        const std::size_t stride = DigitCalls::Vectors(calls.limbs) * DigitCalls::digitsOfVector;
        LimbVector modulus(calls.moduli * stride);
        LimbVector one(calls.moduli * stride);
        for (std::size_t p = 0; p < calls.moduli; ++p) {
            std::fill_n(modulus.begin() + static_cast<std::ptrdiff_t>(p * stride), digits - 1, (Limb{1} << 52) - 1);
            one[p * stride] = 1;
        }
        const LimbVector inverses(calls.moduli, 1);
        LimbVector product(calls.moduli * stride, 7);
        calls.multiply(product.data(), modulus.data(), one.data(), modulus.data(), inverses.data());
        EXPECT_EQ(product, modulus);
    }
}

INSTANTIATE_TEST_SUITE_P(All, DigitVariant, ::testing::Range<std::size_t>(1, DigitVariants().size()),
                         [](const auto& entry) { return DigitVariants()[entry.param].name; });

TEST(Montgomery, InvertsWhatHasAnInverse)
{
    LimbSource source;
    int none = 0;
    for (int i = 0; i < 60; ++i) {
        const std::size_t length = 1 + static_cast<std::size_t>(i) % 9;
        const LimbVector modulus = source.modulus(length);
        const MontgomeryModulus m{std::span<const Limb>(modulus)};
        const LimbVector number = Modulo(source.limbs(length), modulus, m.limbs());
        LimbVector inverse(m.limbs());
        const bool found = m.invert(inverse.data(), number.data());
        const auto big = [](const LimbVector& limbs) {
            Bytes bytes(8 * limbs.size());
            limbs::ToBytes(bytes, limbs.data(), limbs.size());
            return CCryptoBigInteger::FromBytes(bytes);
        };
        EXPECT_EQ(found, CCryptoBigInteger::Gcd(big(number), big(modulus)) == CCryptoBigInteger(1));
        none += found ? 0 : 1;
        if (found) {
            EXPECT_EQ(big(inverse), big(number).modInverse(big(modulus)));
        }
        LimbVector divisor(length);
        limbs::Gcd(divisor.data(), number.data(), modulus.data(), length);
        EXPECT_EQ(big(divisor), CCryptoBigInteger::Gcd(big(number), big(modulus)));
        LimbVector doubled = LimbVector(number.begin(), number.begin() + static_cast<std::ptrdiff_t>(length));
        doubled[length - 1] &= ~Limb{0} >> 3;
        LimbVector other = doubled;
        limbs::Double(doubled.data(), length);
        limbs::Double(doubled.data(), length);
        limbs::Double(other.data(), length);
        limbs::Gcd(divisor.data(), doubled.data(), other.data(), length);
        EXPECT_EQ(big(divisor), CCryptoBigInteger::Gcd(big(doubled), big(other)));
    }
    EXPECT_GT(none, 0);
}

TEST(LimbVector, DivideExactlyUndoesAProduct)
{
    LimbSource source;
    for (int i = 0; i < 50; ++i) {
        LimbVector number = source.limbs(6);
        number.back() = 0;
        const Limb divisor = source.word() | 1;
        LimbVector product(6);
        limbs::AddProduct(product.data(), number.data(), 6, divisor);
        limbs::DivideExactly(product.data(), 6, divisor);
        EXPECT_EQ(product, number);
    }
}
