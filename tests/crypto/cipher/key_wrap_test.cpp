#include "crypto/cipher/aes.h"
#include "crypto/cipher/key_wrap.h"
#include "crypto/cipher/padding.h"
#include "tests/crypto/base/test_bytes.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

struct WrapForm {
    element (*wrap)(CCryptoKeyWrap::Bytes, CCryptoKeyWrap::Bytes);
    element (*unwrap)(CCryptoKeyWrap::Bytes, CCryptoKeyWrap::Bytes);
};

constexpr WrapForm plainForm = {CCryptoKeyWrap::Wrap, CCryptoKeyWrap::Unwrap};
constexpr WrapForm paddedForm = {CCryptoKeyWrap::WrapPadded, CCryptoKeyWrap::UnwrapPadded};

} // namespace

TEST(AesKeyWrap, AgreesWithTheVectors)
{
    for (const TestVector& vector : ReadVectors("key_wrap.txt")) {
        SCOPED_TRACE(vector.place());
        const WrapForm& form = vector.number("Padded") != 0 ? paddedForm : plainForm;
        const Bytes key = vector.bytes("Key");
        const Bytes wrapped = vector.bytes("Wrapped");
        if (vector.valid()) {
            EXPECT_EQ(HexOf(form.wrap(key, vector.bytes("Secret"))), Hex(wrapped));
            EXPECT_EQ(HexOf(form.unwrap(key, wrapped)), vector.text("Secret"));
        } else {
            EXPECT_TRUE(form.unwrap(key, wrapped).isEmpty());
        }
    }
}

TEST(AesKeyWrap, NoticesEveryChangedBit)
{
    const Bytes key(16, 1);
    for (const auto& [form, length] : {std::pair{plainForm, 24u}, {paddedForm, 7u}, {paddedForm, 21u}}) {
        const Bytes secret(length, 2);
        Bytes wrapped = BytesOf(form.wrap(key, secret));
        EXPECT_EQ(BytesOf(form.unwrap(key, wrapped)), secret);
        for (std::size_t bit = 0; bit < 8 * wrapped.size(); ++bit) {
            wrapped[bit / 8] ^= static_cast<std::uint8_t>(1u << bit % 8);
            EXPECT_TRUE(form.unwrap(key, wrapped).isEmpty()) << bit;
            wrapped[bit / 8] ^= static_cast<std::uint8_t>(1u << bit % 8);
        }
        EXPECT_TRUE(form.unwrap(Bytes(16, 3), wrapped).isEmpty());
        EXPECT_TRUE((length % 8 == 0 ? paddedForm : plainForm).unwrap(key, wrapped).isEmpty()) << "the other form";
    }
}

/// RFC 3394, 2.2.1, with any check value in the first 8 bytes.
void WrapWithAnyCheck(const CCryptoAES& cipher, Bytes& all)
{
    for (std::size_t step = 0; step < 6 * (all.size() / 8 - 1); ++step) {
        const std::size_t at = 8 + step % (all.size() / 8 - 1) * 8;
        Bytes block(all.begin(), all.begin() + 8);
        block.insert(block.end(), all.begin() + static_cast<std::ptrdiff_t>(at), all.begin() + static_cast<std::ptrdiff_t>(at) + 8);
        cipher.encrypt(block.data(), block.data(), 1);
        for (std::size_t i = 0; i < 8; ++i)
            block[i] ^= static_cast<std::uint8_t>(std::uint64_t{step + 1} >> (56 - 8 * i));
        std::copy_n(block.begin(), 8, all.begin());
        std::copy_n(block.begin() + 8, 8, all.begin() + static_cast<std::ptrdiff_t>(at));
    }
}

// Blocks with check values and paddings that no wrapping makes.
TEST(AesKeyWrap, RefusesWrongPaddings)
{
    const Bytes key(16, 1);
    CCryptoAES cipher;
    ASSERT_TRUE(cipher.setKey(key));
    struct Case {
        const char* name;
        const char* block; ///< check value, length, half a block
        bool valid;
    };
    const Case cases[] = {
        {"eight bytes", "a65959a60000000801020304050607ff", true},  {"one byte", "a65959a600000001ff00000000000000", true},
        {"none", "a65959a6000000000000000000000000", false},        {"nine", "a65959a6000000090102030405060708", false},
        {"a last byte", "a65959a600000007010203040506ff01", false}, {"a first byte", "a65959a6000000010101000000000000", false},
        {"too many", "a65959a6ffffffff0102030405060708", false},    {"another check", "a65959a7000000080102030405060708", false},
    };
    for (const Case& row : cases) {
        Bytes block(16);
        for (std::size_t i = 0; i < block.size(); ++i)
            block[i] = static_cast<std::uint8_t>(std::stoi(std::string(row.block + 2 * i, 2), nullptr, 16));
        cipher.encrypt(block.data(), block.data(), 1);
        EXPECT_EQ(!CCryptoKeyWrap::UnwrapPadded(key, block).isEmpty(), row.valid) << row.name;
    }
    for (const std::uint8_t length : Bytes{7, 8, 9, 15, 16, 17}) {
        Bytes all = {0xA6, 0x59, 0x59, 0xA6, 0, 0, 0, length};
        all.resize(24, 0);
        WrapWithAnyCheck(cipher, all);
        EXPECT_EQ(CCryptoKeyWrap::UnwrapPadded(key, all).length(), length > 8 && length <= 16 ? length : 0u) << int{length};
    }
}

