#include "crypto/ec/curve_point.h"
#include "tests/crypto/base/sequence_random.h"
#include "tests/crypto/base/test_bytes.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

Bytes SmallScalar(const CurveFacts& facts, std::uint8_t value)
{
    Bytes scalar(facts.orderBytes);
    scalar.back() = value;
    return scalar;
}

std::string TextOf(const std::optional<CurvePoint>& point)
{
    return point.has_value() ? Hex(BytesOf(point->bytes())) : "none";
}

std::vector<CurveFacts> WeierstrassCurves()
{
    std::vector<CurveFacts> curves(Curves().begin(), Curves().end());
    std::erase_if(curves, [](const CurveFacts& facts) { return !facts.signs; });
    return curves;
}

class PointOfCurve : public ::testing::TestWithParam<CurveFacts> {};

} // namespace

TEST_P(PointOfCurve, SumsAndMultiplesAgree)
{
    const CurveFacts& facts = GetParam();
    const auto times = [&facts](std::uint8_t value) { return MultiplyBase(facts.id, SmallScalar(facts, value)); };
    for (const int left : {1, 2, 3, 7, 100}) {
        for (const int right : {1, 2, 3, 100}) {
            const auto sum = Add(*times(static_cast<std::uint8_t>(left)), *times(static_cast<std::uint8_t>(right)));
            EXPECT_EQ(TextOf(sum), TextOf(times(static_cast<std::uint8_t>(left + right)))) << left << " + " << right;
        }
    }
    const auto seven = times(7);
    EXPECT_EQ(TextOf(Multiply(*seven, SmallScalar(facts, 9))), TextOf(times(63)));

    // The opposite point: the other parity of y.
    Bytes opposite = BytesOf(seven->bytes(true));
    EXPECT_EQ(TextOf(CurvePoint::FromBytes(facts.id, opposite)), TextOf(seven));
    opposite[0] ^= 1;
    const auto minusSeven = CurvePoint::FromBytes(facts.id, opposite);
    ASSERT_TRUE(minusSeven.has_value());
    EXPECT_FALSE(Add(*seven, *minusSeven).has_value());
    EXPECT_EQ(TextOf(Add(*times(9), *minusSeven)), TextOf(times(2)));

    // A point of another curve.
    const algorithm::Id other = facts.id == algorithm::prime256v1 ? algorithm::brainpoolP256r1 : algorithm::prime256v1;
    EXPECT_FALSE(Add(*seven, *MultiplyBase(other, SmallScalar(*FindCurve(other), 1))).has_value());
}

TEST_P(PointOfCurve, IsWhatBothSidesAgreeOn)
{
    SequenceRandom random(GetParam().id);
    const auto ours = CCryptoEC::Generate(GetParam().id, random);
    const auto theirs = CCryptoEC::Generate(GetParam().id, random);
    const Bytes scalar = BytesOf(ours->privateScalar());
    EXPECT_EQ(TextOf(MultiplyBase(GetParam().id, scalar)), Hex(BytesOf(ours->publicPoint())));
    const auto point = CurvePoint::FromBytes(GetParam().id, theirs->publicPoint().bytes());
    ASSERT_TRUE(point.has_value());
    const auto product = Multiply(*point, scalar);
    ASSERT_TRUE(product.has_value());
    EXPECT_EQ(Hex(Bytes(product->x().begin(), product->x().end())), Hex(BytesOf(ours->agree(theirs->publicPoint().bytes()))));
    EXPECT_EQ(TextOf(CurvePoint::FromBytes(GetParam().id, product->bytes().bytes())), TextOf(product));
}

TEST_P(PointOfCurve, IsWipedAtTheEnd)
{
    for (const bool first : {true, false}) {
        auto point = std::make_unique<CurvePoint>(*MultiplyBase(GetParam().id, SmallScalar(GetParam(), 5)));
        const auto coordinate = first ? std::as_const(*point).x() : std::as_const(*point).y();
        const Bytes bytes(coordinate.begin(), coordinate.end());
        EXPECT_FALSE(HoldsAfterItsEnd(std::move(point), bytes));
    }
}

TEST_P(PointOfCurve, RefusesScalarsOutOfRange)
{
    const CurveFacts& facts = GetParam();
    const auto one = MultiplyBase(facts.id, SmallScalar(facts, 1));
    ASSERT_TRUE(one.has_value());
    for (const Bytes& wrong : {Bytes(facts.orderBytes), Bytes(facts.orderBytes, 0xFF), Bytes(facts.orderBytes + 1, 1),
                               Bytes(facts.orderBytes - 1, 1), Bytes()}) {
        EXPECT_FALSE(Multiply(*one, wrong).has_value()) << wrong.size();
        EXPECT_FALSE(MultiplyBase(facts.id, wrong).has_value()) << wrong.size();
    }
}

INSTANTIATE_TEST_SUITE_P(Table, PointOfCurve, ::testing::ValuesIn(WeierstrassCurves()),
                         [](const auto& curve) { return std::string(curve.param.name); });

TEST(CurvePoint, IsOfWeierstrassCurvesAlone)
{
    for (const algorithm::Id id : {algorithm::x25519, algorithm::x448, algorithm::ed25519, algorithm::none}) {
        EXPECT_FALSE(CurvePoint::FromBytes(id, Bytes(32, 9)).has_value());
        EXPECT_FALSE(MultiplyBase(id, Bytes(32, 1)).has_value());
    }
}

TEST(CurvePoint, IsMappedAsInTheWorkedExampleOfPace)
{
    for (const TestVector& vector : ReadVectors("curve_points.txt")) {
        SCOPED_TRACE(vector.place());
        const algorithm::Id curve = FindCurve(vector.text("Curve"))->id;
        const auto secret = CurvePoint::FromBytes(curve, Joined({{4}, vector.bytes("SecretX"), vector.bytes("SecretY")}));
        ASSERT_TRUE(secret.has_value());
        const auto base = MultiplyBase(curve, vector.bytes("Nonce"));
        ASSERT_TRUE(base.has_value());
        EXPECT_EQ(TextOf(Add(*base, *secret)), "04" + vector.text("MappedX") + vector.text("MappedY"));
    }
}
