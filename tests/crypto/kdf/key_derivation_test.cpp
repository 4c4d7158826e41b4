#include "crypto/kdf/key_derivation.h"
#include "crypto/mac/hmac.h"
#include "tests/crypto/base/test_bytes.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

using KDF = CCryptoKeyDerivation;

constexpr algorithm::Id hashIds[] = {algorithm::sha1,   algorithm::md5,    algorithm::sha256,
                                     algorithm::sha384, algorithm::sha512, algorithm::sha224};

algorithm::Id IdOf(const TestVector& vector)
{
    return ICryptoHash::CreateByName(vector.text("Hash"))->algorithmId();
}

TEST(KeyDerivation, PBKDF2Vectors)
{
    for (const TestVector& vector : ReadVectors("pbkdf2.txt")) {
        SCOPED_TRACE(vector.place());
        const std::string key = vector.text("Key");
        EXPECT_EQ(
            HexOf(KDF::PBKDF2(IdOf(vector), vector.bytes("Password"), vector.bytes("Salt"),
                              static_cast<std::uint32_t>(vector.number("Iterations")), static_cast<std::uint32_t>(key.size() / 2))),
            key);
    }
}

TEST(KeyDerivation, X963Vectors)
{
    for (const TestVector& vector : ReadVectors("x963.txt")) {
        SCOPED_TRACE(vector.place());
        const std::string key = vector.text("Key");
        EXPECT_EQ(HexOf(KDF::X963(IdOf(vector), vector.bytes("Secret"), vector.bytes("Info"),
                                  static_cast<std::uint32_t>(key.size() / 2))),
                  key);
    }
}

TEST(KeyDerivation, PKCS12Vectors)
{
    for (const TestVector& vector : ReadVectors("pkcs12_derivation.txt")) {
        SCOPED_TRACE(vector.place());
        const Bytes password = vector.bytes("Password");
        const element units = KDF::PKCS12Password({reinterpret_cast<const char*>(password.data()), password.size()});
        const std::string key = vector.text("Key");
        EXPECT_EQ(
            HexOf(KDF::PKCS12(IdOf(vector), static_cast<KDF::PKCS12Use>(vector.number("Use")), units.bytes(), vector.bytes("Salt"),
                              static_cast<std::uint32_t>(vector.number("Iterations")), static_cast<std::uint32_t>(key.size() / 2))),
            key);
    }
}

TEST(KeyDerivation, HKDFVectors)
{
    for (const TestVector& vector : ReadVectors("hkdf.txt")) {
        SCOPED_TRACE(vector.place());
        const algorithm::Id id = IdOf(vector);
        const Bytes salt = vector.bytes("Salt");
        const Bytes secret = vector.bytes("Secret");
        const auto length = static_cast<std::uint32_t>(vector.number("Length"));
        EXPECT_EQ(HexOf(KDF::HKDFExtract(id, salt, secret)), vector.text("PRK"));
        EXPECT_EQ(HexOf(KDF::HKDFExpand(id, vector.bytes("PRK"), vector.bytes("Info"), length)), vector.text("OKM"));
        EXPECT_EQ(HexOf(KDF::HKDF(id, salt, secret, vector.bytes("Info"), length)), vector.text("OKM"));
    }
}

// The published value, and the definition for every hash.
TEST(KeyDerivation, PBKDF1HashesAgainAndAgain)
{
    const Bytes password = {'p', 'a', 's', 's', 'w', 'o', 'r', 'd'};
    const Bytes salt = {0x78, 0x57, 0x8E, 0x5A, 0x5D, 0x63, 0xCB, 0x06};
    EXPECT_EQ(HexOf(KDF::PBKDF1(algorithm::sha1, password, salt, 1000, 16)), "dc19847e05c64d2faf10ebfb4a3d2a20");
    for (const algorithm::Id id : hashIds) {
        const auto hash = ICryptoHash::Create(id);
        hash->update(password);
        hash->update(salt);
        element digest = hash->final();
        for (std::uint32_t iterations = 1; iterations < 5; ++iterations) {
            EXPECT_EQ(KDF::PBKDF1(id, password, salt, iterations, hash->digestSize()), digest) << id;
            digest = hash->digestOf(digest.bytes());
        }
        EXPECT_TRUE(KDF::PBKDF1(id, password, salt, 1, hash->digestSize() + 1).isEmpty());
    }
}

