#include "crypto/cipher/gcm.h"
#include "tests/crypto/base/test_bytes.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

Bytes Field(const TestVector& vector, const char* name)
{
    return vector.has(name) ? vector.bytes(name) : Bytes();
}

/// Every variant this processor has.
template <typename Call>
void ForEachVariant(Call call)
{
    for (const Variant<gcm::Calls>& variant : gcm::Variants()) {
        SCOPED_TRACE(variant.name);
        if ((variant.needs & ~cpu::PresentFeatures()) == 0)
            call(variant);
        else
            std::printf("%s: not on this processor\n", variant.name);
    }
}

struct Message {
    Bytes key, iv, data;
    std::size_t tagLength = 16;
};

bool Seal(CCryptoGCM& gcm, const Message& message, const Bytes& text, element& out)
{
    return gcm.setTagLength(message.tagLength) && gcm.start(CipherDirection::encrypt, message.key, message.iv) &&
           gcm.addAuthenticated(message.data) && gcm.update(text, out) && gcm.final(out);
}

bool Open(CCryptoGCM& gcm, const Message& message, const Bytes& sealed, element& out)
{
    return gcm.setTagLength(message.tagLength) && gcm.start(CipherDirection::decrypt, message.key, message.iv) &&
           gcm.addAuthenticated(message.data) && gcm.update(sealed, out) && gcm.final(out);
}

/// In two passes.
bool OpenChecked(CCryptoGCM& gcm, const Message& message, const Bytes& sealed, element& out)
{
    return gcm.setTagLength(message.tagLength) && gcm.startCheck(message.key, message.iv) && gcm.addAuthenticated(message.data) &&
           gcm.update(sealed, out) && gcm.final(out) && out.isEmpty() && gcm.startChecked() && gcm.update(sealed, out) &&
           gcm.final(out);
}

class GcmVectors : public ::testing::TestWithParam<const char*> {};

