#include "crypto/kdf/key_derivation.h"
#include "crypto/mac/hmac.h"
#include "tests/crypto/posix/openssl_command.h"

#include <gtest/gtest.h>

using namespace ccrypto;

// What the openssl command says of the same bytes.

namespace {

struct NameCase {
    algorithm::Id id;
    const char* name;
};

constexpr NameCase names[] = {{algorithm::sha1, "sha1"},     {algorithm::md5, "md5"},       {algorithm::sha256, "sha256"},
                              {algorithm::sha384, "sha384"}, {algorithm::sha512, "sha512"}, {algorithm::sha224, "sha224"}};
constexpr NameCase sha3Names[] = {{algorithm::sha3_224, "sha3-224"},
                                  {algorithm::sha3_256, "sha3-256"},
                                  {algorithm::sha3_384, "sha3-384"},
                                  {algorithm::sha3_512, "sha3-512"}};

TEST(HashesBesideOpenSSL, DigestsAndMACs)
{
    const TemporaryDirectory folder;
    const std::string file = folder / u8"message";
    std::mt19937 random(1);
    std::vector<NameCase> all(std::begin(names), std::end(names));
    all.insert(all.end(), std::begin(sha3Names), std::end(sha3Names));
    for (const NameCase& row : all) {
        SCOPED_TRACE(row.name);
        const Bytes message = RandomBytes(random, 10000 + random() % 1000);
        WriteBytes(file, message);
        EXPECT_EQ(HexOf(ICryptoHash::Create(row.id)->digestOf(message)),
                  DigitsOfOpenSSL(std::string("dgst -r -") + row.name + " <" + file + " | cut -d' ' -f1"));
        const Bytes key = RandomBytes(random, 1 + random() % 200);
        const auto mac = CCryptoHMAC::Create(row.id);
        mac->setKey(key);
        EXPECT_EQ(HexOf(mac->macOf(message)), DigitsOfOpenSSL(std::string("mac -digest ") + row.name +
                                                              " -macopt hexkey:" + Hex(key) + " -in " + file + " HMAC"));
    }
    const Bytes message = RandomBytes(random, 1000);
    WriteBytes(file, message);
    EXPECT_EQ(HexOf(ICryptoHash::CreateByName("md4")->digestOf(message)),
              DigitsOfOpenSSL("dgst -r -md4 -provider legacy -provider default <" + file + " | cut -d' ' -f1"));
}

TEST(HashesBesideOpenSSL, DerivedKeys)
{
    std::mt19937 random(2);
    std::vector<NameCase> all(std::begin(names), std::end(names));
    all.insert(all.end(), std::begin(sha3Names), std::end(sha3Names));
    for (const NameCase& row : all) {
        SCOPED_TRACE(row.name);
        const Bytes password = RandomBytes(random, 1 + random() % 200);
        const Bytes salt = RandomBytes(random, 1 + random() % 100);
        const auto iterations = static_cast<std::uint32_t>(1 + random() % 1000);
        const auto length = static_cast<std::uint32_t>(1 + random() % 300);
        const std::string kdf = "kdf -keylen " + std::to_string(length) + " -kdfopt digest:" + row.name;
        const std::string ofPassword = kdf + " -kdfopt hexpass:" + Hex(password) + " -kdfopt hexsalt:" + Hex(salt) +
                                       " -kdfopt iter:" + std::to_string(iterations);
        EXPECT_EQ(HexOf(CCryptoKeyDerivation::PBKDF2(row.id, password, salt, iterations, length)),
                  DigitsOfOpenSSL(ofPassword + " -kdfopt pkcs5:1 PBKDF2"));
        EXPECT_EQ(HexOf(CCryptoKeyDerivation::HKDF(row.id, salt, password, salt, length)),
                  DigitsOfOpenSSL(kdf + " -kdfopt hexkey:" + Hex(password) + " -kdfopt hexsalt:" + Hex(salt) +
                                  " -kdfopt hexinfo:" + Hex(salt) + " HKDF"));
        // PKCS#12 knows no SHA-3.
        const bool isSha3 = std::string_view(row.name).starts_with("sha3-");
        for (const int use : {1, 2, 3}) {
            const element derived = CCryptoKeyDerivation::PKCS12(row.id, static_cast<CCryptoKeyDerivation::PKCS12Use>(use),
                                                                 password, salt, iterations, length);
            EXPECT_EQ(HexOf(derived),
                      isSha3 ? "" : DigitsOfOpenSSL(ofPassword + " -kdfopt id:" + std::to_string(use) + " PKCS12KDF"));
        }
    }
}

} // namespace