/// RFC 8018, 5.2, to the letter.
element SlowPBKDF2(algorithm::Id id, const Bytes& password, const Bytes& salt, std::uint32_t iterations, std::uint32_t length)
{
    const auto mac = CCryptoHMAC::Create(id);
    mac->setKey(password);
    element key;
    for (std::uint8_t number = 1; key.length() < length; ++number) {
        Bytes text = salt;
        text.insert(text.end(), {0, 0, 0, number});
        element link = mac->macOf(text);
        element sum = link;
        for (std::uint32_t i = 1; i < iterations; ++i) {
            link = mac->macOf(link.bytes());
            for (std::uint32_t at = 0; at < sum.length(); ++at)
                sum.data()[at] ^= link.data()[at];
        }
        key.append(sum.data(), sum.length());
    }
    key.resize(length);
    return key;
}

TEST(KeyDerivation, PBKDF2IsItsSlowTwinForEveryHashAndLength)
{
    for (const algorithm::Id id : hashIds) {
        for (const std::size_t passwordLength : {0u, 1u, 64u, 65u, 128u, 129u, 300u}) {
            SCOPED_TRACE(std::to_string(id) + " with a password of " + std::to_string(passwordLength));
            const Bytes password(passwordLength, 'p');
            const Bytes salt(passwordLength / 2, 's');
            const element longest = SlowPBKDF2(id, password, salt, 3, 200);
            for (const std::uint32_t length : {1u, 15u, 16u, 63u, 64u, 65u, 200u})
                EXPECT_EQ(HexOf(KDF::PBKDF2(id, password, salt, 3, length)), HexOf(longest).substr(0, std::size_t{2} * length))
                    << length;
        }
    }
    EXPECT_EQ(KDF::PBKDF2(algorithm::hmacSha256, Bytes(3), Bytes(3), 2, 32),
              KDF::PBKDF2(algorithm::sha256, Bytes(3), Bytes(3), 2, 32));
}

TEST(KeyDerivation, PasswordsForPKCS12AreBigEndian)
{
    EXPECT_EQ(HexOf(KDF::PKCS12Password("")), "0000");
    EXPECT_EQ(HexOf(KDF::PKCS12Password("a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80")), "006100e420acd83dde000000");
    EXPECT_TRUE(KDF::PKCS12Password("a\xC3").isEmpty());
    EXPECT_TRUE(KDF::PKCS12Password(std::string(KDF::maxInput + 1, 'a')).isEmpty());
}

struct BadCase {
    const char* name;
    algorithm::Id hashId = algorithm::sha256;
    std::size_t passwordLength = 8;
    std::size_t saltLength = 8;
    std::uint32_t iterations = 2;
    std::uint32_t length = 16;
};

