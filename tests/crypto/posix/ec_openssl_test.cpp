#include "crypto/ec/ec.h"
#include "crypto/ec/eddsa.h"
#include "tests/crypto/base/sequence_random.h"
#include "tests/crypto/posix/openssl_command.h"

#include <gtest/gtest.h>

using namespace ccrypto;

// Keys, signatures and agreements of the openssl command and ours, each given to the other.

namespace {

/// Writes the key to `file` in DER and its public half beside it in `file`.public.
bool WriteWords(const std::string& file, const std::string& text)
{
    std::ofstream(file + ".words") << text;
    return RunOpenSSL("asn1parse -noout -genconf " + file + ".words -out " + file) &&
           RunOpenSSL("pkey -inform DER -in " + file + " -pubout -outform DER -out " + file + ".public");
}

std::string OctetString(const element& bytes)
{
    return "FORMAT:HEX,OCTETSTRING:" + HexOf(bytes);
}

/// A key of RFC 8410.
bool WriteKey(const std::string& file, const std::string& name, const element& secret)
{
    return WriteWords(file, "asn1=SEQUENCE:key\n[key]\nversion=INTEGER:0\nalgorithm=SEQUENCE:algorithm\nscalar=OCTWRAP," +
                                OctetString(secret) + "\n[algorithm]\noid=OID:" + name + "\n");
}

bool WriteKey(const std::string& file, const CCryptoEC& key)
{
    const std::string name = key.curve().name;
    if (!key.curve().signs)
        return WriteKey(file, name, key.privateScalar());
    return WriteWords(file, "asn1=SEQUENCE:key\n[key]\nversion=INTEGER:1\nscalar=" + OctetString(key.privateScalar()) +
                                "\ncurve=EXPLICIT:0,OID:" + name +
                                "\npoint=EXPLICIT:1,FORMAT:HEX,BITSTRING:" + HexOf(key.publicPoint()) + "\n");
}

class EddsaBesideOpenSSL : public ::testing::TestWithParam<algorithm::Id> {};

class CurveBesideOpenSSL : public ::testing::TestWithParam<CurveFacts> {};

} // namespace

TEST_P(CurveBesideOpenSSL, AgreesAndSigns)
{
    SequenceRandom random(GetParam().id);
    const TemporaryDirectory folder;
    const std::string ourFile = folder / u8"ours";
    const std::string peerFile = folder / u8"theirs";
    const auto ours = CCryptoEC::Generate(GetParam().id, random);
    const auto peer = CCryptoEC::Generate(GetParam().id, random);
    ASSERT_TRUE(ours != nullptr && peer != nullptr);
    ASSERT_TRUE(WriteKey(ourFile, *ours));
    ASSERT_TRUE(WriteKey(peerFile, *peer));

    // The public half, which openssl computed of the private one, ends with the point.
    const Bytes publicKey = ReadBytes(ourFile + ".public");
    const std::string point = HexOf(ours->publicPoint());
    ASSERT_GT(publicKey.size() * 2, point.size());
    EXPECT_EQ(Hex(publicKey).substr(publicKey.size() * 2 - point.size()), point);

    const std::string secret = folder / u8"secret";
    ASSERT_TRUE(RunOpenSSL("pkeyutl -derive -keyform DER -inkey " + ourFile + " -peerform DER -peerkey " + peerFile +
                           ".public -out " + secret));
    EXPECT_EQ(HexOf(ours->agree(peer->publicPoint().bytes())), Hex(ReadBytes(secret)));
    if (!GetParam().signs)
        return;

    for (const std::size_t length : {20, 32, 64}) {
        SCOPED_TRACE(length);
        Bytes digest(length);
        ASSERT_TRUE(random.generate(digest));
        const std::string digestFile = folder / u8"digest";
        const std::string signatureFile = folder / u8"signature";
        WriteBytes(digestFile, digest);
        ASSERT_TRUE(RunOpenSSL("pkeyutl -sign -keyform DER -inkey " + ourFile + " -in " + digestFile + " -out " + signatureFile));
        EXPECT_TRUE(ours->verifyHash(digest, ReadBytes(signatureFile), SignatureForm::der));
        EXPECT_FALSE(peer->verifyHash(digest, ReadBytes(signatureFile), SignatureForm::der));

        const std::string verify = " -sigfile " + signatureFile + " -in " + digestFile;
        WriteBytes(signatureFile, ours->signHash(digest, SignatureForm::der, random).bytes());
        EXPECT_TRUE(RunOpenSSL("pkeyutl -verify -keyform DER -pubin -inkey " + ourFile + ".public" + verify));
        EXPECT_FALSE(RunOpenSSL("pkeyutl -verify -keyform DER -pubin -inkey " + peerFile + ".public" + verify));
    }
}

INSTANTIATE_TEST_SUITE_P(Table, CurveBesideOpenSSL, ::testing::ValuesIn(Curves().begin(), Curves().end()),
                         [](const auto& curve) { return std::string(curve.param.name); });

TEST_P(EddsaBesideOpenSSL, Signs)
{
    SequenceRandom random(GetParam());
    const TemporaryDirectory folder;
    const std::string keyFile = folder / u8"key";
    const std::string messageFile = folder / u8"message";
    const std::string signatureFile = folder / u8"signature";
    const auto key = ccrypto::EddsaKey::Generate(GetParam(), random);
    ASSERT_NE(key, nullptr);
    ASSERT_TRUE(WriteKey(keyFile, GetParam() == algorithm::ed25519 ? "1.3.101.112" : "1.3.101.113", key->seed()));
    const std::string verify = "pkeyutl -verify -rawin -keyform DER -pubin -inkey " + keyFile + ".public -sigfile " +
                               signatureFile + " -in " + messageFile;
    for (const std::size_t length : {1, 64, 1000}) {
        SCOPED_TRACE(length);
        Bytes message(length);
        random.generate(message);
        WriteBytes(messageFile, message);
        ASSERT_TRUE(
            RunOpenSSL("pkeyutl -sign -rawin -keyform DER -inkey " + keyFile + " -in " + messageFile + " -out " + signatureFile));
        Bytes signature = ReadBytes(signatureFile);
        // Both make the one signature that there is.
        EXPECT_EQ(Hex(signature), HexOf(key->sign(message)));
        EXPECT_TRUE(RunOpenSSL(verify));
        signature[3] ^= 1;
        WriteBytes(signatureFile, signature);
        EXPECT_FALSE(RunOpenSSL(verify));
        EXPECT_FALSE(key->verify(message, signature));
    }
}

INSTANTIATE_TEST_SUITE_P(Both, EddsaBesideOpenSSL, ::testing::Values(algorithm::ed25519, algorithm::ed448));
