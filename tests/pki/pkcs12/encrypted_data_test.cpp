#include "core/diagnostics/failure.h"
#include "pki/cms/ber_gathering.h"
#include "pki/cms/encrypted_data.h"
#include "tests/crypto/base/sequence_random.h"
#include "tests/pki/test_der.h"
#include "tests/support/captured_log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>

namespace ccrypto {

namespace {

constexpr std::string_view encryptedText = "content that is encrypted";

std::span<const std::uint8_t> OctetsOf(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

element ElementOfBytes(const Bytes& bytes)
{
    return {bytes.data(), static_cast<std::uint32_t>(bytes.size())};
}

std::string LastText()
{
    const std::optional<Failure> failure = LastFailure();
    return failure ? failure->text : std::string();
}

SCryptoPasswordEncryption SchemeOf(algorithm::Id scheme)
{
    return {.scheme = scheme, .iterations = 10};
}

} // namespace

class EncryptWithPassword : public ::testing::TestWithParam<SCryptoPasswordEncryption> {};

TEST_P(EncryptWithPassword, ReadsWhatItWrote)
{
    CCryptoPKCS7encryptedDataObject written;
    ASSERT_TRUE(written.Encrypt(GetParam(), "secret", OctetsOf(encryptedText)));
    const element der = written.BuildDer();

    CCryptoPKCS7encryptedDataObject read;
    ASSERT_TRUE(read.ParseDer(der));
    EXPECT_EQ(read.encryptedContentInfo.contentType(), ContentType::data);
    element content;
    ASSERT_TRUE(read.Decrypt("secret", content));
    EXPECT_EQ(content.view(), encryptedText);
    const auto parameters = CCryptoPasswordEncryption::ParametersOf(read.encryptedContentInfo.contentEncryptionAlgorithm);
    ASSERT_TRUE(parameters);
    EXPECT_EQ(parameters->scheme, GetParam().scheme);
    EXPECT_EQ(parameters->iterations, GetParam().iterations);

    const bool isOpened = read.Decrypt("Secret", content);
    EXPECT_NE(content.view(), encryptedText);
    EXPECT_TRUE(isOpened || content.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Schemes, EncryptWithPassword,
                         ::testing::Values(SchemeOf(algorithm::pbes2),
                                           SCryptoPasswordEncryption{.prf = algorithm::hmacSha1, .iterations = 10},
                                           SchemeOf(algorithm::pkcs12Sha1Rc4_128), SchemeOf(algorithm::pkcs12Sha1Rc4_40),
                                           SchemeOf(algorithm::pkcs12Sha1TripleDes3Key),
                                           SchemeOf(algorithm::pkcs12Sha1TripleDes2Key), SchemeOf(algorithm::pkcs12Sha1Rc2_128),
                                           SchemeOf(algorithm::pkcs12Sha1Rc2_40)));

TEST(EncryptedData, DistinguishesNoPasswordFromTheEmptyOne)
{
    CCryptoPKCS7encryptedDataObject data;
    element content;
    ASSERT_TRUE(data.Encrypt(SchemeOf(algorithm::pkcs12Sha1Rc4_128), "", OctetsOf(encryptedText)));
    ASSERT_TRUE(data.Decrypt(std::nullopt, content));
    EXPECT_NE(content.view(), encryptedText);
    ASSERT_TRUE(data.Decrypt("", content));
    EXPECT_EQ(content.view(), encryptedText);
}

TEST(EncryptedData, NamesWhatIsNotSupported)
{
    CCryptoPKCS7encryptedDataObject data;
    ForgetFailure();
    EXPECT_FALSE(data.Encrypt(SchemeOf(algorithm::sha1), "secret", OctetsOf(encryptedText)));
    EXPECT_EQ(LastText(), "Unsupported encryption algorithm");
    EXPECT_FALSE(data.Encrypt({.prf = algorithm::sha256, .iterations = 10}, "secret", OctetsOf(encryptedText)));
    EXPECT_EQ(LastText(), "Unsupported prf algorithm");
    EXPECT_FALSE(data.Encrypt({.cipher = algorithm::rc4}, "secret", OctetsOf(encryptedText)));
    EXPECT_EQ(LastText(), "Unsupported encryption algorithm");
    // What is wrong otherwise has its own text.
    EXPECT_FALSE(data.Encrypt({.iterations = 50'000'001}, "secret", OctetsOf(encryptedText)));
    EXPECT_EQ(LastText(), "No key can be derived so");
    EXPECT_FALSE(data.Encrypt(SchemeOf(algorithm::pkcs12Sha1Rc4_128), "secret", {}));
    EXPECT_EQ(LastText(), "There is nothing to encrypt");
    NoRandom none;
    EXPECT_FALSE(data.Encrypt(SchemeOf(algorithm::pbes2), "secret", OctetsOf(encryptedText), none));
    EXPECT_EQ(LastText(), "There are no random bytes");

    element content(std::string_view("what was there"));
    ASSERT_TRUE(data.Encrypt(SchemeOf(algorithm::pbes2), "secret", OctetsOf(encryptedText)));
    const element der = data.BuildDer();
    const Bytes good(der.data(), der.data() + der.length());
    struct WrongOid {
        std::string_view oid;
        std::uint8_t last;
        const char* message;
    };
    // The last octets of hmacWithSHA256, aes256-CBC and PBES2 become those of no algorithm.
    for (const WrongOid& wrong : {WrongOid{"1.2.840.113549.2.9", 0x7F, "Unsupported prf algorithm"},
                                  WrongOid{"2.16.840.1.101.3.4.1.42", 0x7F, "Unsupported decryption algorithm"},
                                  WrongOid{"1.2.840.113549.1.5.13", 0x7F, "Unsupported decryption algorithm"}}) {
        Bytes changed = good;
        const Bytes oid = OidTlv(wrong.oid);
        const auto found = std::search(changed.begin(), changed.end(), oid.begin(), oid.end());
        ASSERT_NE(found, changed.end());
        found[static_cast<std::ptrdiff_t>(oid.size()) - 1] = wrong.last;
        data.clear();
        ASSERT_TRUE(data.ParseDer(ElementOfBytes(changed))) << wrong.oid;
        EXPECT_FALSE(data.Decrypt("secret", content)) << wrong.oid;
        EXPECT_TRUE(content.isEmpty());
        EXPECT_EQ(LastText(), wrong.message);
    }
    // The parameters of RC2 are of another form.
    const Bytes derivation = Tlv(der::sequence, {Tlv(der::octetString, TextBytes("saltsalt")), Tlv(der::integer, Bytes{10}),
                                                 Tlv(der::sequence, OidTlv("1.2.840.113549.2.127"))});
    const Bytes rc2 = Tlv(der::sequence, {Tlv(der::integer, Bytes{58}), Tlv(der::octetString, TextBytes("12345678"))});
    const Bytes how = Tlv(der::sequence, {OidTlv("1.2.840.113549.1.5.13"),
                                          Tlv(der::sequence, {Tlv(der::sequence, {OidTlv("1.2.840.113549.1.5.12"), derivation}),
                                                              Tlv(der::sequence, {OidTlv("1.2.840.113549.3.2"), rc2})})});
    ASSERT_TRUE(data.encryptedContentInfo.contentEncryptionAlgorithm.ParseDer(ElementOfBytes(how)));
    EXPECT_FALSE(data.Decrypt("secret", content));
    EXPECT_EQ(LastText(), "Unsupported prf algorithm");
}

struct ContentCase {
    const char* name;
    Bytes content; ///< the element in the place of encryptedContent
    const char* message;
    Bytes version = {0};
    Bytes after = {}; ///< the content and its algorithm
};

void PrintTo(const ContentCase& test, std::ostream* stream)
{
    *stream << test.name;
}

class EncryptedContent : public ::testing::TestWithParam<ContentCase> {};

TEST_P(EncryptedContent, IsGatheredOfItsPieces)
{
    const Bytes algorithm =
        Tlv(der::sequence, {OidTlv("1.2.840.113549.1.12.1.3"),
                            Tlv(der::sequence, {Tlv(der::octetString, TextBytes("saltsalt")), Tlv(der::integer, Bytes{10})})});
    const Bytes data =
        Tlv(der::sequence, {Tlv(der::integer, GetParam().version),
                            Tlv(der::sequence, {OidTlv("1.2.840.113549.1.7.1"), algorithm, GetParam().content}), GetParam().after});
    const CapturedLog log;
    CCryptoPKCS7encryptedDataObject read;
    const bool isRead = read.ParseDer(GatherBer(data));
    EXPECT_EQ(isRead, GetParam().message == nullptr);
    if (isRead) {
        EXPECT_EQ(read.encryptedContentInfo.encryptedContent.view(), "12345678");
    } else {
        EXPECT_TRUE(std::ranges::any_of(log.texts(), [](const std::string& text) { return text.ends_with(GetParam().message); }));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Forms, EncryptedContent,
    ::testing::Values(
        ContentCase{"one string", Tlv(0x80, TextBytes("12345678")), nullptr},
        ContentCase{"attributes", Tlv(0x80, TextBytes("12345678")), nullptr, {2}, Tlv(0xA1, Tlv(der::null, Bytes{}))},
        ContentCase{"attributes under version 0", Tlv(0x80, TextBytes("12345678")), "Invalid version", {0}, Tlv(0xA1, Bytes{})},
        ContentCase{"version 2 without attributes", Tlv(0x80, TextBytes("12345678")), "Invalid version", {2}},
        ContentCase{"another element after the content",
                    Tlv(0x80, TextBytes("12345678")),
                    "What follows the content is not attributes",
                    {2},
                    Tlv(0xA2, Bytes{})},
        ContentCase{"attributes twice",
                    Tlv(0x80, TextBytes("12345678")),
                    "What follows the content is not attributes",
                    {2},
                    Joined({Tlv(0xA1, Bytes{}), Tlv(0xA1, Bytes{})})},
        ContentCase{"pieces", Tlv(0xA0, {Tlv(der::octetString, TextBytes("1234")), Tlv(der::octetString, TextBytes("5678"))}),
                    nullptr},
        ContentCase{"pieces in pieces",
                    Tlv(0xA0, {Tlv(0x24, {Tlv(der::octetString, TextBytes("123")), Tlv(der::octetString, TextBytes("4"))}),
                               Tlv(der::octetString, TextBytes("5678"))}),
                    nullptr},
        ContentCase{"pieces of another type",
                    Tlv(0xA0, {Tlv(der::octetString, TextBytes("1234")), Tlv(der::integer, TextBytes("5678"))}),
                    "Invalid contentData"},
        ContentCase{"nothing", Tlv(0x80, Bytes{}), "Invalid contentData"},
        ContentCase{"a long version", Tlv(0x80, TextBytes("12345678")), "Invalid version", {2, 0}, Tlv(0xA1, Bytes{})},
        ContentCase{"version 1", Tlv(0x80, TextBytes("12345678")), "Invalid version", {1}}));

} // namespace ccrypto
