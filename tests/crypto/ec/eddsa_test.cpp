#include "crypto/ec/eddsa.h"
#include "tests/crypto/base/sequence_random.h"
#include "tests/crypto/base/test_bytes.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace ccrypto;

namespace {

algorithm::Id EdwardsCurveOf(const TestVector& vector)
{
    return vector.text("Curve") == "Ed25519" ? algorithm::ed25519 : algorithm::ed448;
}

Bytes FromHexDigits(const std::string& digits)
{
    Bytes bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

/// Of little-endian numbers, as many bytes as `a` has.
Bytes LittleSum(Bytes a, const Bytes& b)
{
    unsigned carry = 0;
    for (std::size_t i = 0; i < a.size(); ++i, carry >>= 8) {
        carry += unsigned{a[i]} + (i < b.size() ? b[i] : 0u);
        a[i] = static_cast<std::uint8_t>(carry);
    }
    return a;
}

const Bytes order25519 = FromHexDigits("edd3f55c1a631258d69cf7a2def9de1400000000000000000000000000000010");
const Bytes order448 = FromHexDigits("f34458ab92c27823558fc58d72c26c219036d6ae49db4ec4e923ca7c"
                                     "ffffffffffffffffffffffffffffffffffffffffffffffffffffff3f00");

class EveryEdwardsCurve : public ::testing::TestWithParam<algorithm::Id> {};

} // namespace

TEST(EddsaVectors, SignsAndVerifies)
{
    for (const TestVector& vector : ReadVectors("eddsa.txt")) {
        SCOPED_TRACE(vector.place());
        const algorithm::Id curve = EdwardsCurveOf(vector);
        const Bytes message = vector.bytes("Message");
        const Bytes context = vector.has("Context") ? vector.bytes("Context") : Bytes();
        const EddsaMode mode = {context, vector.has("Prehash")};
        const auto key = EddsaKey::FromSeed(curve, vector.bytes("Seed"));
        ASSERT_NE(key, nullptr);
        EXPECT_EQ(Hex(BytesOf(key->publicKey())), vector.text("Public"));
        const Bytes signature = BytesOf(key->sign(message, mode));
        EXPECT_EQ(Hex(signature), vector.text("Signature"));

        const auto half = EddsaKey::FromPublic(curve, vector.bytes("Public"));
        ASSERT_NE(half, nullptr);
        EXPECT_TRUE(half->verify(message, signature, mode));
        const Bytes other = Joined({context, {1}});
        EXPECT_FALSE(half->verify(message, signature, {other, mode.prehash}));
        EXPECT_FALSE(half->verify(message, signature, {context, !mode.prehash}));
        EXPECT_FALSE(half->verify(Joined({message, {0}}), signature, mode));
        // S and the order more is the same number, and refused.
        const std::size_t middle = signature.size() / 2;
        Bytes response(signature.begin() + static_cast<std::ptrdiff_t>(middle), signature.end());
        response = LittleSum(response, curve == algorithm::ed25519 ? order25519 : order448);
        EXPECT_FALSE(half->verify(
            message, Joined({Bytes(signature.begin(), signature.begin() + static_cast<std::ptrdiff_t>(middle)), response}), mode));
    }
}

TEST_P(EveryEdwardsCurve, VerifiesWhatItSignsAndNothingElse)
{
    SequenceRandom random(GetParam());
    const auto key = EddsaKey::Generate(GetParam(), random);
    const auto stranger = EddsaKey::Generate(GetParam(), random);
    ASSERT_TRUE(key != nullptr && stranger != nullptr);
    const auto half = EddsaKey::FromPublic(GetParam(), key->publicKey().bytes());
    ASSERT_NE(half, nullptr);
    EXPECT_TRUE(half->seed().isEmpty());
    const Bytes message(100, 7);
    const Bytes signature = BytesOf(key->sign(message));
    EXPECT_TRUE(half->sign(message).isEmpty());
    EXPECT_TRUE(half->verify(message, signature));
    EXPECT_FALSE(stranger->verify(message, signature));
    for (std::size_t bit = 0; bit < 8 * signature.size(); bit += 5) {
        Bytes changed = signature;
        changed[bit / 8] ^= static_cast<std::uint8_t>(1u << bit % 8);
        EXPECT_FALSE(half->verify(message, changed)) << bit;
    }
    Bytes last = signature;
    last.back() ^= 0x80;
    EXPECT_FALSE(half->verify(message, last));
    EXPECT_FALSE(half->verify(message, Joined({signature, {0}})));
    EXPECT_FALSE(half->verify(message, std::span(signature).first(signature.size() - 1)));
    EXPECT_FALSE(half->verify(message, {}));

    const Bytes longest(255, 1);
    const Bytes tooLong(256, 1);
    EXPECT_TRUE(half->verify(message, key->sign(message, {longest}).bytes(), {longest}));
    EXPECT_TRUE(key->sign(message, {tooLong}).isEmpty());
    EXPECT_FALSE(half->verify(message, signature, {tooLong}));
}

TEST_P(EveryEdwardsCurve, SignsNothingAfterAFault)
{
    SequenceRandom random(GetParam());
    const auto key = EddsaKey::Generate(GetParam(), random);
    // The key as it lies in memory, one bit of one copy another.
    for (const Bytes& part : {BytesOf(key->seed()), BytesOf(key->publicKey())}) {
        std::span<std::uint8_t> memory(reinterpret_cast<std::uint8_t*>(key.get()), sizeof *key);
        int copies = 0;
        for (auto place = std::ranges::search(memory, part); !place.empty(); place = std::ranges::search(memory, part)) {
            place.front() ^= 1;
            EXPECT_TRUE(key->sign(Bytes(3)).isEmpty());
            EXPECT_TRUE(key->sign(Bytes(3), {.context = Bytes(2), .prehash = true}).isEmpty());
            place.front() ^= 1;
            EXPECT_FALSE(key->sign(Bytes(3)).isEmpty());
            memory = {place.end(), memory.end()};
            ++copies;
        }
        EXPECT_EQ(copies, 2);
    }
}

TEST_P(EveryEdwardsCurve, IsWipedAtTheEnd)
{
    SequenceRandom random(GetParam());
    auto key = EddsaKey::Generate(GetParam(), random);
    const Bytes seed = BytesOf(key->seed());
    EXPECT_TRUE(Holds(*key, Hex(seed)));
    EXPECT_FALSE(HoldsAfterItsEnd(std::move(key), seed));
}

TEST_P(EveryEdwardsCurve, RefusesKeysOfAnotherLength)
{
    SequenceRandom random(GetParam());
    const auto key = EddsaKey::Generate(GetParam(), random);
    for (Bytes bytes : {BytesOf(key->seed()), BytesOf(key->publicKey())}) {
        bytes.push_back(0);
        for (const std::span<const std::uint8_t> wrong :
             {std::span<const std::uint8_t>(bytes), std::span<const std::uint8_t>(bytes).first(bytes.size() - 2), {}}) {
            EXPECT_EQ(EddsaKey::FromSeed(GetParam(), wrong), nullptr) << wrong.size();
            EXPECT_EQ(EddsaKey::FromPublic(GetParam(), wrong), nullptr) << wrong.size();
        }
    }
    NoRandom dry;
    EXPECT_EQ(EddsaKey::Generate(GetParam(), dry), nullptr);
    EXPECT_EQ(EddsaKey::Generate(algorithm::x25519, random), nullptr);
    EXPECT_EQ(EddsaKey::FromSeed(algorithm::x25519, Bytes(32)), nullptr);
    EXPECT_EQ(EddsaKey::FromPublic(algorithm::prime256v1, Bytes(32)), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Both, EveryEdwardsCurve, ::testing::Values(algorithm::ed25519, algorithm::ed448));

TEST(EddsaKey, RefusesWhatIsNotTheExactEncodingOfAUsefulPoint)
{
    struct {
        const char* why;
        algorithm::Id curve;
        std::string point;
    } const cases[] = {
        {"the neutral point", algorithm::ed25519, "01" + std::string(62, '0')},
        {"the neutral point with a sign", algorithm::ed25519, "01" + std::string(60, '0') + "80"},
        {"order 2", algorithm::ed25519, "ec" + std::string(60, 'f') + "7f"},
        {"order 4", algorithm::ed25519, std::string(64, '0')},
        {"order 4, odd", algorithm::ed25519, std::string(62, '0') + "80"},
        {"order 8", algorithm::ed25519, "c7176a703d4dd84fba3c0b760d10670f2a2053fa2c39ccc64ec7fd7792ac037a"},
        {"order 8", algorithm::ed25519, "26e8958fc2b227b045c3f489f2ef98f0d5dfac05d3c63339b13802886d53fc05"},
        {"y is the prime", algorithm::ed25519, "ed" + std::string(60, 'f') + "7f"},
        // y is 3, which some point has.
        {"y is above the prime", algorithm::ed25519, "f0" + std::string(60, 'f') + "7f"},
        {"no point has this y", algorithm::ed25519, "02" + std::string(62, '0')},
        {"the neutral point", algorithm::ed448, "01" + std::string(112, '0')},
        {"order 2", algorithm::ed448, "fe" + std::string(54, 'f') + "fe" + std::string(54, 'f') + "00"},
        {"order 4", algorithm::ed448, std::string(114, '0')},
        {"order 4, odd", algorithm::ed448, std::string(112, '0') + "80"},
        {"y is the prime", algorithm::ed448, "ff" + std::string(54, 'f') + "fe" + std::string(54, 'f') + "00"},
    };
    for (const auto& row : cases)
        EXPECT_EQ(EddsaKey::FromPublic(row.curve, FromHexDigits(row.point)), nullptr) << row.why << ": " << row.point;
    // The one next to them is a point.
    EXPECT_NE(EddsaKey::FromPublic(algorithm::ed25519, FromHexDigits("03" + std::string(62, '0'))), nullptr);

    // Seven bits of the last byte mean nothing for Ed448.
    SequenceRandom random(1);
    Bytes key = BytesOf(EddsaKey::Generate(algorithm::ed448, random)->publicKey());
    for (int bit = 0; bit < 7; ++bit) {
        key.back() ^= static_cast<std::uint8_t>(1u << bit);
        EXPECT_EQ(EddsaKey::FromPublic(algorithm::ed448, key), nullptr) << bit;
        key.back() ^= static_cast<std::uint8_t>(1u << bit);
    }
}
