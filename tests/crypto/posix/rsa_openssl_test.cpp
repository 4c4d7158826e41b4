#include "crypto/hash/hash.h"
#include "tests/crypto/posix/openssl_command.h"
#include "tests/crypto/rsa/rsa_vectors.h"

#include <gtest/gtest.h>

using namespace ccrypto;

// What the openssl command makes of our signatures and ciphertexts, and we of its. It takes and gives keys as PKCS #1 in DER.

namespace {

void AppendHeader(Bytes& der, std::uint8_t tag, std::size_t length)
{
    der.push_back(tag);
    if (length >= 256)
        der.insert(der.end(), {0x82, static_cast<std::uint8_t>(length >> 8)});
    else if (length >= 128)
        der.push_back(0x81);
    der.push_back(static_cast<std::uint8_t>(length));
}

void AppendNumber(Bytes& der, const element& number)
{
    const Bytes bytes = BytesOf(number);
    const bool padded = bytes.empty() || (bytes[0] & 0x80) != 0;
    AppendHeader(der, 2, bytes.size() + (padded ? 1 : 0));
    if (padded)
        der.push_back(0);
    der.insert(der.end(), bytes.begin(), bytes.end());
}

/// RSAPrivateKey (RFC 8017, A.1.2).
Bytes DERof(const CCryptoRSANumbers& numbers)
{
    Bytes content = {2, 1, 0};
    for (const element* number : {&numbers.modulus, &numbers.publicExponent, &numbers.privateExponent, &numbers.prime1,
                                  &numbers.prime2, &numbers.exponent1, &numbers.exponent2, &numbers.coefficient})
        AppendNumber(content, *number);
    Bytes der;
    AppendHeader(der, 0x30, content.size());
    der.insert(der.end(), content.begin(), content.end());
    return der;
}

/// The numbers of an RSAPrivateKey of openssl's.
CCryptoRSANumbers NumbersOfDER(const Bytes& der)
{
    std::size_t at = 0;
    const auto length = [&] {
        std::size_t count = der.at(at++);
        if (count < 128)
            return count;
        std::size_t value = 0;
        for (count &= 127; count > 0; --count)
            value = value << 8 | der.at(at++);
        return value;
    };
    ++at;
    length();
    at += 3; // the version
    CCryptoRSANumbers numbers;
    for (element* number : {&numbers.modulus, &numbers.publicExponent, &numbers.privateExponent, &numbers.prime1, &numbers.prime2,
                            &numbers.exponent1, &numbers.exponent2, &numbers.coefficient}) {
        ++at;
        const std::size_t count = length();
        *number =
            ElementOf(Bytes(der.begin() + static_cast<std::ptrdiff_t>(at), der.begin() + static_cast<std::ptrdiff_t>(at + count)));
        at += count;
    }
    return numbers;
}

class RSABesideOpenSSL : public ::testing::Test {
protected:
    std::string path(const std::string& name) const { return (folder_.path() / name).string(); }
    void write(const std::string& name, const Bytes& bytes) const { WriteBytes(path(name), bytes); }
    Bytes read(const std::string& name) const { return ReadBytes(path(name)); }
    /// `openssl ARGUMENTS` in the folder. \return whether it succeeded.
    bool openssl(const std::string& arguments) const
    {
        return std::system(("cd " + folder_.path().string() + " && openssl " + arguments + " >/dev/null 2>&1").c_str()) == 0;
    }
    Bytes message() const { return Bytes(100, 0x41); }

