#include "crypto/mac/cmac.h"
#include "crypto/mac/hmac.h"
#include "crypto/mac/retail_mac.h"
#include "tests/crypto/base/test_bytes.h"

#include <gtest/gtest.h>

using namespace ccrypto;

TEST(RetailMAC, VectorsGiveTheirMACsInAnyPieces)
{
    for (const TestVector& vector : ReadVectors("retail_mac.txt")) {
        SCOPED_TRACE(vector.place());
        CCryptoRetailMAC mac;
        ASSERT_TRUE(mac.setKey(vector.bytes("Key")));
        const Bytes message = vector.bytes("Msg");
        const Bytes expected = vector.bytes("MAC");
        EXPECT_EQ(BytesOf(mac.macOf(message)), expected);
        for (std::size_t piece = 1; piece <= message.size(); ++piece) {
            for (std::size_t from = 0; from < message.size(); from += piece)
                mac.update(std::span(message).subspan(from, std::min(piece, message.size() - from)));
            EXPECT_TRUE(mac.verify(expected)) << piece;
        }
        EXPECT_FALSE(mac.verify(expected)) << "nothing of the message before is left";
    }
}

TEST(RetailMAC, NeedsAKeyOfItsLength)
{
    CCryptoRetailMAC mac;
    EXPECT_TRUE(mac.macOf(Bytes(8, 1)).isEmpty());
    EXPECT_FALSE(mac.verify(Bytes(8, 1)));
    ASSERT_TRUE(mac.setKey(Bytes(16, 1)));
    EXPECT_EQ(mac.macOf({}).length(), 8u);
    for (const std::size_t length : {0u, 8u, 15u, 17u, 24u}) {
        EXPECT_FALSE(mac.setKey(Bytes(length, 1))) << length;
        EXPECT_TRUE(mac.macOf(Bytes(8, 1)).isEmpty());
    }
}

TEST(RetailMAC, ForgetsTheMessageAndARefusedKey)
{
    // The key's first round key, six bits to a byte, the last ones first.
    const Bytes half = {0x13, 0x34, 0x57, 0x79, 0x9B, 0xBC, 0xDF, 0xF1};
    const std::string roundKey = "3201073f2f0b3006";
    CCryptoRetailMAC mac;
    ASSERT_TRUE(mac.setKey(Joined({half, half})));
    EXPECT_TRUE(Holds(mac, roundKey));
    const Bytes secret = {0xC0, 0xFF, 0xEE, 0x15, 0x5E};
    mac.update(secret);
    EXPECT_TRUE(Holds(mac, Hex(secret)));
    mac.reset();
    EXPECT_FALSE(Holds(mac, Hex(secret)));
    EXPECT_FALSE(mac.setKey(Bytes(15)));
    EXPECT_FALSE(Holds(mac, roundKey));
}

namespace {

/// `mac` has taken nothing and has a key.
template <typename Mac>
void ExpectTruncation(Mac& mac, std::size_t size)
{
    const Bytes message(50, 7);
    const Bytes whole = BytesOf(mac.macOf(message));
    ASSERT_EQ(whole.size(), size);
    const auto verifies = [&](const Bytes& given, std::size_t length) {
        mac.update(message);
        return mac.verify(given, length);
    };
    for (std::size_t length = 0; length <= size + 1; ++length) {
        SCOPED_TRACE(length);
        Bytes beginning(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(std::min(length, size)));
        EXPECT_EQ(verifies(beginning, length), length >= 4 && length <= size);
        if (length < 4 || length > size)
            continue;
        for (std::uint8_t& byte : beginning) {
            byte ^= 0x10;
            EXPECT_FALSE(verifies(beginning, length));
            byte ^= 0x10;
        }
        // The protocol gives the length, not the message.
        EXPECT_EQ(verifies(beginning, size), length == size);
        EXPECT_EQ(verifies(whole, length), length == size);
    }
    EXPECT_FALSE(verifies(Joined({whole, Bytes{0}}), size + 1)) << "longer than any";
}

} // namespace

TEST(TruncatedMAC, IsComparedOverTheLengthOfTheProtocol)
{
    const auto hmac = CCryptoHMAC::CreateByName("sha256");
    hmac->setKey(Bytes(20, 1));
    ExpectTruncation(*hmac, 32);
    const auto cmac = CCryptoCMAC::CreateByName("aes-128");
    ASSERT_TRUE(cmac->setKey(Bytes(16, 1)));
    ExpectTruncation(*cmac, 16);
    CCryptoRetailMAC retail;
    ASSERT_TRUE(retail.setKey(Bytes(16, 1)));
    ExpectTruncation(retail, 8);
}

TEST(HMAC, GivesNothingWithoutAKey)
{
    const auto mac = CCryptoHMAC::CreateByName("sha256");
    const Bytes message(10, 1);
    EXPECT_TRUE(mac->macOf(message).isEmpty());
    Bytes untouched(32, 9);
    EXPECT_FALSE(mac->final(untouched.data()));
    EXPECT_EQ(untouched, Bytes(32, 9));
    mac->update(message);
    EXPECT_FALSE(mac->verify(untouched));
    // An empty key is one that is set on purpose.
    mac->setKey({});
    EXPECT_EQ(mac->macOf({}).length(), 32u);
}