TEST(KeyDerivation, ParametersOutOfBoundsGiveNoKey)
{
    const BadCase cases[] = {
        {.name = "no hash", .hashId = algorithm::none},
        {.name = "a cipher", .hashId = algorithm::aes128Cbc},
        {.name = "two hashes in one", .hashId = algorithm::md5Sha1},
        {.name = "a password too long", .passwordLength = KDF::maxInput + 1},
        {.name = "a salt too long", .saltLength = KDF::maxInput + 1},
        {.name = "no iteration", .iterations = 0},
        {.name = "too many iterations", .iterations = KDF::maxIterations + 1},
        {.name = "most iterations there can be", .iterations = 0xFFFFFFFF},
        {.name = "too many iterations for two digests", .iterations = KDF::maxIterations / 2 + 1, .length = 33},
        {.name = "an empty key", .length = 0},
        {.name = "a key too long", .length = KDF::maxKey + 1},
        {.name = "the longest key there can be", .length = 0xFFFFFFFF},
    };
    for (const BadCase& row : cases) {
        SCOPED_TRACE(row.name);
        const Bytes password(row.passwordLength);
        const Bytes salt(row.saltLength);
        EXPECT_TRUE(KDF::PBKDF1(row.hashId, password, salt, row.iterations, row.length).isEmpty());
        EXPECT_TRUE(KDF::PBKDF2(row.hashId, password, salt, row.iterations, row.length).isEmpty());
        EXPECT_TRUE(KDF::PKCS12(row.hashId, KDF::PKCS12Use::mac, password, salt, row.iterations, row.length).isEmpty());
    }

    const Bytes key(32);
    for (const algorithm::Id id : {algorithm::sha3_224, algorithm::sha3_256, algorithm::sha3_384, algorithm::sha3_512}) {
        EXPECT_TRUE(KDF::PBKDF1(id, key, key, 2, 16).isEmpty()) << id;
        EXPECT_TRUE(KDF::PKCS12(id, KDF::PKCS12Use::key, key, key, 2, 16).isEmpty()) << id;
        EXPECT_TRUE(KDF::Allows(id, key, KDF::maxIterations, 16)) << id;
        EXPECT_FALSE(KDF::Allows(id, key, KDF::maxIterations + 1, 16)) << id;
    }
    for (const algorithm::Id id : {algorithm::shake128, algorithm::shake256}) {
        EXPECT_TRUE(KDF::PBKDF2(id, key, key, 2, 16).isEmpty()) << id;
        EXPECT_TRUE(KDF::HKDF(id, key, key, key, 16).isEmpty()) << id;
    }
    EXPECT_TRUE(KDF::HKDF(algorithm::md5Sha1, key, key, key, 16).isEmpty());
    EXPECT_TRUE(KDF::HKDF(algorithm::sha256, key, key, key, 0).isEmpty());
    EXPECT_EQ(KDF::HKDF(algorithm::sha256, key, key, key, 255 * 32).length(), 255u * 32);
    EXPECT_TRUE(KDF::HKDF(algorithm::sha256, key, key, key, 255 * 32 + 1).isEmpty());
    EXPECT_TRUE(KDF::HKDFExpand(algorithm::sha256, Bytes(31), key, 16).isEmpty());
    for (const algorithm::Id id : {algorithm::none, algorithm::md5Sha1, algorithm::shake128, algorithm::shake256})
        EXPECT_TRUE(KDF::X963(id, key, key, 16).isEmpty()) << id;
    for (const std::uint32_t length : {0u, KDF::maxKey + 1})
        EXPECT_TRUE(KDF::X963(algorithm::sha256, key, key, length).isEmpty()) << length;
    EXPECT_TRUE(KDF::X963(algorithm::sha256, {}, key, 16).isEmpty());
    EXPECT_TRUE(KDF::X963(algorithm::sha256, key, Bytes(KDF::maxInput + 1), 16).isEmpty());
    EXPECT_EQ(KDF::X963(algorithm::sha3_256, key, key, KDF::maxKey).length(), KDF::maxKey);
    const Bytes tooLong(KDF::maxInput + 1);
    EXPECT_TRUE(KDF::HKDFExtract(algorithm::sha256, tooLong, key).isEmpty());
    EXPECT_TRUE(KDF::HKDFExtract(algorithm::sha256, key, tooLong).isEmpty());
    EXPECT_TRUE(KDF::HKDFExpand(algorithm::sha256, tooLong, key, 16).isEmpty());
    EXPECT_TRUE(KDF::HKDFExpand(algorithm::sha256, key, tooLong, 16).isEmpty());
    EXPECT_TRUE(KDF::X963(algorithm::sha256, tooLong, key, 16).isEmpty());
}

} // namespace