    /// A key of openssl's, in key.der.
    std::unique_ptr<CCryptoRSA> foreignKey(int bits) const
    {
        if (!openssl("genrsa -traditional -out key.pem " + std::to_string(bits)) ||
            !openssl("rsa -traditional -in key.pem -outform DER -out key.der"))
            return nullptr;
        return CCryptoRSA::FromPrivate(NumbersOfDER(read("key.der")));
    }

private:
    TemporaryDirectory folder_;
};

const struct {
    algorithm::Id id;
    const char* name;
} hashes[] = {{algorithm::sha1, "sha1"},         {algorithm::sha256, "sha256"},     {algorithm::sha384, "sha384"},
              {algorithm::sha512, "sha512"},     {algorithm::sha224, "sha224"},     {algorithm::sha3_224, "sha3-224"},
              {algorithm::sha3_256, "sha3-256"}, {algorithm::sha3_384, "sha3-384"}, {algorithm::sha3_512, "sha3-512"}};

TEST_F(RSABesideOpenSSL, TakesItsKeysAndGivesItOurs)
{
    const auto key = foreignKey(1536);
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(DERof(key->numbers()), read("key.der"));
    for (const std::uint32_t bits : {1024u, 1538u, 2048u}) {
        const auto own = CCryptoRSA::Generate(bits);
        ASSERT_NE(own, nullptr);
        write("own.der", DERof(own->numbers()));
        EXPECT_TRUE(openssl("rsa -inform DER -in own.der -check -noout")) << bits;
    }
}

TEST_F(RSABesideOpenSSL, AgreesOnSignatures)
{
    const auto key = foreignKey(2048);
    ASSERT_NE(key, nullptr);
    write("message", message());
    ASSERT_TRUE(openssl("rsa -in key.pem -pubout -out public.pem"));
    for (const auto& hash : hashes) {
        SCOPED_TRACE(hash.name);
        const Bytes digest = BytesOf(ICryptoHash::Create(hash.id)->digestOf(message()));
        ASSERT_TRUE(openssl(std::string("dgst -") + hash.name + " -sign key.pem -out signature message"));
        EXPECT_EQ(Hex(read("signature")), Hex(BytesOf(key->signPKCS1(hash.id, digest))));

        const std::string pss = std::string("dgst -") + hash.name + " -sigopt rsa_padding_mode:pss ";
        ASSERT_TRUE(openssl(pss + "-sigopt rsa_pss_saltlen:-1 -sign key.pem -out signature message"));
        EXPECT_TRUE(key->verifyPSS({.hash = hash.id}, digest, read("signature")));
        ASSERT_TRUE(openssl(pss + "-sigopt rsa_mgf1_md:sha1 -sigopt rsa_pss_saltlen:max -sign key.pem -out signature message"));
        EXPECT_TRUE(key->verifyPSS({.hash = hash.id, .maskHash = algorithm::sha1, .saltLength = CCryptoRSAPadding::saltOfAnyLength},
                                   digest, read("signature")));
        write("signature", BytesOf(key->signPSS({.hash = hash.id}, digest)));
        EXPECT_TRUE(openssl(pss + "-sigopt rsa_pss_saltlen:-1 -verify public.pem -signature signature message"));
        write("signature", BytesOf(key->signPSS({.hash = hash.id, .maskHash = algorithm::sha256, .saltLength = 0}, digest)));
        EXPECT_TRUE(
            openssl(pss + "-sigopt rsa_mgf1_md:sha256 -sigopt rsa_pss_saltlen:0 -verify public.pem -signature signature message"));
    }
}

TEST_F(RSABesideOpenSSL, AgreesOnCiphertexts)
{
    const auto key = foreignKey(2048);
    ASSERT_NE(key, nullptr);
    write("message", message());
    const Bytes label = {0xAB, 0xCD};
    element found;
    const auto agree = [&](const std::string& options, const element& ours, const auto& decrypt) {
        SCOPED_TRACE(options);
        ASSERT_TRUE(openssl("pkeyutl -encrypt -inkey key.pem -in message -out theirs " + options));
        EXPECT_TRUE(decrypt(read("theirs")));
        EXPECT_EQ(Hex(BytesOf(found)), Hex(message()));
        write("ours", BytesOf(ours));
        ASSERT_TRUE(openssl("pkeyutl -decrypt -inkey key.pem -in ours -out opened " + options));
        EXPECT_EQ(Hex(read("opened")), Hex(message()));
    };
    agree("-pkeyopt rsa_padding_mode:pkcs1", key->encryptPKCS1(message()),
          [&](const Bytes& ciphertext) { return key->decryptPKCS1(ciphertext, found); });
    for (const auto& hash : hashes) {
        const CCryptoRSAPadding padding{.hash = hash.id, .maskHash = algorithm::sha256, .label = label};
        agree(std::string("-pkeyopt rsa_padding_mode:oaep -pkeyopt rsa_mgf1_md:sha256 -pkeyopt rsa_oaep_label:abcd ") +
                  "-pkeyopt rsa_oaep_md:" + hash.name,
              key->encryptOAEP(padding, message()),
              [&](const Bytes& ciphertext) { return key->decryptOAEP(padding, ciphertext, found); });
    }
}

} // namespace
