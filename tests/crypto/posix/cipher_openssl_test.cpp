#include "crypto/cipher.h"
#include "crypto/cmac.h"
#include "tests/core/temporary_directory.h"
#include "tests/crypto/test_bytes.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>

// What the openssl command makes of the same texts, and what it reads of ours. It knows Galois/counter mode not at the command
// line.

namespace {

void Write(const std::string& file, const Bytes& bytes)
{
    std::ofstream stream(file, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

Bytes Read(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(stream), {});
}

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
        Write(in, BytesOf(ours));
        ASSERT_EQ(std::system((command + " -d 2>&1").c_str()), 0);
        EXPECT_EQ(Read(out), text);

        Write(in, text);
        ASSERT_EQ(std::system((command + " -e 2>&1").c_str()), 0);
        EXPECT_EQ(Read(out), BytesOf(ours));
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
        Write(in, text);
        const auto cmac = CCryptoCMAC::CreateByName(one.name);
        ASSERT_TRUE(cmac->setKey(key));
        ASSERT_EQ(std::system((std::string("openssl mac -binary -cipher ") + one.name + "-cbc -macopt hexkey:" + Hex(key) +
                               " -in " + in + " -out " + out + " CMAC")
                                  .c_str()),
                  0);
        EXPECT_EQ(Hex(Read(out)), Hex(BytesOf(cmac->macOf(text))));
    }
}

} // namespace
