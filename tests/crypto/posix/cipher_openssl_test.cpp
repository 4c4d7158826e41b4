#include "crypto/cipher/cipher.h"
#include "crypto/mac/cmac.h"
#include "tests/crypto/posix/openssl_command.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

using namespace ccrypto;

// What the openssl command makes of the same texts, and what it reads of ours. It knows Galois/counter mode not at the command
// line.

namespace {

struct CipherCase {
    const char* name;
    std::size_t keySize;
};

constexpr CipherCase cases[] = {
    {"aes-128-ecb", 16}, {"aes-128-cbc", 16}, {"aes-128-ofb", 16}, {"aes-128-cfb", 16},  {"aes-128-ctr", 16},  {"aes-192-cbc", 24},
    {"aes-192-ctr", 24}, {"aes-256-ecb", 32}, {"aes-256-cbc", 32}, {"aes-256-ofb", 32},  {"aes-256-cfb", 32},  {"aes-256-ctr", 32},
    {"des-ecb", 8},      {"des-cbc", 8},      {"des-ede-cbc", 16}, {"des-ede3-cbc", 24}, {"des-ede3-ofb", 24}, {"des-ede3-cfb", 24},
    {"rc2-cbc", 16},     {"rc2-ofb", 16},     {"rc4", 16},
};

TEST(CiphersBesideOpenSSL, ReadEachOther)
{
    const TemporaryDirectory folder;
    const std::string in = folder / u8"in";
    const std::string out = folder / u8"out";
    std::mt19937 random(1);
    for (const CipherCase& one : cases) {
        SCOPED_TRACE(one.name);
        const auto cipher = ICryptoCipher::CreateByName(one.name);
        ASSERT_NE(cipher, nullptr);
        const Bytes key = RandomBytes(random, one.keySize);
        const Bytes iv = RandomBytes(random, cipher->ivSize());
        const Bytes text = RandomBytes(random, 4000 + random() % 100);
        std::string command = std::string("openssl enc -provider legacy -provider default -") + one.name + " -K " + Hex(key) +
                              " -in " + in + " -out " + out;
        if (!iv.empty())
            command += " -iv " + Hex(iv);

        element ours;
        ASSERT_TRUE(cipher->encrypt(key, iv, text, ours));
        WriteBytes(in, BytesOf(ours));
        ASSERT_EQ(std::system((command + " -d 2>&1").c_str()), 0);
        EXPECT_EQ(ReadBytes(out), text);

        WriteBytes(in, text);
        ASSERT_EQ(std::system((command + " -e 2>&1").c_str()), 0);
        EXPECT_EQ(ReadBytes(out), BytesOf(ours));
    }
}

TEST(CiphersBesideOpenSSL, AuthenticateAlike)
{
    const TemporaryDirectory folder;
    const std::string in = folder / u8"in";
    const std::string out = folder / u8"out";
    std::mt19937 random(2);
    for (const CipherCase& one : {CipherCase{"aes-128", 16}, {"aes-192", 24}, {"aes-256", 32}, {"des-ede3", 24}}) {
        SCOPED_TRACE(one.name);
        const Bytes key = RandomBytes(random, one.keySize);
        const Bytes text = RandomBytes(random, 300 + random() % 100);
        WriteBytes(in, text);
        const auto cmac = CCryptoCMAC::CreateByName(one.name);
        ASSERT_TRUE(cmac->setKey(key));
        ASSERT_EQ(std::system((std::string("openssl mac -binary -cipher ") + one.name + "-cbc -macopt hexkey:" + Hex(key) +
                               " -in " + in + " -out " + out + " CMAC")
                                  .c_str()),
                  0);
        EXPECT_EQ(Hex(ReadBytes(out)), Hex(BytesOf(cmac->macOf(text))));
    }
}

} // namespace
