#include "crypto/hash/hash.h"
#include "crypto/rsa/rsa.h"
#include "tests/crypto/base/sequence_random.h"
#include "tests/crypto/rsa/rsa_vectors.h"

#include <gtest/gtest.h>

#include <set>

using namespace ccrypto;

namespace {

constexpr std::size_t size = 128;

/// A block that decrypts unchanged.
Bytes Encrypted(const Bytes& block)
{
    return BytesOf(AnyKey().publicOperation(block));
}

Bytes Decrypted(const element& ciphertext)
{
    return BytesOf(AnyKey().privateOperation(ciphertext.bytes()));
}

/// 00 02, padding, 00, message
Bytes Block(std::size_t padding, const Bytes& message)
{
    Bytes block = {0, 2};
    block.resize(2 + padding, 0x55);
    block.push_back(0);
    block.insert(block.end(), message.begin(), message.end());
    block.resize(size, 0x66);
    return block;
}

std::string DecryptPKCS1(const Bytes& ciphertext)
{
    element message;
    return AnyKey().decryptPKCS1(ciphertext, message) ? Hex(BytesOf(message)) : "refused";
}

} // namespace

TEST(RSAEncryption, IsThatOfTheVectors)
{
    for (const TestVector& vector : ReadVectors("rsa_encrypt.txt")) {
        SCOPED_TRACE(vector.place());
        const auto key = CCryptoRSA::FromPrivate(NumbersOf(vector));
        ASSERT_NE(key, nullptr);
        const Bytes message = vector.bytes("Message");
        const Bytes ciphertext = vector.bytes("Ciphertext");
        ToldBytes seed(vector.bytes("Seed"));
        element found;
        if (vector.text("Padding") == "PKCS1") {
            EXPECT_EQ(Hex(BytesOf(key->encryptPKCS1(message, seed))), Hex(ciphertext));
            EXPECT_TRUE(key->decryptPKCS1(ciphertext, found));
            EXPECT_EQ(Hex(BytesOf(found)), Hex(message));
            EXPECT_TRUE(key->unwrapPKCS1(ciphertext, static_cast<std::uint32_t>(message.size()), found));
        } else {
            const Bytes label = vector.bytes("Label");
            const CCryptoRSAPadding padding{.hash = ICryptoHash::CreateByName(vector.text("Hash"))->algorithmId(), .label = label};
            EXPECT_EQ(Hex(BytesOf(key->encryptOAEP(padding, message, seed))), Hex(ciphertext));
            EXPECT_TRUE(key->decryptOAEP(padding, ciphertext, found));
        }
        EXPECT_EQ(Hex(BytesOf(found)), Hex(message));
    }
}

TEST(RSAEncryption, GivesBackMessagesOfEveryLength)
{
    const CCryptoRSA& key = AnyKey();
    element found;
    for (std::size_t length = 0; length <= size - 11; ++length) {
        const Bytes message(length, static_cast<std::uint8_t>(length));
        ASSERT_TRUE(key.decryptPKCS1(key.encryptPKCS1(message).bytes(), found)) << length;
        ASSERT_EQ(BytesOf(found), message);
        if (length > size - 2 - 2 * 32)
            continue;
        ASSERT_TRUE(key.decryptOAEP({}, key.encryptOAEP({}, message).bytes(), found)) << length;
        ASSERT_EQ(BytesOf(found), message);
    }
    EXPECT_TRUE(key.encryptPKCS1(Bytes(size - 10)).isEmpty());
    EXPECT_TRUE(key.encryptOAEP({}, Bytes(size - 1 - 2 * 32)).isEmpty());
    EXPECT_TRUE(key.encryptOAEP({.hash = algorithm::sha512}, Bytes{}).isEmpty()); // 1024 bits have no room for two SHA-512
    EXPECT_TRUE(key.encryptOAEP({.hash = algorithm::md5Sha1}, Bytes{1}).isEmpty());
    ToldBytes none({});
    EXPECT_TRUE(key.encryptPKCS1(Bytes{1}, none).isEmpty());
    EXPECT_TRUE(key.encryptOAEP({}, Bytes{1}, none).isEmpty());
}

