#include "crypto/hash/hash.h"
#include "crypto/rsa/rsa.h"
#include "tests/crypto/base/sequence_random.h"
#include "tests/crypto/rsa/rsa_vectors.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

std::unique_ptr<ICryptoHash> HashOf(const TestVector& vector)
{
    return ICryptoHash::CreateByName(vector.text("Hash"));
}

Bytes Digest(std::size_t length)
{
    Bytes digest(length);
    for (std::size_t i = 0; i < length; ++i)
        digest[i] = static_cast<std::uint8_t>(17 * i + 3);
    return digest;
}

/// The block of a signature, and the signature of a block that nobody would sign.
Bytes Opened(const element& signature)
{
    return BytesOf(AnyKey().publicOperation(signature.bytes()));
}

Bytes Signed(const Bytes& block)
{
    return BytesOf(AnyKey().privateOperation(block));
}

} // namespace

TEST(RSASignature, AreThoseOfTheVectors)
{
    for (const TestVector& vector : ReadVectors("rsa_sign.txt")) {
        SCOPED_TRACE(vector.place());
        const auto key = CCryptoRSA::FromPrivate(NumbersOf(vector));
        ASSERT_NE(key, nullptr);
        const auto hash = HashOf(vector);
        const Bytes digest = BytesOf(hash->digestOf(vector.bytes("Message")));
        const Bytes expected = vector.bytes("Signature");
        if (vector.text("Padding") == "PKCS1") {
            EXPECT_EQ(Hex(BytesOf(key->signPKCS1(hash->algorithmId(), digest))), Hex(expected));
            EXPECT_TRUE(key->verifyPKCS1(hash->algorithmId(), digest, expected));
            continue;
        }
        ToldBytes salt(vector.bytes("Salt"));
        CCryptoRSAPadding padding{.hash = hash->algorithmId()};
        EXPECT_EQ(Hex(BytesOf(key->signPSS(padding, digest, salt))), Hex(expected));
        EXPECT_TRUE(key->verifyPSS(padding, digest, expected));
        padding.saltLength = CCryptoRSAPadding::saltOfAnyLength;
        EXPECT_TRUE(key->verifyPSS(padding, digest, expected));
        padding.saltLength = static_cast<std::int32_t>(vector.bytes("Salt").size()) - 1;
        EXPECT_FALSE(key->verifyPSS(padding, digest, expected));
    }
}

// The vectors' signatures are opened for their DigestInfo, which follows the padding's zero.
TEST(RSASignature, OfADigestInfoThatIsReady)
{
    int tested = 0;
    for (const TestVector& vector : ReadVectors("rsa_sign.txt")) {
        if (vector.text("Padding") != "PKCS1")
            continue;
        SCOPED_TRACE(vector.place());
        ++tested;
        const auto key = CCryptoRSA::FromPrivate(NumbersOf(vector));
        ASSERT_NE(key, nullptr);
        const Bytes expected = vector.bytes("Signature");
        const Bytes block = BytesOf(key->publicOperation(expected));
        Bytes info(std::find(block.begin() + 2, block.end(), 0) + 1, block.end());
        EXPECT_EQ(Hex(BytesOf(key->signDigestInfo(info))), Hex(expected));
        EXPECT_TRUE(key->verifyDigestInfo(info, expected));
        info.back() ^= 1;
        EXPECT_FALSE(key->verifyDigestInfo(info, expected));
    }
    EXPECT_GT(tested, 0);
    const CCryptoRSA& key = AnyKey();
    const Bytes longest(key.bytes() - 11, 7);
    EXPECT_TRUE(key.verifyDigestInfo(longest, BytesOf(key.signDigestInfo(longest))));
    EXPECT_TRUE(key.signDigestInfo({}).isEmpty());
    EXPECT_TRUE(key.signDigestInfo(Bytes(key.bytes() - 10, 7)).isEmpty());
    EXPECT_TRUE(key.signDigestInfo(Bytes(10000, 7)).isEmpty());
    EXPECT_FALSE(key.verifyDigestInfo({}, Bytes(key.bytes(), 1)));
    EXPECT_TRUE(key.publicKey()->signDigestInfo(longest).isEmpty());
}

