#include "core/base/algorithm.h"
#include "crypto/cipher/aes.h"
#include "crypto/cipher/block_modes.h"
#include "crypto/cipher/cipher.h"
#include "crypto/cipher/des.h"
#include "tests/crypto/base/spy_cipher.h"
#include "tests/crypto/base/test_bytes.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

/// The text in pieces of these lengths, again and again.
bool InPieces(ICryptoCipher& cipher, const Bytes& text, std::span<const std::size_t> pieces, element& out)
{
    std::size_t done = 0;
    for (std::size_t i = 0; done < text.size(); ++i) {
        const std::size_t length = std::min(pieces[i % pieces.size()], text.size() - done);
        if (!cipher.update(std::span(text).subspan(done, length), out))
            return false;
        done += length;
    }
    return cipher.final(out);
}

class CipherVectors : public ::testing::TestWithParam<const char*> {};

TEST_P(CipherVectors, HoldInBothDirections)
{
    for (const TestVector& vector : ReadVectors(GetParam())) {
        SCOPED_TRACE(vector.place());
        const auto cipher = ICryptoCipher::CreateByName(vector.text("Cipher"));
        ASSERT_NE(cipher, nullptr);
        cipher->setPadding(false);
        if (vector.has("Effective bits")) {
            EXPECT_TRUE(cipher->setEffectiveKeyBits(static_cast<std::uint32_t>(vector.number("Effective bits"))));
        }
        const Bytes key = vector.bytes("Key");
        const Bytes iv = vector.has("IV") ? vector.bytes("IV") : Bytes();
        element out;
        EXPECT_TRUE(cipher->encrypt(key, iv, vector.bytes("Plain"), out));
        EXPECT_EQ(Hex(BytesOf(out)), Hex(vector.bytes("Cipher text")));
        EXPECT_TRUE(cipher->decrypt(key, iv, vector.bytes("Cipher text"), out));
        EXPECT_EQ(Hex(BytesOf(out)), Hex(vector.bytes("Plain")));
    }
}

INSTANTIATE_TEST_SUITE_P(Files, CipherVectors,
                         ::testing::Values("aes_ecb.txt", "aes_cbc.txt", "aes_ofb.txt", "aes_cfb.txt", "aes_ctr.txt",
                                           "triple_des.txt", "rc2.txt"));

TEST(Rc4, GivesThePublishedStreams)
{
    for (const TestVector& vector : ReadVectors("rc4.txt")) {
        SCOPED_TRACE(vector.place());
        const auto cipher = ICryptoCipher::Create(algorithm::rc4);
        const Bytes expected = vector.bytes("Stream");
        const std::size_t offset = vector.number("Offset");
        element stream;
        ASSERT_TRUE(cipher->encrypt(vector.bytes("Key"), Bytes(), Bytes(offset + expected.size()), stream));
        EXPECT_EQ(Hex(BytesOf(stream)).substr(2 * offset), Hex(expected));
    }
}

TEST(Des, ManyBlocksAtOnceGiveWhatSingleOnesGive)
{
    std::mt19937 random(4);
    for (const Variant<des::Calls>& variant : des::Variants()) {
        SCOPED_TRACE(variant.name);
        if ((variant.needs & ~cpu::PresentFeatures()) != 0) {
            std::printf("%s: not on this processor\n", variant.name);
            continue;
        }
        const std::size_t blocks = 2 * variant.calls.parallel + 5;
        for (const std::size_t keyLength : {8u, 16u, 24u}) {
            CCryptoDES cipher(variant);
            ASSERT_TRUE(cipher.setKey(RandomBytes(random, keyLength)));
            const Bytes text = RandomBytes(random, 8 * blocks);
            Bytes single(text.size());
            for (std::size_t i = 0; i < text.size(); i += 8)
                cipher.encrypt(single.data() + i, text.data() + i, 1);
            Bytes many = text;
            cipher.encrypt(many.data(), many.data(), blocks);
            EXPECT_EQ(many, single);
            cipher.decrypt(many.data(), many.data(), blocks);
            EXPECT_EQ(many, text);
        }
    }
}

