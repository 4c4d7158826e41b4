#include "asn1/algorithm_table.h"
#include "crypto/curve_arithmetic.h"
#include "crypto/ec.h"
#include "tests/crypto/vector_file.h"

#include <gtest/gtest.h>

namespace {

Bytes Joined(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

Bytes ToBytes(const element& value)
{
    return {value.data(), value.data() + value.length()};
}

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
        EXPECT_EQ(Hex(ToBytes(key->publicPoint())), Hex(PointOf(vector)));
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
                                                                 static_cast<std::uint32_t>(vector.number("Hash")));
        EXPECT_EQ(Hex(ToBytes(signature)), vector.text("R") + vector.text("S"));
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
        const element der = EcdsaPairToDer(pair);
        EXPECT_EQ(key->verifyHash(vector.bytes("Digest"), der.bytes(), SignatureForm::der), vector.valid());
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
            EXPECT_EQ(Hex(ToBytes(secret)), vector.text("Z"));
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
        const std::uint64_t rounds = vector.has("Rounds") ? vector.number("Rounds") : 1;
        for (std::uint64_t round = 0; round < rounds; ++round) {
            const auto key = CCryptoEC::FromPrivate(CurveOf(vector).id, scalar);
            ASSERT_NE(key, nullptr);
            point = std::exchange(scalar, ToBytes(key->agree(point)));
        }
        EXPECT_EQ(Hex(scalar), vector.text("Result"));
    }
}
