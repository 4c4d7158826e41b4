#include "crypto/bigint/primality.h"
#include "crypto/ec/curve_point.h"
#include "crypto/hash/hash.h"
#include "tests/crypto/base/sequence_random.h"
#include "tests/crypto/base/test_bytes.h"
#include "tests/crypto/ec/domain_numbers.h"

#include <gtest/gtest.h>

using namespace ccrypto;

// The numbers of the curves against what their publishers say of them, computed with integers alone.

namespace {

class DomainOfCurve : public ::testing::TestWithParam<DomainNumbers> {};

std::string NameOf(const ::testing::TestParamInfo<DomainNumbers>& info)
{
    return FindCurve(info.param.id)->name;
}

/// SHA-1 of the seed, of the seed and 1, and so on, joined to a number with as many bits as the prime, of which the highest is 0
/// (ANSI X9.62, A.3.3.1, and the same in "ECC Brainpool Standard Curves and Curve Generation", 5).
CCryptoBigInteger Expanded(const CCryptoBigInteger& seed, std::uint32_t bits)
{
    constexpr std::uint32_t digestBits = 160;
    const std::uint32_t more = (bits - 1) / digestBits;
    CCryptoBigInteger number;
    for (std::uint32_t i = 0; i <= more; ++i) {
        Bytes bytes(digestBits / 8);
        EXPECT_TRUE((seed + CCryptoBigInteger(i)).toBytes(bytes));
        const CCryptoBigInteger digest =
            CCryptoBigInteger::FromBytes(ICryptoHash::Create(algorithm::sha1)->digestOf(bytes).bytes());
        number = i == 0 ? digest % (CCryptoBigInteger(1) << (bits - digestBits * more - 1)) : (number << digestBits) + digest;
    }
    return number;
}

affine::Point PlainPoint(const CurvePoint& point)
{
    return {CCryptoBigInteger::FromBytes(point.x()), CCryptoBigInteger::FromBytes(point.y())};
}

/// The point of the curve that z turns this one into (RFC 5639, 2.3).
affine::Point Turned(const affine::Point& point, const CCryptoBigInteger& z, const CCryptoBigInteger& p)
{
    return {(point.x * z * z).modulo(p), (point.y * z * z * z).modulo(p)};
}

} // namespace

TEST_P(DomainOfCurve, IsAGroupOfThatOrder)
{
    const DomainNumbers& domain = GetParam();
    const affine::Curve curve = domain.curve();
    SequenceRandom random(1);
    EXPECT_TRUE(IsProbablePrime(domain.p, random));
    EXPECT_TRUE(IsProbablePrime(domain.order, random));
    EXPECT_EQ(domain.p.bits(), FindCurve(domain.id)->bits);
    EXPECT_FALSE(curve.discriminant().isZero());
    EXPECT_TRUE(curve.contains(domain.base));
    // By Hasse's theorem the count of all points differs from p + 1 by 2 sqrt(p) at most, so that it is the order of the base point
    // and no multiple of that.
    const CCryptoBigInteger distance = domain.p + CCryptoBigInteger(1) - domain.order;
    EXPECT_TRUE(distance * distance <= CCryptoBigInteger(4) * domain.p);
    EXPECT_FALSE(domain.order == domain.p);
    const affine::Sum last = curve.multiply(domain.order - CCryptoBigInteger(1), domain.base);
    EXPECT_TRUE(last == curve.negate(domain.base));
    EXPECT_FALSE(curve.add(last, domain.base).has_value());
}

TEST_P(DomainOfCurve, MultipliesAsTheTwinDoes)
{
    const DomainNumbers& domain = GetParam();
    const CurveFacts& facts = *FindCurve(domain.id);
    std::mt19937 engine(domain.p.bits());
    Bytes scalar(facts.orderBytes);
    ASSERT_TRUE(CCryptoBigInteger::FromBytes(RandomBytes(engine, scalar.size())).modulo(domain.order).toBytes(scalar));
    const auto ofBase = MultiplyBase(domain.id, scalar);
    ASSERT_TRUE(ofBase.has_value());
    EXPECT_TRUE(domain.curve().multiply(CCryptoBigInteger::FromBytes(scalar), domain.base) == PlainPoint(*ofBase));
    // The twin takes its time, so the other scalar is short.
    std::fill(scalar.begin(), scalar.end() - 4, std::uint8_t{0});
    const auto ofPoint = Multiply(*ofBase, scalar);
    ASSERT_TRUE(ofPoint.has_value());
    EXPECT_TRUE(domain.curve().multiply(CCryptoBigInteger::FromBytes(scalar), PlainPoint(*ofBase)) == PlainPoint(*ofPoint));
}

INSTANTIATE_TEST_SUITE_P(Table, DomainOfCurve, ::testing::ValuesIn(AllDomains()), NameOf);

