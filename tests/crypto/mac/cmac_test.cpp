#include "crypto/mac/cmac.h"
#include "tests/crypto/base/spy_cipher.h"
#include "tests/crypto/base/test_bytes.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

TEST(Cmac, GivesThePublishedCodesInAnySplit)
{
    for (const TestVector& vector : ReadVectors("cmac.txt")) {
        SCOPED_TRACE(vector.place());
        const auto cmac = CCryptoCMAC::CreateByName(vector.text("Cipher"));
        ASSERT_NE(cmac, nullptr);
        ASSERT_TRUE(cmac->setKey(vector.bytes("Key")));
        const Bytes message = vector.bytes("Message");
        const Bytes tag = vector.bytes("Tag");
        EXPECT_EQ(Hex(BytesOf(cmac->macOf(message))), Hex(tag));
        for (std::size_t split = 0; split <= message.size(); ++split) {
            cmac->update(std::span(message).first(split));
            cmac->update(std::span(message).subspan(split));
            EXPECT_TRUE(cmac->verify(tag)) << split;
        }
        for (std::size_t i = 0; i < tag.size(); ++i) {
            Bytes wrong = tag;
            wrong[i] ^= 0x40;
            cmac->update(message);
            EXPECT_FALSE(cmac->verify(wrong)) << i;
        }
        cmac->update(message);
        EXPECT_FALSE(cmac->verify(std::span(tag).first(tag.size() - 1)));
    }
}

TEST(Cmac, ForgetsTheKeyBeforeOneThatIsRefused)
{
    // RFC 4493, 4: the key, and K1 and K2 that are made of it.
    const Bytes key = {0x2B, 0x7E, 0x15, 0x16, 0x28, 0xAE, 0xD2, 0xA6, 0xAB, 0xF7, 0x15, 0x88, 0x09, 0xCF, 0x4F, 0x3C};
    const auto cmac = CCryptoCMAC::CreateByName("aes-128");
    ASSERT_TRUE(cmac->setKey(key));
    for (const char* const subkey : {"fbeed618357133667c85e08f7236a8de", "f7ddac306ae266ccf90bc11ee46d513b"})
        EXPECT_TRUE(Holds(*cmac, subkey)) << subkey;
    EXPECT_FALSE(cmac->setKey(Bytes(17)));
    for (const char* const subkey : {"fbeed618357133667c85e08f7236a8de", "f7ddac306ae266ccf90bc11ee46d513b"})
        EXPECT_FALSE(Holds(*cmac, subkey)) << subkey;
}

TEST(Cmac, ForgetsTheMessageAndTheKeyOfTheCipher)
{
    bool hasKey = false;
    CCryptoCMAC cmac("spy", std::make_unique<SpyCipher>(hasKey), 16, 16);
    ASSERT_TRUE(cmac.setKey(Bytes(16)));
    const Bytes secret = {0xC0, 0xFF, 0xEE, 0x15, 0x5E};
    cmac.update(secret);
    EXPECT_TRUE(Holds(cmac, Hex(secret)));
    cmac.reset();
    EXPECT_FALSE(Holds(cmac, Hex(secret)));
    EXPECT_TRUE(hasKey);
    EXPECT_FALSE(cmac.setKey(Bytes(17)));
    EXPECT_FALSE(hasKey);
}

TEST(Cmac, GivesNothingWithoutAKey)
{
    const auto cmac = CCryptoCMAC::Create(algorithm::aes192Cbc);
    ASSERT_NE(cmac, nullptr);
    EXPECT_TRUE(cmac->final().isEmpty());
    EXPECT_TRUE(cmac->setKey(Bytes(24)));
    for (const std::size_t length : {0u, 16u, 23u, 25u, 32u}) {
        EXPECT_FALSE(cmac->setKey(Bytes(length))) << length;
        EXPECT_TRUE(cmac->final().isEmpty()) << length;
        EXPECT_FALSE(cmac->verify(Bytes())) << length;
    }
    for (const std::uint32_t id : {0u, 200u, 201u, 299u, 312u})
        EXPECT_EQ(CCryptoCMAC::Create(static_cast<algorithm::Id>(id)), nullptr) << id;
    for (const char* name : {"", "cmac-", "aes", "rc4", "aes-128-cbc"})
        EXPECT_EQ(CCryptoCMAC::CreateByName(name), nullptr) << name;
}

} // namespace