TEST(RSAVerification, AgreesWithTheVectors)
{
    for (const char* file : {"rsa_verify_pkcs1.txt", "rsa_verify_pss.txt"}) {
        int accepted = 0;
        int refused = 0;
        for (const TestVector& vector : ReadVectors(file)) {
            SCOPED_TRACE(vector.place());
            const auto key = CCryptoRSA::FromPublic(ElementOf(vector.bytes("Modulus")), ElementOf(vector.bytes("PublicExponent")));
            ASSERT_NE(key, nullptr);
            const auto hash = HashOf(vector);
            const Bytes digest = BytesOf(hash->digestOf(vector.bytes("Message")));
            const Bytes signature = vector.bytes("Signature");
            CCryptoRSAPadding padding{.hash = hash->algorithmId()};
            bool valid = false;
            if (vector.text("Padding") == "PKCS1") {
                valid = key->verifyPKCS1(padding.hash, digest, signature);
            } else {
                padding.saltLength = static_cast<std::int32_t>(vector.number("SaltLength"));
                valid = key->verifyPSS(padding, digest, signature);
            }
            EXPECT_EQ(valid, vector.valid());
            ++(valid ? accepted : refused);
        }
        EXPECT_GT(accepted, 4) << file;
        EXPECT_GT(refused, 4) << file;
    }
}

TEST(RSASignature, OfPKCS1IsRefusedWithAnyByteOfItsBlockChanged)
{
    const Bytes digest = Digest(32);
    const Bytes block = Opened(AnyKey().signPKCS1(algorithm::sha256, digest));
    ASSERT_TRUE(AnyKey().verifyPKCS1(algorithm::sha256, digest, Signed(block)));
    for (std::size_t i = 0; i < block.size(); ++i) {
        Bytes changed = block;
        changed[i] ^= i == 0 ? 0x01 : 0x80;
        EXPECT_FALSE(AnyKey().verifyPKCS1(algorithm::sha256, digest, Signed(changed))) << i;
    }
    // Padding too short, with the rest after the digest; NULL left out; a longer form of a length.
    Bytes shorter = block;
    shorter.erase(shorter.begin() + 10, shorter.begin() + 30);
    shorter.resize(block.size(), 0);
    EXPECT_FALSE(AnyKey().verifyPKCS1(algorithm::sha256, digest, Signed(shorter)));
    Bytes withoutNull = block;
    const std::ptrdiff_t info = static_cast<std::ptrdiff_t>(block.size()) - 51;
    withoutNull.erase(withoutNull.begin() + info + 15, withoutNull.begin() + info + 17);
    withoutNull[static_cast<std::size_t>(info) + 1] -= 2;
    withoutNull[static_cast<std::size_t>(info) + 3] -= 2;
    withoutNull.insert(withoutNull.begin() + 2, 2, 0xFF);
    EXPECT_FALSE(AnyKey().verifyPKCS1(algorithm::sha256, digest, Signed(withoutNull)));
    Bytes longForm = block;
    longForm.insert(longForm.begin() + info + 1, 0x81);
    longForm.erase(longForm.begin() + 2);
    EXPECT_FALSE(AnyKey().verifyPKCS1(algorithm::sha256, digest, Signed(longForm)));
}

TEST(RSASignature, OfPSSIsRefusedWithAnyByteOfItsBlockChanged)
{
    const CCryptoRSAPadding padding;
    const Bytes digest = Digest(32);
    const Bytes block = Opened(AnyKey().signPSS(padding, digest));
    // The one before the salt becomes 2, and is not taken for a zero.
    for (std::size_t i = 0; i < block.size(); ++i) {
        Bytes changed = block;
        changed[i] ^= 0x03;
        EXPECT_FALSE(AnyKey().verifyPSS(padding, digest, Signed(changed))) << i;
    }
    Bytes unusedBit = block;
    unusedBit[0] |= 0x80;
    EXPECT_FALSE(AnyKey().verifyPSS(padding, digest, Signed(unusedBit)));
}