TEST(CurveDomains, OfBrainpoolComeOfTheDigitsOfE)
{
    // 160 bits each of e / 16, from the first one on, and how often the generation counted on from there.
    struct {
        algorithm::Id curve;
        const char* seed;
        std::int64_t ofA;
        std::int64_t ofB;
    } const rows[] = {
        {algorithm::brainpoolP160r1, "2b7e151628aed2a6abf7158809cf4f3c762e7160", 282, 285},
        {algorithm::brainpoolP224r1, "5f4bf8d8d8c31d763da06c80abb1185eb4f7c7b5", 1344, 1347},
        {algorithm::brainpoolP256r1, "757f5958490cfd47d7c19bb42158d9554f7b46bc", 1941, 1942},
        {algorithm::brainpoolP320r1, "ed55c4d79fd5f24d6613c31c3839a2ddf8a9a276", 2222, 2227},
        {algorithm::brainpoolP384r1, "bcfbfa1c877c56284dab79cd4c2b3293d20e9e5e", 5653, 5655},
        {algorithm::brainpoolP512r1, "af02ac60acc93ed874422a52ecb238feee5ab6ad", 1871, 1872},
    };
    for (const auto& row : rows) {
        const DomainNumbers& domain = DomainOf(row.curve);
        SCOPED_TRACE(FindCurve(row.curve)->name);
        const CCryptoBigInteger seed = CCryptoBigInteger::FromHex(row.seed);
        EXPECT_TRUE(Expanded(seed + CCryptoBigInteger(row.ofA), domain.p.bits()) == domain.a);
        EXPECT_TRUE(Expanded(seed + CCryptoBigInteger(row.ofB), domain.p.bits()) == domain.b);
    }
}

TEST(CurveDomains, OfSecComeOfTheirSeeds)
{
    // SEC 2, 2.
    struct {
        algorithm::Id curve;
        const char* seed;
    } const rows[] = {
        {algorithm::secp112r1, "00F50B028E4D696E676875615175290472783FB1"},
        {algorithm::secp160r1, "1053CDE42C14D696E67687561517533BF3F83345"},
        {algorithm::prime192v1, "3045AE6FC8422F64ED579528D38120EAE12196D5"},
        {algorithm::secp224r1, "BD71344799D5C7FCDC45B59FA3B9AB8F6A948BC5"},
        {algorithm::prime256v1, "C49D360886E704936A6678E1139D26B7819F7E90"},
        {algorithm::secp384r1, "A335926AA319A27A1D00896A6773A4827ACDAC73"},
        {algorithm::secp521r1, "D09E8800291CB85396CC6717393284AAA0DA64BA"},
    };
    for (const auto& row : rows) {
        const DomainNumbers& domain = DomainOf(row.curve);
        SCOPED_TRACE(FindCurve(row.curve)->name);
        const CCryptoBigInteger c = Expanded(CCryptoBigInteger::FromHex(row.seed), domain.p.bits());
        EXPECT_TRUE((c * domain.b * domain.b - domain.a * domain.a * domain.a).modulo(domain.p).isZero());
        EXPECT_TRUE((domain.a + CCryptoBigInteger(3)).modulo(domain.p).isZero());
    }
}

TEST(CurveDomains, TurnIntoTheirTwists)
{
    // RFC 5639, 3.5 and 3.6: z, and what the curve is turned into.
    const DomainNumbers& ofP320 = DomainOf(algorithm::brainpoolP320r1);
    const CCryptoBigInteger z320 =
        CCryptoBigInteger::FromHex("15F75CAF668077F7E85B42EB01F0A81FF56ECD6191D55CB82B7D861458A18FEFC3E5AB7496F3C7B1");
    const affine::Curve p320t1(
        ofP320.p, ofP320.p - CCryptoBigInteger(3),
        CCryptoBigInteger::FromHex("A7F561E038EB1ED560B3D147DB782013064C19F27ED27C6780AAF77FB8A547CEB5B4FEF422340353"));
    const affine::Point baseOfP320t1 = {
        CCryptoBigInteger::FromHex("925BE9FB01AFC6FB4D3E7D4990010F813408AB106C4F09CB7EE07868CC136FFF3357F624A21BED52"),
        CCryptoBigInteger::FromHex("63BA3A7A27483EBF6671DBEF7ABB30EBEE084E58A0B077AD42A5A0989D1EE71B1B9BC0455FB0D2C3")};
    EXPECT_TRUE(p320t1.contains(baseOfP320t1));
    EXPECT_TRUE(Turned(ofP320.base, z320, ofP320.p) == baseOfP320t1);

    const DomainNumbers& ofP384 = DomainOf(algorithm::brainpoolP384r1);
    const DomainNumbers& ofP384t1 = DomainOf(algorithm::brainpoolP384t1);
    const CCryptoBigInteger z384 = CCryptoBigInteger::FromHex(
        "41DFE8DD399331F7166A66076734A89CD0D2BCDB7D068E44E1F378F41ECBAE97D2D63DBC87BCCDDCCC5DA39E8589291C");
    EXPECT_TRUE(ofP384.p == ofP384t1.p && ofP384.order == ofP384t1.order);
    EXPECT_TRUE(Turned(ofP384.base, z384, ofP384.p) == ofP384t1.base);

    // A secret scalar leads to the same point by both ways.
    std::mt19937 engine(3);
    for (int round = 0; round < 3; ++round) {
        Bytes scalar = RandomBytes(engine, 40);
        scalar[0] &= 0x7F;
        EXPECT_TRUE(Turned(PlainPoint(*MultiplyBase(algorithm::brainpoolP320r1, scalar)), z320, ofP320.p) ==
                    p320t1.multiply(CCryptoBigInteger::FromBytes(scalar), baseOfP320t1));
        scalar.insert(scalar.begin(), 8, 0x21);
        EXPECT_TRUE(Turned(PlainPoint(*MultiplyBase(algorithm::brainpoolP384r1, scalar)), z384, ofP384.p) ==
                    PlainPoint(*MultiplyBase(algorithm::brainpoolP384t1, scalar)));
    }
}