TEST(Des, WithoutAKeyLeavesTheBytes)
{
    CCryptoDES cipher;
    const Bytes text(24, 7);
    Bytes bytes = text;
    Bytes chain(8);
    const auto expectNothing = [&] {
        cipher.encrypt(bytes.data(), bytes.data(), 3);
        cipher.decrypt(bytes.data(), bytes.data(), 3);
        cipher.encryptCbc(bytes.data(), bytes.data(), 3, chain.data());
        EXPECT_EQ(bytes, text);
    };
    expectNothing();
    ASSERT_TRUE(cipher.setKey(Bytes(24, 3)));
    cipher.encrypt(bytes.data(), text.data(), 3);
    EXPECT_NE(bytes, text);
    bytes = text;
    cipher.clearKey();
    expectNothing();
    cipher.decrypt(bytes.data(), bytes.data(), 1);
    EXPECT_EQ(bytes, text);
}

TEST(Rc2, HasEffectiveKeyBits)
{
    const auto cipher = ICryptoCipher::Create(algorithm::rc2Cbc);
    EXPECT_FALSE(cipher->setEffectiveKeyBits(1025));
    EXPECT_TRUE(cipher->setEffectiveKeyBits(40));
    element first, second;
    ASSERT_TRUE(cipher->encrypt(Bytes(16, 1), Bytes(8), Bytes(20), first));
    EXPECT_TRUE(cipher->setEffectiveKeyBits(0));
    ASSERT_TRUE(cipher->encrypt(Bytes(16, 1), Bytes(8), Bytes(20), second));
    EXPECT_NE(BytesOf(first), BytesOf(second));
    EXPECT_FALSE(ICryptoCipher::Create(algorithm::aes128Cbc)->setEffectiveKeyBits(64));
}

/// Every cipher by name.
class CipherNamed : public ::testing::TestWithParam<const char*> {};

TEST_P(CipherNamed, GivesTheSameInAnySplit)
{
    std::mt19937 random(1);
    const auto cipher = ICryptoCipher::CreateByName(GetParam());
    ASSERT_NE(cipher, nullptr);
    const Bytes key = RandomBytes(random, cipher->keySize());
    const Bytes iv = RandomBytes(random, cipher->ivSize());
    constexpr std::size_t splits[][3] = {{1, 1, 1}, {7, 16, 1}, {15, 33, 300}, {16, 16, 16}, {8, 0, 129}, {513, 1, 40}};
    for (std::size_t length = 0; length < 1200; length = length < 70 ? length + 1 : length + 97) {
        SCOPED_TRACE(length);
        const bool padding = length % 3 != 0;
        cipher->setPadding(padding);
        const Bytes text = RandomBytes(random, padding ? length : length / cipher->blockSize() * cipher->blockSize());
        element whole;
        ASSERT_TRUE(cipher->encrypt(key, iv, text, whole));
        const std::size_t split = length % std::size(splits);
        element pieces;
        ASSERT_TRUE(cipher->start(CipherDirection::encrypt, key, iv));
        ASSERT_TRUE(InPieces(*cipher, text, splits[split], pieces));
        EXPECT_EQ(BytesOf(pieces), BytesOf(whole));
        element back;
        ASSERT_TRUE(cipher->start(CipherDirection::decrypt, key, iv));
        ASSERT_TRUE(InPieces(*cipher, BytesOf(whole), splits[(split + 1) % std::size(splits)], back));
        EXPECT_EQ(BytesOf(back), text);
    }
}

TEST_P(CipherNamed, RefusesWhatDoesNotFit)
{
    std::mt19937 random(2);
    const auto cipher = ICryptoCipher::CreateByName(GetParam());
    ASSERT_NE(cipher, nullptr);
    const Bytes key = RandomBytes(random, cipher->keySize());
    const Bytes iv = RandomBytes(random, cipher->ivSize());
    element out;
    EXPECT_FALSE(cipher->update(key, out)) << "nothing started";
    EXPECT_FALSE(cipher->final(out)) << "nothing started";
    EXPECT_FALSE(cipher->start(CipherDirection::encrypt, Bytes(), iv));
    EXPECT_FALSE(cipher->start(CipherDirection::encrypt, Bytes(300), iv));
    EXPECT_FALSE(cipher->update(key, out)) << "the start failed";
    if (cipher->algorithmId() < algorithm::aes128Gcm) {
        EXPECT_FALSE(cipher->start(CipherDirection::encrypt, key, Bytes(iv.size() + 1)));
    }
    EXPECT_TRUE(cipher->start(CipherDirection::encrypt, key, iv));
    // Of this length alone, not a byte, is looked at.
    EXPECT_FALSE(cipher->update(std::span(key.data(), std::size_t{1} << 32), out)) << "too long for an element";
    EXPECT_FALSE(cipher->update(key, out)) << "the text ended with the failure";
    EXPECT_TRUE(cipher->start(CipherDirection::encrypt, key, iv));
    EXPECT_TRUE(cipher->final(out));
    EXPECT_FALSE(cipher->final(out)) << "ended";
}

