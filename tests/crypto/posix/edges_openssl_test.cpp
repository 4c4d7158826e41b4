#include "crypto/cipher/cipher.h"
#include "crypto/cipher/key_wrap.h"
#include "crypto/kdf/key_derivation.h"
#include "crypto/mac/cmac.h"
#include "crypto/mac/hmac.h"
#include "tests/crypto/posix/openssl_command.h"

#include <gtest/gtest.h>

using namespace ccrypto;

// Inputs at the edges of what is allowed, as collections of attacks on other libraries have them. The openssl command says of each
// the same as this library: the same bytes, or a refusal by both.

namespace {

/// What a command of openssl makes of bytes in a file; nothing when it fails.
class OpenSSLFilter {
public:
    Bytes operator()(const std::string& command, const Bytes& in) const
    {
        WriteBytes(in_, in);
        return RunOpenSSL(command + " -in " + in_ + " -out " + out_) ? ReadBytes(out_) : Bytes();
    }

private:
    TemporaryDirectory folder_;
    std::string in_ = folder_ / u8"in";
    std::string out_ = folder_ / u8"out";
};

struct ChangeOfWrapped {
    const char* name;
    Bytes (*make)(Bytes bytes);
};

constexpr ChangeOfWrapped changesOfWrapped[] = {
    {"none", [](Bytes bytes) { return bytes; }},
    {"the first bit",
     [](Bytes bytes) {
         bytes.front() ^= 0x80;
         return bytes;
     }},
    {"the last bit",
     [](Bytes bytes) {
         bytes.back() ^= 1;
         return bytes;
     }},
    {"a byte less", [](Bytes bytes) { return Bytes(bytes.begin(), bytes.end() - 1); }},
    {"half a block less", [](Bytes bytes) { return Bytes(bytes.begin(), bytes.end() - 8); }},
    {"half a block more",
     [](Bytes bytes) {
         return Joined({bytes, Bytes(8)});
     }},
    {"half blocks exchanged",
     [](Bytes bytes) {
         std::swap_ranges(bytes.begin(), bytes.begin() + 8, bytes.end() - 8);
         return bytes;
     }},
    {"zeros", [](Bytes bytes) { return Bytes(bytes.size()); }},
};

TEST(EdgesBesideOpenSSL, OfWrappedKeys)
{
    const OpenSSLFilter filter;
    const struct {
        const char* cipher;
        const char* iv;
        std::size_t keyLength;
        element (*wrap)(CCryptoKeyWrap::Bytes, CCryptoKeyWrap::Bytes);
        element (*unwrap)(CCryptoKeyWrap::Bytes, CCryptoKeyWrap::Bytes);
        std::vector<std::size_t> lengths;
    } forms[] = {
        {"id-aes128-wrap", "A6A6A6A6A6A6A6A6", 16, CCryptoKeyWrap::Wrap, CCryptoKeyWrap::Unwrap, {8, 16, 20, 24, 64}},
        {"id-aes256-wrap", "A6A6A6A6A6A6A6A6", 32, CCryptoKeyWrap::Wrap, CCryptoKeyWrap::Unwrap, {32}},
        {"id-aes128-wrap-pad", "A65959A6", 16, CCryptoKeyWrap::WrapPadded, CCryptoKeyWrap::UnwrapPadded, {1, 8, 9, 16, 31}},
        {"id-aes192-wrap-pad", "A65959A6", 24, CCryptoKeyWrap::WrapPadded, CCryptoKeyWrap::UnwrapPadded, {20}},
    };
    std::mt19937 random(1);
    for (const auto& form : forms) {
        const Bytes key = RandomBytes(random, form.keyLength);
        const std::string command = std::string("enc -") + form.cipher + " -K " + Hex(key) + " -iv " + form.iv;
        for (const std::size_t length : form.lengths) {
            SCOPED_TRACE(std::string(form.cipher) + " of " + std::to_string(length));
            const Bytes secret = RandomBytes(random, length);
            const Bytes wrapped = BytesOf(form.wrap(key, secret));
            EXPECT_EQ(Hex(wrapped), Hex(filter(command, secret)));
            if (wrapped.empty())
                continue;
            for (const ChangeOfWrapped& change : changesOfWrapped) {
                const Bytes changed = change.make(wrapped);
                EXPECT_EQ(HexOf(form.unwrap(key, changed)), Hex(filter(command + " -d", changed))) << change.name;
            }
        }
    }
}

TEST(EdgesBesideOpenSSL, OfPaddedTexts)
{
    const OpenSSLFilter filter;
    const Bytes key(16, 1);
    const Bytes iv(16, 2);
    const std::string command = "enc -d -aes-128-cbc -K " + Hex(key) + " -iv " + Hex(iv);
    const struct {
        const char* name;
        Bytes end; ///< of the last block
    } endings[] = {
        {"one byte", {1}},
        {"two bytes", {2, 2}},
        {"fifteen bytes", Bytes(15, 15)},
        {"a whole block", Bytes(16, 16)},
        {"zero", {0}},
        {"more than a block", Bytes(16, 17)},
        {"the most", {0xFF}},
        {"another first byte", {1, 2, 3, 3}},
        {"another byte between", {4, 4, 3, 4}},
        {"too few", {3, 3}},
    };
    const auto cipher = ICryptoCipher::Create(algorithm::aes128Cbc);
    for (const auto& row : endings) {
        SCOPED_TRACE(row.name);
        Bytes text(32, 0x5A);
        std::ranges::copy(row.end, text.end() - static_cast<std::ptrdiff_t>(row.end.size()));
        element sealed;
        cipher->setPadding(false);
        ASSERT_TRUE(cipher->encrypt(key, iv, text, sealed));
        cipher->setPadding(true);
        element opened;
        const bool isRight = cipher->decrypt(key, iv, sealed.bytes(), opened);
        EXPECT_EQ(isRight, !opened.isEmpty());
        EXPECT_EQ(HexOf(opened), Hex(filter(command, BytesOf(sealed))));
    }
}

TEST(EdgesBesideOpenSSL, OfDerivedKeys)
{
    const struct {
        const char* name;
        std::size_t password;
        std::size_t salt;
        std::uint32_t iterations;
        std::uint32_t length;
    } ofPasswords[] = {
        {"nothing but the iteration", 0, 0, 1, 1},
        {"no password", 0, 8, 2, 32},
        {"no salt", 8, 0, 2, 32},
        {"a password of a block", 64, 8, 2, 33},
        {"a password over a block", 65, 8, 2, 64},
        {"zeros", 1, 1, 3, 65},
    };
    for (const auto& row : ofPasswords) {
        const Bytes password(row.password);
        const Bytes salt(row.salt);
        EXPECT_EQ(HexOf(CCryptoKeyDerivation::PBKDF2(algorithm::sha256, password, salt, row.iterations, row.length)),
                  DigitsOfOpenSSL("kdf -keylen " + std::to_string(row.length) +
                                  " -kdfopt digest:sha256 -kdfopt hexpass:" + Hex(password) + " -kdfopt hexsalt:" + Hex(salt) +
                                  " -kdfopt iter:" + std::to_string(row.iterations) + " -kdfopt pkcs5:1 PBKDF2"))
            << row.name;
    }
    const struct {
        const char* name;
        std::size_t secret;
        std::size_t salt;
        std::size_t info;
        std::uint32_t length;
    } ofSecrets[] = {
        {"no salt, no info", 1, 0, 0, 1},   {"a salt of a block", 32, 64, 1, 32},    {"a salt over a block", 32, 65, 1, 33},
        {"a long info", 32, 8, 500, 31},    {"the longest key", 32, 8, 0, 255 * 32}, {"a byte more", 32, 8, 0, 255 * 32 + 1},
        {"a digest's zeros", 5, 32, 0, 64},
    };
    for (const auto& row : ofSecrets) {
        const Bytes secret(row.secret, 0x0B);
        const Bytes salt(row.salt);
        const Bytes info(row.info, 0xF0);
        const std::string ofInfo = info.empty() ? "" : " -kdfopt hexinfo:" + Hex(info);
        EXPECT_EQ(HexOf(CCryptoKeyDerivation::HKDF(algorithm::sha256, salt, secret, info, row.length)),
                  DigitsOfOpenSSL("kdf -keylen " + std::to_string(row.length) + " -kdfopt digest:sha256 -kdfopt hexkey:" +
                                  Hex(secret) + " -kdfopt hexsalt:" + Hex(salt) + ofInfo + " HKDF"))
            << row.name;
    }
}

TEST(EdgesBesideOpenSSL, OfMACs)
{
    const TemporaryDirectory folder;
    const std::string file = folder / u8"message";
    std::mt19937 random(2);
    for (const std::size_t length : {0u, 1u, 15u, 16u, 17u, 63u, 64u, 65u}) {
        SCOPED_TRACE(length);
        const Bytes message = RandomBytes(random, length);
        WriteBytes(file, message);
        for (const std::size_t keyLength : {1u, 63u, 64u, 65u}) {
            const Bytes key = RandomBytes(random, keyLength);
            const auto hmac = CCryptoHMAC::Create(algorithm::sha256);
            hmac->setKey(key);
            EXPECT_EQ(HexOf(hmac->macOf(message)),
                      DigitsOfOpenSSL("mac -digest sha256 -macopt hexkey:" + Hex(key) + " -in " + file + " HMAC"))
                << keyLength;
        }
        const Bytes key = RandomBytes(random, 32);
        const auto cmac = CCryptoCMAC::CreateByName("aes-256");
        ASSERT_TRUE(cmac->setKey(key));
        EXPECT_EQ(HexOf(cmac->macOf(message)),
                  DigitsOfOpenSSL("mac -cipher aes-256-cbc -macopt hexkey:" + Hex(key) + " -in " + file + " CMAC"));
    }
}

} // namespace