TEST(RSASignature, IsRefusedWithTheWrongLengthOrNumber)
{
    const CCryptoRSA& key = AnyKey();
    const CCryptoRSAPadding padding;
    const Bytes digest = Digest(32);
    for (const Bytes& signature : {BytesOf(key.signPKCS1(algorithm::sha256, digest)), BytesOf(key.signPSS(padding, digest))}) {
        Bytes longer = signature;
        longer.insert(longer.begin(), 0);
        const Bytes shorter(signature.begin() + 1, signature.end());
        Bytes more = signature;
        more.push_back(0);
        for (const Bytes& wrong : {longer, shorter, more, Bytes{}, Bytes(128, 0), BytesOf(key.modulus()), Bytes(128, 0xFF)}) {
            EXPECT_FALSE(key.verifyPKCS1(algorithm::sha256, digest, wrong));
            EXPECT_FALSE(key.verifyPSS(padding, digest, wrong));
        }
    }
    // 1 is its own power.
    Bytes one(128);
    one.back() = 1;
    EXPECT_FALSE(key.verifyPKCS1(algorithm::sha256, digest, one));
    EXPECT_FALSE(key.verifyPSS(padding, digest, one));
}

TEST(RSASignature, HoldsForItsHashAndKeyAlone)
{
    const CCryptoRSA& key = AnyKey();
    const struct {
        algorithm::Id hash;
        std::size_t length;
    } hashes[] = {{algorithm::sha1, 20},   {algorithm::md5, 16},    {algorithm::sha256, 32}, {algorithm::sha384, 48},
                  {algorithm::sha512, 64}, {algorithm::sha224, 28}, {algorithm::md5Sha1, 36}};
    for (const auto& h : hashes) {
        SCOPED_TRACE(h.hash);
        const Bytes digest = Digest(h.length);
        const element signature = key.signPKCS1(h.hash, digest);
        EXPECT_TRUE(key.verifyPKCS1(h.hash, digest, signature.bytes()));
        for (const auto& other : hashes)
            EXPECT_EQ(key.verifyPKCS1(other.hash, Digest(other.length), signature.bytes()), &other == &h);
        EXPECT_TRUE(key.signPKCS1(h.hash, Digest(h.length - 1)).isEmpty());
        EXPECT_TRUE(key.signPKCS1(h.hash, Digest(h.length + 1)).isEmpty());
        Bytes changed = digest;
        changed.back() ^= 1;
        EXPECT_FALSE(key.verifyPKCS1(h.hash, changed, signature.bytes()));

        if (h.hash == algorithm::md5Sha1 || h.hash == algorithm::sha512)
            continue; // not for PSS; no room for two times 64 bytes
        const CCryptoRSAPadding padding{.hash = h.hash, .maskHash = algorithm::sha1};
        const element randomised = key.signPSS(padding, digest);
        EXPECT_NE(randomised, key.signPSS(padding, digest));
        EXPECT_TRUE(key.verifyPSS(padding, digest, randomised.bytes()));
        EXPECT_EQ(key.verifyPSS({.hash = h.hash}, digest, randomised.bytes()), h.hash == algorithm::sha1);
        EXPECT_FALSE(key.verifyPSS(padding, changed, randomised.bytes()));
    }
    EXPECT_TRUE(key.signPKCS1(algorithm::none, Digest(20)).isEmpty());
    EXPECT_TRUE(key.signPKCS1(static_cast<algorithm::Id>(107), Digest(20)).isEmpty());
    EXPECT_TRUE(key.signPSS({.hash = algorithm::md5Sha1}, Digest(36)).isEmpty());
    EXPECT_TRUE(key.signPSS({.hash = algorithm::sha256, .maskHash = static_cast<algorithm::Id>(99)}, Digest(32)).isEmpty());
}

TEST(RSASignature, OfPSSTakesEverySaltThatHasRoom)
{
    const CCryptoRSA& key = AnyKey();
    constexpr std::int32_t longest = 128 - 32 - 2;
    for (const std::int32_t length : {0, 1, 31, 33, longest}) {
        const CCryptoRSAPadding padding{.saltLength = length};
        const element signature = key.signPSS(padding, Digest(32));
        EXPECT_TRUE(key.verifyPSS(padding, Digest(32), signature.bytes())) << length;
        for (const std::int32_t min : {0, length, length + 1}) {
            const CCryptoRSAPadding any{.saltLength = CCryptoRSAPadding::saltOfAnyLength, .minSaltLength = min};
            EXPECT_EQ(key.verifyPSS(any, Digest(32), signature.bytes()), length >= min) << length << ", at least " << min;
        }
    }
    for (const std::int32_t length : {longest + 1, 1000, INT32_MAX, -2, -3, INT32_MIN})
        EXPECT_TRUE(key.signPSS({.saltLength = length}, Digest(32)).isEmpty()) << length;
    ToldBytes none({});
    EXPECT_TRUE(key.signPSS({}, Digest(32), none).isEmpty());
}