INSTANTIATE_TEST_SUITE_P(Names, CipherNamed, ::testing::ValuesIn(ICryptoCipher::Names().begin(), ICryptoCipher::Names().end()));

TEST(Cipher, TakesKeysOfItsOwnLengthsAlone)
{
    // Lengths that the block cipher has, but not under this name.
    const struct {
        const char* name;
        std::size_t length;
    } cases[] = {{"aes-128-cbc", 24}, {"aes-128-ctr", 32}, {"aes-192-cbc", 16}, {"aes-256-ecb", 16},
                 {"des-cbc", 16},     {"des-ede-cbc", 24}, {"des-ede3-cbc", 8}, {"rc2-cbc", 129}};
    for (const auto& row : cases) {
        const auto cipher = ICryptoCipher::CreateByName(row.name);
        EXPECT_FALSE(cipher->start(CipherDirection::encrypt, Bytes(row.length), Bytes(cipher->ivSize()))) << row.name;
    }
}

TEST(Cipher, TakesTheKeyFromTheBlockCipherAtTheEnd)
{
    constexpr CipherDescription description = {"spy", algorithm::none, 16, 16, 16};
    bool hasKey = false;
    WholeBlockMode mode(description, std::make_unique<SpyCipher>(hasKey), true);
    const Bytes key(16);
    element out;
    ASSERT_TRUE(mode.start(CipherDirection::encrypt, key, key) && mode.update(key, out));
    EXPECT_TRUE(hasKey);
    ASSERT_TRUE(mode.final(out));
    EXPECT_FALSE(hasKey) << "the text ended";
    ASSERT_TRUE(mode.start(CipherDirection::encrypt, key, key));
    EXPECT_FALSE(mode.start(CipherDirection::encrypt, key, Bytes()));
    EXPECT_FALSE(hasKey) << "the next text was refused";
}

TEST(Cipher, IsFoundByIdAndByNameInAnyCase)
{
    for (const std::uint32_t id : {203u, 204u, 205u, 0u, 102u, 315u, 299u})
        EXPECT_EQ(ICryptoCipher::Create(static_cast<algorithm::Id>(id)), nullptr) << id;
    for (std::uint32_t id = algorithm::aes128Ecb; id <= algorithm::aes256Cfb; ++id) {
        const auto cipher = ICryptoCipher::Create(static_cast<algorithm::Id>(id));
        ASSERT_NE(cipher, nullptr) << id;
        EXPECT_EQ(cipher->algorithmId(), id);
    }
    ASSERT_NE(ICryptoCipher::CreateByName("AES-192-Cbc"), nullptr);
    EXPECT_EQ(ICryptoCipher::CreateByName("AES-192-Cbc")->algorithmId(), algorithm::aes192Cbc);
    for (const char* name : {"", "aes-128", "aes-128-cbc ", "aes-128-xts", "rc5-cbc"})
        EXPECT_EQ(ICryptoCipher::CreateByName(name), nullptr) << name;
}

TEST(Cipher, TakesTheWholeBlockAsPaddingOrRefusesIt)
{
    const auto cipher = ICryptoCipher::Create(algorithm::aes128Cbc);
    const Bytes key(16, 1);
    const Bytes iv(16, 2);
    struct Case {
        const char* lastBlock;
        int length; ///< of the text, or -1 when it is refused
    };
    constexpr Case cases[] = {
        {"000102030405060708090a0b0c0d0e01", 15}, {"10101010101010101010101010101010", 0},
        {"00010203040506070809050505050505", 11}, {"000102030405060708090a0b0c0d0e00", -1},
        {"11111111111111111111111111111111", -1}, {"0001020304050607080910101010100f", -1},
        {"00101010101010101010101010101010", -1}, {"000102030405060708090a0b03040303", -1},
        {"000102030405060708090a0b0c0d0eff", -1}, {"000102030405060708090a0b0c0d0e81", -1},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.lastBlock);
        Bytes block;
        for (const char* digit = one.lastBlock; *digit != 0; digit += 2)
            block.push_back(static_cast<std::uint8_t>(std::stoi(std::string(digit, 2), nullptr, 16)));
        element encrypted;
        cipher->setPadding(false);
        ASSERT_TRUE(cipher->encrypt(key, iv, block, encrypted));
        cipher->setPadding(true);
        element plain(ElementType::bytes);
        plain.append("left from before");
        EXPECT_EQ(cipher->decrypt(key, iv, encrypted.bytes(), plain), one.length >= 0);
        block.resize(static_cast<std::size_t>(std::max(one.length, 0)));
        EXPECT_EQ(BytesOf(plain), block);
    }
    element plain;
    for (const std::size_t length : {0u, 1u, 15u, 17u, 31u})
        EXPECT_FALSE(cipher->decrypt(key, iv, Bytes(length), plain)) << length;
    cipher->setPadding(false);
    for (const std::size_t length : {1u, 15u, 17u})
        EXPECT_FALSE(cipher->encrypt(key, iv, Bytes(length), plain)) << length;
}