TEST(AesKeyWrap, RefusesWrongLengths)
{
    const Bytes key(16, 1);
    for (const std::size_t length : {0u, 1u, 8u, 15u, 17u, 65544u})
        EXPECT_TRUE(CCryptoKeyWrap::Wrap(key, Bytes(length, 1)).isEmpty()) << length;
    for (const std::size_t length : {0u, 65537u})
        EXPECT_TRUE(CCryptoKeyWrap::WrapPadded(key, Bytes(length, 1)).isEmpty()) << length;
    for (const std::size_t length : {0u, 8u, 16u, 23u, 25u, 65552u})
        EXPECT_TRUE(CCryptoKeyWrap::Unwrap(key, Bytes(length, 1)).isEmpty()) << length;
    for (const std::size_t length : {0u, 8u, 15u, 17u, 65552u})
        EXPECT_TRUE(CCryptoKeyWrap::UnwrapPadded(key, Bytes(length, 1)).isEmpty()) << length;
    for (const std::size_t length : {0u, 8u, 17u, 33u}) {
        EXPECT_TRUE(CCryptoKeyWrap::Wrap(Bytes(length, 1), Bytes(16, 1)).isEmpty()) << length;
        EXPECT_TRUE(CCryptoKeyWrap::WrapPadded(Bytes(length, 1), Bytes(16, 1)).isEmpty()) << length;
    }
    // Longer than is wrapped here, but sound.
    CCryptoAES cipher;
    ASSERT_TRUE(cipher.setKey(key));
    Bytes all(CCryptoKeyWrap::maxSecret + 16);
    std::fill_n(all.begin(), 8, std::uint8_t{0xA6});
    WrapWithAnyCheck(cipher, all);
    EXPECT_TRUE(CCryptoKeyWrap::Unwrap(key, all).isEmpty());

    const Bytes longest(CCryptoKeyWrap::maxSecret, 5);
    for (const WrapForm& form : {plainForm, paddedForm})
        EXPECT_TRUE(BytesOf(form.unwrap(key, form.wrap(key, longest).bytes())) == longest);
}

struct Iso9797Case {
    const char* name;
    Bytes padded;
    bool good;
    std::size_t length;
};

TEST(Iso9797Padding, EndsWithAMarkerAndZeros)
{
    for (std::size_t used = 0; used < 8; ++used) {
        Bytes block(8, 0xFF);
        ccrypto::iso9797::Pad(block, used);
        Bytes expected(used, 0xFF);
        expected.push_back(0x80);
        expected.resize(8, 0);
        EXPECT_EQ(block, expected);
    }
    const Iso9797Case cases[] = {
        {"a marker at the end", {1, 2, 3, 4, 5, 6, 7, 0x80}, true, 7},
        {"a block of padding", {0x80, 0, 0, 0, 0, 0, 0, 0}, true, 0},
        {"markers in the text", {0x80, 0x80, 0, 0x80, 0x80, 0, 0, 0}, true, 4},
        {"no marker", {0, 0, 0, 0, 0, 0, 0, 0}, false, 0},
        {"another byte before the zeros", {0x80, 1, 0, 0, 0, 0, 0, 0}, false, 0},
        {"the marker in the block before", {0, 0, 0, 0, 0, 0, 0, 0x80, 0, 0, 0, 0, 0, 0, 0, 0}, false, 0},
        {"the second block", {1, 1, 1, 1, 1, 1, 1, 1, 1, 0x80, 0, 0, 0, 0, 0, 0}, true, 9},
        {"nothing", {}, false, 0},
        {"no whole block", {0x80, 0, 0}, false, 0},
    };
    for (const Iso9797Case& row : cases) {
        constant_time::Mask good = constant_time::Mask::True();
        EXPECT_EQ(ccrypto::iso9797::TextLength(row.padded, 8, good), row.length) << row.name;
        EXPECT_EQ(constant_time::Declassify(good), row.good) << row.name;
    }
}
