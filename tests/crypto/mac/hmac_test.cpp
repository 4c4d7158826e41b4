#include "crypto/mac/hmac.h"
#include "tests/crypto/base/vector_file.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

TEST(HMAC, VectorsGiveTheirMACs)
{
    for (const TestVector& vector : ReadVectors("hmac.txt")) {
        SCOPED_TRACE(vector.place());
        const auto mac = CCryptoHMAC::CreateByName("HMAC-" + vector.text("Hash"));
        ASSERT_NE(mac, nullptr);
        const Bytes message = vector.bytes("Msg");
        mac->setKey(vector.bytes("Key"));
        const element found = mac->macOf(message);
        EXPECT_EQ(Hex({found.data(), found.data() + found.length()}), vector.text("MAC"));

        // Again from the same key, in two pieces.
        mac->update(message.data(), message.size() / 2);
        mac->update(message.data() + message.size() / 2, message.size() - message.size() / 2);
        EXPECT_TRUE(mac->verify(vector.bytes("MAC")));
    }
}

TEST(HMAC, ADifferentMACIsRefused)
{
    const Bytes message = {1, 2, 3};
    for (const char* name : {"md4", "md5", "sha1", "sha224", "sha256", "sha384", "sha512", "md5sha1", "sha3-224", "sha3-512"}) {
        SCOPED_TRACE(name);
        const auto mac = CCryptoHMAC::CreateByName(name);
        mac->setKey(message);
        const element right = mac->macOf(message);
        ASSERT_EQ(right.length(), mac->macSize());
        for (std::uint32_t bit = 0; bit < 8 * right.length(); ++bit) {
            element wrong = right;
            wrong.data()[bit / 8] ^= static_cast<std::uint8_t>(1u << bit % 8);
            mac->update(message);
            EXPECT_FALSE(mac->verify(wrong.bytes())) << bit;
        }
        for (std::uint32_t length = 0; length < right.length(); ++length) {
            mac->update(message);
            EXPECT_FALSE(mac->verify(right.bytes().first(length))) << length;
        }
        mac->update(message);
        EXPECT_TRUE(mac->verify(right.bytes()));
        // Nothing of the message before is left.
        EXPECT_FALSE(mac->verify(right.bytes()));
    }
}

TEST(HMAC, KeysAroundABlockAreFilledOrHashed)
{
    const auto mac = CCryptoHMAC::Create(algorithm::hmacSha256);
    const auto hash = ICryptoHash::Create(algorithm::sha256);
    const Bytes message(10, 'm');
    for (const std::size_t length : {0u, 1u, 63u, 64u}) {
        Bytes key(length, 'k');
        mac->setKey(key);
        const element found = mac->macOf(message);
        key.push_back(0);
        mac->setKey(key.size() <= 64 ? key : Bytes(64, 'k'));
        EXPECT_EQ(mac->macOf(message), found) << length;
    }
    const Bytes key(65, 'k');
    mac->setKey(key);
    const element found = mac->macOf(message);
    mac->setKey(hash->digestOf(key).bytes());
    EXPECT_EQ(mac->macOf(message), found);
}

TEST(HMAC, IsMadeByIdAndByName)
{
    using namespace algorithm;
    constexpr std::pair<Id, Id> ids[] = {{hmacSha1, sha1},         {hmacSha224, sha224},
                                         {hmacSha256, sha256},     {hmacSha384, sha384},
                                         {hmacSha512, sha512},     {hmacSha3_224, sha3_224},
                                         {hmacSha3_256, sha3_256}, {hmacSha3_384, sha3_384},
                                         {hmacSha3_512, sha3_512}, {md5, md5},
                                         {md5Sha1, md5Sha1}};
    for (const auto& [id, hashId] : ids)
        EXPECT_EQ(CCryptoHMAC::Create(id)->hashId(), hashId) << id;
    for (const std::uint32_t id : {0u, 107u, 114u, 115u, 599u, 605u, 614u})
        EXPECT_EQ(CCryptoHMAC::Create(static_cast<algorithm::Id>(id)), nullptr) << id;
    EXPECT_STREQ(CCryptoHMAC::CreateByName("Hmac-Sha1")->hashName(), "SHA-1");
    for (const char* name : {"", "hmac-", "hmac", "hmac-hmac-sha1", "aes-cmac", "hmac-shake128"})
        EXPECT_EQ(CCryptoHMAC::CreateByName(name), nullptr) << name;
}

} // namespace
