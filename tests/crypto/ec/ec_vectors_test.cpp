#include "core/base/algorithm.h"
#include "crypto/ec/curve_arithmetic.h"
#include "crypto/ec/ec.h"
#include "crypto/ec/x25519.h"
#include "crypto/ec/x448.h"
#include "tests/crypto/base/test_bytes.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

const CurveFacts& CurveOf(const TestVector& vector)
{
    const CurveFacts* facts = FindCurve(vector.text("Curve"));
    EXPECT_NE(facts, nullptr) << vector.place();
    return *facts;
}

/// 04 X Y
Bytes PointOf(const TestVector& vector)
{
    return Joined({{4}, vector.bytes("X"), vector.bytes("Y")});
}

std::unique_ptr<CCryptoEC> PrivateOf(const TestVector& vector)
{
    auto key = CCryptoEC::FromPrivate(CurveOf(vector).id, vector.bytes("D"));
    EXPECT_NE(key, nullptr);
    return key;
}

} // namespace

TEST(EcVectors, PublicPointsOfPrivateScalars)
{
    for (const TestVector& vector : ReadVectors("ec_pairs.txt")) {
        SCOPED_TRACE(vector.place());
        const CurveFacts& facts = CurveOf(vector);
        const auto key = PrivateOf(vector);
        EXPECT_EQ(Hex(BytesOf(key->publicPoint())), Hex(PointOf(vector)));
        EXPECT_NE(CCryptoEC::FromPrivate(facts.id, vector.bytes("D"), PointOf(vector)), nullptr);
        const auto compressed = CCryptoEC::FromPublic(facts.id, key->publicPoint(true).bytes());
        ASSERT_NE(compressed, nullptr);
        EXPECT_TRUE(compressed->samePublic(*key));
    }
}

TEST(EcVectors, PointsAreOnTheCurveOrRefused)
{
    for (const TestVector& vector : ReadVectors("ec_points.txt")) {
        SCOPED_TRACE(vector.place());
        EXPECT_EQ(CCryptoEC::FromPublic(CurveOf(vector).id, PointOf(vector)) != nullptr, vector.valid());
    }
}

TEST(EcVectors, SignsWithTheNonceGiven)
{
    for (const TestVector& vector : ReadVectors("ecdsa_sign.txt")) {
        SCOPED_TRACE(vector.place());
        const CurveFacts& facts = CurveOf(vector);
        Bytes r(facts.orderBytes);
        Bytes s(facts.orderBytes);
        ASSERT_TRUE(CurveArithmetic::Of(facts.id)->sign(r, s, vector.bytes("Digest"), vector.bytes("D"), vector.bytes("K")));
        EXPECT_EQ(Hex(r), vector.text("R"));
        EXPECT_EQ(Hex(s), vector.text("S"));
        const auto key = CCryptoEC::FromPublic(facts.id, PointOf(vector));
        ASSERT_NE(key, nullptr);
        EXPECT_TRUE(key->verifyHash(vector.bytes("Digest"), Joined({r, s}), SignatureForm::pair));
    }
}

TEST(EcVectors, SignsDeterministically)
{
    for (const TestVector& vector : ReadVectors("ecdsa_deterministic.txt")) {
        SCOPED_TRACE(vector.place());
        const auto key = PrivateOf(vector);
        const element signature = key->signHashDeterministically(vector.bytes("Digest"), SignatureForm::pair,
                                                                 static_cast<algorithm::Id>(vector.number("Hash")));
        EXPECT_EQ(Hex(BytesOf(signature)), vector.text("R") + vector.text("S"));
    }
}

TEST(EcVectors, VerifiesAndRefuses)
{
    for (const TestVector& vector : ReadVectors("ecdsa_verify.txt")) {
        SCOPED_TRACE(vector.place());
        const Bytes pair = Joined({vector.bytes("R"), vector.bytes("S")});
        const auto key = CCryptoEC::FromPublic(CurveOf(vector).id, PointOf(vector));
        EXPECT_TRUE(key != nullptr || !vector.valid());
        if (key == nullptr)
            continue;
        EXPECT_EQ(key->verifyHash(vector.bytes("Digest"), pair, SignatureForm::pair), vector.valid());
    }
}

TEST(EcVectors, AgreesOnASecret)
{
    for (const TestVector& vector : ReadVectors("ecdh.txt")) {
        SCOPED_TRACE(vector.place());
        const auto key = CCryptoEC::FromPrivate(CurveOf(vector).id, vector.bytes("D"));
        EXPECT_TRUE(key != nullptr || !vector.valid());
        if (key == nullptr)
            continue;
        const element secret = key->agree(PointOf(vector));
        // Where our own public point or the secret was changed, the agreement itself goes well.
        if (vector.valid()) {
            EXPECT_EQ(Hex(BytesOf(secret)), vector.text("Z"));
        } else {
            EXPECT_EQ(secret.isEmpty(), CCryptoEC::FromPublic(key->curve().id, PointOf(vector)) == nullptr);
        }
    }
}

TEST(EcVectors, MontgomeryCurves)
{
    for (const TestVector& vector : ReadVectors("x_curves.txt")) {
        SCOPED_TRACE(vector.place());
        Bytes scalar = vector.bytes("Scalar");
        Bytes point = vector.bytes("Point");
        const bool isX25519 = CurveOf(vector).id == algorithm::x25519;
        if (!vector.has("Rounds")) {
            const auto key = CCryptoEC::FromPrivate(CurveOf(vector).id, scalar);
            ASSERT_NE(key, nullptr);
            EXPECT_EQ(Hex(BytesOf(key->agree(point))), vector.text("Result"));
            continue;
        }
        for (std::uint64_t rounds = vector.number("Rounds"); rounds > 0; --rounds) {
            Bytes result(scalar.size());
            ASSERT_TRUE((isX25519 ? X25519 : X448)(result.data(), scalar.data(), point.data()));
            point = std::exchange(scalar, result);
        }
        EXPECT_EQ(Hex(scalar), vector.text("Result"));
    }
}