TEST(RSAEncryption, OfPKCS1PadsWithoutZeros)
{
    // Zeros among the random bytes are drawn anew, one by one.
    Bytes random(size - 3 - 4, 0x11);
    random[0] = random[7] = 0;
    random.insert(random.end(), {0, 0xAA, 0xBB});
    ToldBytes told(random);
    const Bytes block = Decrypted(AnyKey().encryptPKCS1(Bytes{1, 2, 3, 4}, told));
    EXPECT_EQ(block[2], 0xAA);
    EXPECT_EQ(block[9], 0xBB);
    EXPECT_EQ(std::count(block.begin() + 1, block.end(), 0), 1);
}

TEST(RSADecryption, OfPKCS1GivesASubstituteForAWrongPadding)
{
    const std::size_t length = 20;
    const Bytes message(length, 0x77);
    const Bytes right = Block(size - 3 - length, message);
    ASSERT_EQ(DecryptPKCS1(Encrypted(right)), Hex(message));

    std::vector<Bytes> wrong;
    for (const std::size_t at : {0u, 1u})
        for (const std::uint8_t value : Bytes{0x01, 0x03, 0x00, 0x42})
            if (right[at] != value) {
                wrong.push_back(right);
                wrong.back()[at] = value;
            }
    for (std::size_t padding = 0; padding < 8; ++padding)
        wrong.push_back(Block(padding, message)); // fewer than 8 bytes, each count of them
    Bytes endless(size, 0x55);
    endless[0] = 0;
    endless[1] = 2;
    wrong.push_back(endless);
    std::set<std::string> answers;
    for (const Bytes& block : wrong) {
        SCOPED_TRACE(Hex(block));
        const Bytes ciphertext = Encrypted(block);
        const std::string answer = DecryptPKCS1(ciphertext);
        ASSERT_NE(answer, "refused");
        EXPECT_EQ(answer, DecryptPKCS1(ciphertext)) << "the same each time";
        EXPECT_LE(answer.size() / 2, size - 11);
        EXPECT_EQ(Hex(block).find(answer.size() < 8 ? "none" : answer), std::string::npos) << "nothing of the block";
        answers.insert(answer);

        element unwrapped;
        ASSERT_TRUE(AnyKey().unwrapPKCS1(ciphertext, length, unwrapped));
        EXPECT_EQ(unwrapped.length(), length);
        EXPECT_NE(Hex(BytesOf(unwrapped)), Hex(message));
        element again;
        ASSERT_TRUE(AnyKey().unwrapPKCS1(ciphertext, length, again));
        EXPECT_EQ(unwrapped, again);
    }
    EXPECT_GT(answers.size(), wrong.size() - 3) << "another one for another ciphertext";

    // Eight bytes of padding are enough, and an empty message is one.
    EXPECT_EQ(DecryptPKCS1(Encrypted(Block(8, Bytes(size - 11, 0x78)))), Hex(Bytes(size - 11, 0x78)));
    EXPECT_EQ(DecryptPKCS1(Encrypted(Block(size - 3, {}))), "");
}

// From release to release the same: the derivation of draft-irtf-cfrg-rsa-guidance, computed once more in a scripting language.
TEST(RSADecryption, OfPKCS1DerivesTheSubstituteFromKeyAndCiphertext)
{
    const struct {
        std::uint8_t type;
        const char* substitute;
    } cases[] = {
        {1, "12ed1c9ceccacc644d1bf87d6793e9cb52993e47844101c0"},
        {2, "83e91b32f92be7e22ef82780a01d2e68e1f716bcae4375c8bb241cad48b4bdd0"
            "ed9cbddc2fd72ead2cea012e6fec95f8e389c932522e8cc13de8b1d9dd48d99d"},
    };
    for (const auto& c : cases) {
        Bytes block(size, 0x55); // without the zero that ends a padding
        block[0] = 0;
        block[1] = c.type;
        EXPECT_EQ(DecryptPKCS1(Encrypted(block)), c.substitute);
    }
}