TEST_P(GcmVectors, HoldForEveryVariant)
{
    ForEachVariant([](const Variant<gcm::Calls>& variant) {
        for (const TestVector& vector : ReadVectors(GetParam())) {
            SCOPED_TRACE(vector.place());
            const Bytes tag = vector.bytes("Tag");
            const Message message{vector.bytes("Key"), vector.bytes("IV"), Field(vector, "AAD"), tag.size()};
            CCryptoGCM gcm("aes", algorithm::none, message.key.size(), variant);
            const Bytes sealed = Joined({Field(vector, "Cipher text"), tag});
            const bool valid = !vector.has("Result") || vector.valid();
            const Bytes plain = Field(vector, "Plain");
            element out;
            EXPECT_EQ(Open(gcm, message, sealed, out), valid);
            EXPECT_EQ(Hex(BytesOf(out)), Hex(plain));
            element twice;
            EXPECT_EQ(OpenChecked(gcm, message, sealed, twice), valid);
            EXPECT_EQ(Hex(BytesOf(twice)), Hex(plain));
            if (valid) {
                element again;
                EXPECT_TRUE(Seal(gcm, message, plain, again));
                EXPECT_EQ(Hex(BytesOf(again)), Hex(sealed));
            }
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Files, GcmVectors, ::testing::Values("aes_gcm_encrypt.txt", "aes_gcm_decrypt.txt"));

TEST(Gcm, EveryVariantGivesWhatThePortableOneGives)
{
    std::mt19937 random(1);
    for (std::size_t length = 0; length < 1200; length = length < 66 ? length + 1 : length + 61) {
        SCOPED_TRACE(length);
        // A vector of 16 bytes makes a counter anywhere, and now and then one that wraps.
        const Message message{RandomBytes(random, 16 + 8 * (length % 3)), RandomBytes(random, length % 2 == 0 ? 12 : 16),
                              RandomBytes(random, length % 300)};
        const Bytes text = RandomBytes(random, length);
        Bytes expected;
        ForEachVariant([&](const Variant<gcm::Calls>& variant) {
            CCryptoGCM gcm("aes", algorithm::none, message.key.size(), variant);
            element sealed;
            ASSERT_TRUE(Seal(gcm, message, text, sealed));
            if (expected.empty())
                expected = BytesOf(sealed);
            ASSERT_EQ(BytesOf(sealed), expected);
            element back;
            ASSERT_TRUE(Open(gcm, message, expected, back));
            ASSERT_EQ(BytesOf(back), text);
        });
    }
}

TEST(Gcm, CountsOnBeyondThirtyTwoBits)
{
    std::mt19937 random(2);
    const Bytes key = RandomBytes(random, 16);
    Bytes expected;
    ForEachVariant([&](const Variant<gcm::Calls>& variant) {
        Wiped<aes::Key> cipherKey{};
        variant.calls.cipher->expandKey(cipherKey, key.data(), key.size());
        Wiped<gcm::HashKey> hashKey{};
        variant.calls.expandHashKey(hashKey, Bytes(16, 7).data());
        Bytes all;
        for (std::uint8_t last = 0xD0; last != 0; ++last) {
            Bytes text(48 * 16), hash(16), counter(16, 0xFF);
            counter[15] = last;
            variant.calls.encrypt(cipherKey, hashKey, hash.data(), counter.data(), text.data(), text.data(), 48);
            all = Joined({all, text, hash, counter});
        }
        if (expected.empty())
            expected = all;
        EXPECT_EQ(all, expected);
    });
}

TEST(Gcm, RefusesEveryChange)
{
    std::mt19937 random(3);
    const Message message{RandomBytes(random, 32), RandomBytes(random, 12), RandomBytes(random, 21)};
    CCryptoGCM gcm("aes-256-gcm", algorithm::aes256Gcm, 32);
    element element_;
    ASSERT_TRUE(Seal(gcm, message, RandomBytes(random, 300), element_));
    const Bytes sealed = BytesOf(element_);
    element out;
    const auto refused = [&](const Message& changed, const Bytes& text) {
        EXPECT_FALSE(Open(gcm, changed, text, out));
        EXPECT_TRUE(out.isEmpty());
        EXPECT_FALSE(OpenChecked(gcm, changed, text, out));
        EXPECT_TRUE(out.isEmpty());
    };
    for (std::size_t i = 0; i < sealed.size(); i += i + 20 < sealed.size() ? 13 : 1) {
        SCOPED_TRACE(i);
        Bytes changed = sealed;
        changed[i] ^= static_cast<std::uint8_t>(1u << i % 8);
        refused(message, changed);
    }
    for (const std::size_t length : {0u, 1u, 15u, 16u, 299u, 315u})
        refused(message, Bytes(sealed.begin(), sealed.begin() + static_cast<std::ptrdiff_t>(length)));
    refused(message, Joined({sealed, {0}}));
    Message other = message;
    other.data.push_back(0);
    refused(other, sealed);
    other = message;
    other.iv[11] ^= 1;
    refused(other, sealed);
    other = message;
    other.key[31] ^= 1;
    refused(other, sealed);
    other = message;
    other.tagLength = 12;
    refused(other, sealed);
}

TEST(Gcm, SaysWhenTheTextChangedBetweenTheTwoPasses)
{
    const Message message{Bytes(16, 1), Bytes(12, 2), Bytes(3, 3)};
    CCryptoGCM gcm("aes-128-gcm", algorithm::aes128Gcm, 16);
    element sealed;
    ASSERT_TRUE(Seal(gcm, message, Bytes(100, 4), sealed));
    ASSERT_TRUE(gcm.startCheck(message.key, message.iv) && gcm.addAuthenticated(message.data));
    element out;
    ASSERT_TRUE(gcm.update(sealed.bytes(), out) && gcm.final(out));
    ASSERT_TRUE(gcm.startChecked());
    EXPECT_FALSE(gcm.startChecked());
    Bytes changed = BytesOf(sealed);
    changed[50] ^= 1;
    EXPECT_TRUE(gcm.update(changed, out));
    EXPECT_FALSE(gcm.final(out));
    EXPECT_FALSE(gcm.startChecked()) << "a check that failed allows nothing";
}

TEST(Gcm, ForgetsTheFirstCounterOfATextThatEnded)
{
    // Test case 5 of the mode's original publication: the first counter is a hash of the 8-byte vector, and depends on the key.
    const Bytes key = {0xFE, 0xFF, 0xE9, 0x92, 0x86, 0x65, 0x73, 0x1C, 0x6D, 0x6A, 0x8F, 0x94, 0x67, 0x30, 0x83, 0x08};
    const Bytes iv = {0xCA, 0xFE, 0xBA, 0xBE, 0xFA, 0xCE, 0xDB, 0xAD};
    const std::string firstCounter = "c43a83c4c4badec4354ca984db252f7d";
    CCryptoGCM gcm("aes-128-gcm", algorithm::aes128Gcm, 16);
    for (const bool ends : {true, false}) {
        element out;
        ASSERT_TRUE(gcm.start(CipherDirection::encrypt, key, iv));
        EXPECT_TRUE(Holds(gcm, firstCounter));
        ASSERT_TRUE(gcm.update(iv, out));
        EXPECT_EQ(ends ? gcm.final(out) : gcm.addAuthenticated(iv), ends);
        EXPECT_FALSE(Holds(gcm, firstCounter));
    }
}

TEST(Gcm, RefusesWhatDoesNotFit)
{
    const Bytes key(16, 1);
    const Bytes iv(12, 2);
    CCryptoGCM gcm("aes-128-gcm", algorithm::aes128Gcm, 16);
    for (const std::size_t length : {0u, 3u, 5u, 7u, 9u, 11u, 17u})
        EXPECT_FALSE(gcm.setTagLength(length)) << length;
    EXPECT_FALSE(gcm.start(CipherDirection::encrypt, key, Bytes()));
    EXPECT_FALSE(gcm.start(CipherDirection::encrypt, Bytes(24), iv));
    EXPECT_FALSE(gcm.addAuthenticated(key)) << "nothing started";
    EXPECT_FALSE(gcm.startChecked()) << "nothing checked";
    element out;
    ASSERT_TRUE(gcm.start(CipherDirection::encrypt, key, iv));
    ASSERT_TRUE(gcm.update(key, out));
    EXPECT_FALSE(gcm.addAuthenticated(key)) << "too late";
    EXPECT_FALSE(gcm.update(key, out)) << "the text ended with the failure";

    // One byte more than a vector is good for is refused before any of it is looked at.
    constexpr std::uint64_t longest = (std::uint64_t{1} << 36) - 32;
    std::size_t written = 0;
    std::uint8_t room[16];
    ASSERT_TRUE(gcm.start(CipherDirection::encrypt, key, iv));
    EXPECT_FALSE(gcm.update(std::span(key.data(), longest + 1), room, written));
    ASSERT_TRUE(gcm.start(CipherDirection::encrypt, key, iv) && gcm.update(key, room, written));
    EXPECT_FALSE(gcm.update(std::span(key.data(), longest - 15), room, written));
    ASSERT_TRUE(gcm.start(CipherDirection::encrypt, key, iv) && gcm.addAuthenticated(key));
    EXPECT_FALSE(gcm.addAuthenticated(std::span(key.data(), (std::size_t{1} << 61) - 16)));
    ASSERT_TRUE(gcm.startCheck(key, iv));
    EXPECT_FALSE(gcm.update(std::span(key.data(), longest + 17), room, written));

    const Bytes much(std::size_t{1} << 20);
    ASSERT_TRUE(gcm.start(CipherDirection::decrypt, key, iv));
    for (std::size_t kept = 0; kept < CCryptoGCM::maxKept; kept += much.size())
        ASSERT_TRUE(gcm.update(much, out));
    EXPECT_EQ(gcm.updateSize(much.size()), 0u);
    EXPECT_FALSE(gcm.update(much, out)) << "more than is kept";
    EXPECT_EQ(out.length(), 16u);
}

} // namespace