TEST(Aes, EveryVariantGivesWhatThePortableOneGives)
{
    using Text = void (*)(const CCryptoAES&, Bytes& text, Bytes& chain);
    constexpr Text operations[] = {
        [](const CCryptoAES& aes, Bytes& text, Bytes&) { aes.encrypt(text.data(), text.data(), text.size() / 16); },
        [](const CCryptoAES& aes, Bytes& text, Bytes&) { aes.decrypt(text.data(), text.data(), text.size() / 16); },
        [](const CCryptoAES& aes, Bytes& text, Bytes& chain) {
            aes.encryptCbc(text.data(), text.data(), text.size() / 16, chain.data());
        },
        [](const CCryptoAES& aes, Bytes& text, Bytes& chain) {
            aes.decryptCbc(text.data(), text.data(), text.size() / 16, chain.data());
        },
        [](const CCryptoAES& aes, Bytes& text, Bytes& chain) {
            aes.applyCounter(text.data(), text.data(), text.size() / 16, chain.data());
        },
    };
    std::mt19937 random(3);
    std::size_t compared = 0;
    for (const Variant<aes::Calls>& variant : aes::Variants().subspan(1)) {
        if ((variant.needs & ~cpu::PresentFeatures()) != 0) {
            std::printf("%s: not on this processor\n", variant.name);
            continue;
        }
        for (const std::size_t keyLength : {16u, 24u, 32u}) {
            const Bytes key = RandomBytes(random, keyLength);
            CCryptoAES portable(aes::Variants().front());
            CCryptoAES other(variant);
            ASSERT_TRUE(portable.setKey(key) && other.setKey(key));
            for (std::size_t blocks = 0; blocks <= 70; ++blocks) {
                const Bytes text = RandomBytes(random, 16 * blocks);
                // A counter that wraps on the way.
                Bytes chain(16, 0xFF);
                chain[15] = static_cast<std::uint8_t>(0x100 - blocks / 2 - 1);
                for (const Text& operation : operations) {
                    SCOPED_TRACE(std::string(variant.name) + " " + std::to_string(&operation - operations) + " of " +
                                 std::to_string(blocks));
                    Bytes left = text, leftChain = chain, right = text, rightChain = chain;
                    operation(portable, left, leftChain);
                    operation(other, right, rightChain);
                    ASSERT_EQ(left, right);
                    ASSERT_EQ(leftChain, rightChain);
                    ++compared;
                }
            }
        }
    }
    std::printf("%zu comparisons\n", compared);
}

TEST(Aes, WithoutAKeyReadsNothingAstray)
{
    for (const Variant<aes::Calls>& variant : aes::Variants()) {
        if ((variant.needs & ~cpu::PresentFeatures()) != 0)
            continue;
        SCOPED_TRACE(variant.name);
        CCryptoAES aes(variant);
        Bytes text(16 * 40), chain(16), counter(16);
        EXPECT_TRUE(aes.setKey(Bytes(32, 1)));
        EXPECT_FALSE(aes.setKey(Bytes(31, 1)));
        aes.encrypt(text.data(), text.data(), 40);
        aes.decrypt(text.data(), text.data(), 40);
        aes.encryptCbc(text.data(), text.data(), 40, chain.data());
        aes.decryptCbc(text.data(), text.data(), 40, chain.data());
        aes.applyCounter(text.data(), text.data(), 40, counter.data());
        EXPECT_EQ(Hex(counter), "00000000000000000000000000000028") << "blocks are counted all the same";
    }
}

} // namespace