TEST(RSADecryption, OfPKCS1UnwrapsTheLengthThatIsWanted)
{
    const Bytes message(24, 0x31);
    const element ciphertext = AnyKey().encryptPKCS1(message);
    for (std::uint32_t length = 0; length <= size - 11; ++length) {
        element found;
        ASSERT_TRUE(AnyKey().unwrapPKCS1(ciphertext.bytes(), length, found));
        ASSERT_EQ(found.length(), length);
        if (length != 0) {
            ASSERT_EQ(BytesOf(found) == Bytes(length, 0x31), length == 24) << length;
        }
    }
    element found;
    EXPECT_FALSE(AnyKey().unwrapPKCS1(ciphertext.bytes(), size - 10, found));
    EXPECT_FALSE(AnyKey().unwrapPKCS1(ciphertext.bytes(), 0xFFFFFFFF, found));
    EXPECT_TRUE(found.isEmpty());
}

TEST(RSADecryption, OfOAEPRefusesAnyByteChanged)
{
    const CCryptoRSAPadding padding{.hash = algorithm::sha1, .label = {}};
    const Bytes message = {1, 2, 3};
    const Bytes block = Decrypted(AnyKey().encryptOAEP(padding, message));
    element found;
    ASSERT_TRUE(AnyKey().decryptOAEP(padding, Encrypted(block), found));
    ASSERT_EQ(BytesOf(found), message);
    // A changed seed changes all the rest; of the masked data, the bytes of the message alone may change.
    for (std::size_t i = 0; i < block.size() - message.size(); ++i) {
        Bytes changed = block;
        changed[i] ^= 0x01;
        EXPECT_FALSE(AnyKey().decryptOAEP(padding, Encrypted(changed), found)) << i;
        EXPECT_TRUE(found.isEmpty());
    }
    const Bytes label = {'x'};
    EXPECT_FALSE(AnyKey().decryptOAEP({.hash = algorithm::sha1, .label = label}, Encrypted(block), found));
    EXPECT_FALSE(AnyKey().decryptOAEP({.hash = algorithm::sha256}, Encrypted(block), found));
    EXPECT_FALSE(AnyKey().decryptOAEP({.hash = algorithm::sha1, .maskHash = algorithm::sha256}, Encrypted(block), found));
    EXPECT_FALSE(AnyKey().decryptOAEP({.hash = algorithm::sha512}, Encrypted(block), found));
}

TEST(RSADecryption, RefusesCiphertextsOfTheWrongLengthOrTooLarge)
{
    const CCryptoRSA& key = AnyKey();
    const auto publicKey = key.publicKey();
    const Bytes right = BytesOf(key.encryptPKCS1(Bytes{1}));
    Bytes longer = right;
    longer.insert(longer.begin(), 0);
    const Bytes shorter(right.begin() + 1, right.end());
    element found(7u);
    for (const Bytes& wrong : {Bytes{}, longer, shorter, BytesOf(key.modulus()), Bytes(size, 0xFF)}) {
        EXPECT_FALSE(key.decryptPKCS1(wrong, found));
        EXPECT_TRUE(found.isEmpty());
        EXPECT_FALSE(key.unwrapPKCS1(wrong, 16, found));
        EXPECT_FALSE(key.decryptOAEP({}, wrong, found));
    }
    EXPECT_FALSE(publicKey->decryptPKCS1(right, found));
    EXPECT_FALSE(publicKey->unwrapPKCS1(right, 1, found));
    EXPECT_FALSE(publicKey->decryptOAEP({}, right, found));
}
