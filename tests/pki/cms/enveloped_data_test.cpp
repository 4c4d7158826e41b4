#include "crypto/cipher/cipher.h"
#include "pki/cms/document.h"
#include "pki/cms/enveloped_data.h"
#include "tests/pki/cms/cms_files.h"
#include "tests/pki/keys/stand_in_key.h"
#include "tests/pki/keys/test_keys.h"
#include "tests/pki/x509/test_authority.h"
#include "tests/support/captured_log.h"

#include <algorithm>
#include <string>
#include <vector>

using namespace ccrypto;

namespace {

struct EnvelopeFileCase {
    const char* file;
    const char* reason; ///< nullptr when it opens
};

const EnvelopeFileCase envelopeFileCases[] = {
    {"enveloped", nullptr},
    {"enveloped_stream", nullptr},
    {"enveloped_oaep", nullptr},
    {"enveloped_oaep_sha256", nullptr},
    {"enveloped_two", nullptr},
    {"enveloped_des", "Unsupported decryption algorithm"},
    {"enveloped_ec", "The message is not for this recipient"},
    {"ec_attached", "Not an encrypted message (enveloped data)"},
};

CertificatePtr EnvelopeRecipient(const TestKeyPtr& key, const Bytes& extension = TestKeyUsage(0x20))
{
    const TestIssuer issuer = {.name = TestName("CN=Envelopes"), .key = TestKey(1)};
    return LoadCertificate(TestCertificate("CN=Recipient", key).serial(7).extension(extension).build(issuer));
}

/// Gives what it is told to for every encrypted key, and remembers what it was asked.
class AnsweringKey : public StandInKey, public ICryptoDecrypter {
public:
    AnsweringKey() : StandInKey(*TestRsaKey()) {}

    ICryptoDecrypter* decrypter() override { return this; }
    element encrypt(std::span<const std::uint8_t>, const SCryptoPadding&) const override { return {}; }
    bool decrypt(std::span<const std::uint8_t> ciphertext, element& text, const SCryptoPadding& asked) override
    {
        padding = asked;
        return give(ciphertext, text);
    }
    bool unwrap(std::span<const std::uint8_t> ciphertext, std::uint32_t length, element& text) override
    {
        unwrappedLength = length;
        return give(ciphertext, text);
    }

    bool succeeds = true;
    Bytes answer = Bytes(16, 9);
    Bytes encrypted;
    std::uint32_t unwrappedLength = 0;
    SCryptoPadding padding;

private:
    bool give(std::span<const std::uint8_t> ciphertext, element& text)
    {
        encrypted.assign(ciphertext.begin(), ciphertext.end());
        text = element(answer.data(), static_cast<std::uint32_t>(answer.size()));
        return succeeds;
    }
};

Bytes EnvelopeAlgorithmOf(std::string_view oid, const Bytes& parameters = {})
{
    return Tlv(der::sequence, {OidTlv(oid), parameters});
}

Bytes RecipientOf(std::uint64_t serial, const Bytes& algorithm, const Bytes& version = NumberTlv(0))
{
    return Tlv(der::sequence, {version, Tlv(der::sequence, {TestName("CN=Envelopes"), NumberTlv(serial)}), algorithm,
                               Tlv(der::octetString, TextBytes("key of " + std::to_string(serial)))});
}

const Bytes& PlainRsa()
{
    static const Bytes algorithm = EnvelopeAlgorithmOf("1.2.840.113549.1.1.1", Tlv(der::null, Bytes{}));
    return algorithm;
}

/// "content", encrypted with AES-128 under the key that AnsweringKey gives.
Bytes EnvelopeOf(const Bytes& recipients, const Bytes& version = NumberTlv(0), std::uint32_t length = 16)
{
    element content;
    EXPECT_TRUE(ICryptoCipher::Create(algorithm::aes128Cbc)->encrypt(Bytes(16, 9), Bytes(16, 1), TextBytes("content"), content));
    content.resize(length);
    const Bytes cipher = EnvelopeAlgorithmOf("2.16.840.1.101.3.4.1.2", Tlv(der::octetString, Bytes(16, 1)));
    const Bytes info = Tlv(der::sequence, {OidTlv("1.2.840.113549.1.7.1"), cipher, Tlv(der::Context(0, false), BytesOf(content))});
    const Bytes data = Tlv(der::sequence, {version, Tlv(der::set, recipients), info});
    return Tlv(der::sequence, {OidTlv("1.2.840.113549.1.7.3"), Tlv(der::Context(0), data)});
}

Bytes OaepOf(const Bytes& parameters)
{
    return EnvelopeAlgorithmOf("1.2.840.113549.1.1.7", Tlv(der::sequence, parameters));
}

struct KeyTransportCase {
    const char* name;
    Bytes algorithm;
    const char* reason = nullptr;
    algorithm::Id hash = algorithm::none; ///< of OAEP; none for PKCS#1
    algorithm::Id maskHash = algorithm::none;
};

} // namespace

TEST(CmsEnvelopes, OpensWhatOthersEncrypted)
{
    const std::unique_ptr<ICryptoKeyPair> key = Load(CmsFile("recipient_key"));
    const CertificatePtr certificate = LoadCertificate(CmsFile("certificate_recipient"));
    ASSERT_NE(key, nullptr);
    ASSERT_NE(certificate, nullptr);
    for (const EnvelopeFileCase& entry : envelopeFileCases) {
        element content;
        ForgetFailure();
        EXPECT_EQ(DecryptAsRecipient(CmsFile(entry.file), *certificate, *key, content), entry.reason == nullptr)
            << entry.file << ": " << ReasonOfFailure();
        EXPECT_EQ(content.view(), entry.reason == nullptr ? "content" : "") << entry.file;
        if (entry.reason != nullptr) {
            EXPECT_EQ(ReasonOfFailure(), entry.reason) << entry.file;
        }
    }
    const CertificatePtr curve = LoadCertificate(CmsFile("certificate_ec_recipient"));
    element content;
    EXPECT_FALSE(DecryptAsRecipient(CmsFile("enveloped_ec"), *curve, *TestKey(2), content));
    EXPECT_EQ(ReasonOfFailure(), "Only messages for RSA keys can be opened");
}

TEST(CmsEnvelopes, OpenAgain)
{
    const CertificatePtr certificate = EnvelopeRecipient(TestRsaKey());
    const std::vector<CertificatePtr> recipients = {certificate};
    for (const algorithm::Id cipher : {algorithm::aes128Cbc, algorithm::aes192Cbc, algorithm::aes256Cbc}) {
        for (const auto scheme : {SCryptoPadding::Scheme::pkcs1, SCryptoPadding::Scheme::masked}) {
            for (const Bytes& content : {Bytes(), TextBytes("content"), Bytes(1000, 0x30)}) {
                const EnvelopeOptions options = {.cipher = cipher, .keyPadding = scheme};
                const element message = EncryptForRecipients(content, recipients, options);
                element opened;
                EXPECT_TRUE(DecryptAsRecipient(message.bytes(), *certificate, *TestRsaKey(), opened)) << ReasonOfFailure();
                EXPECT_EQ(BytesOf(opened), content);
            }
        }
    }
}

TEST(CmsEnvelopes, HoldTheirRecipientsOnceAndInOrder)
{
    const TestIssuer issuer = {.name = TestName("CN=Envelopes"), .key = TestKey(1)};
    std::vector<CertificatePtr> recipients;
    for (const std::uint64_t serial : {9, 7, 8})
        recipients.push_back(LoadCertificate(TestCertificate("CN=Recipient", TestRsaKey()).serial(serial).build(issuer)));
    recipients.push_back(recipients[0]);
    const element message = EncryptForRecipients(TextBytes("content"), recipients);
    CCryptoPKCS7Document document;
    ASSERT_TRUE(document.Parse(message.bytes()));
    CCryptoPKCS7EnvelopedDataObject data;
    ASSERT_TRUE(data.Parse(document.contentInfo()->content()));
    Bytes serials;
    for (const KeyRecipient& recipient : data.recipients)
        serials.push_back(recipient.recipient.serialNumber[0]);
    EXPECT_EQ(serials, (Bytes{7, 8, 9}));
    for (const CertificatePtr& recipient : recipients) {
        element content;
        EXPECT_TRUE(DecryptAsRecipient(message.bytes(), *recipient, *TestRsaKey(), content));
        EXPECT_EQ(content.view(), "content");
    }
}

TEST(CmsEnvelopes, AreForRsaKeysThatMayEncipher)
{
    const struct {
        const char* name;
        std::vector<CertificatePtr> recipients;
        EnvelopeOptions options;
        const char* reason;
    } cases[] = {
        {"nobody", {}, {}, "There is no recipient, or there are too many"},
        {"no certificate", {nullptr}, {}, "A recipient has no certificate"},
        {"a curve",
         {EnvelopeRecipient(TestKey(2))},
         {},
         "Messages are encrypted for RSA keys only; that of CN=Recipient is not one"},
        {"a key that signs",
         {EnvelopeRecipient(TestRsaKey(), TestKeyUsage(0x80))},
         {},
         "The key usage of CN=Recipient does not have keyEncipherment"},
        {"a key usage that is none",
         {EnvelopeRecipient(TestRsaKey(), TestExtension("2.5.29.15", NumberTlv(0x20)))},
         {},
         "The key usage of CN=Recipient does not have keyEncipherment"},
        {"10,001 times the same recipient",
         std::vector(10'001, EnvelopeRecipient(TestRsaKey())),
         {},
         "There is no recipient, or there are too many"},
        {"another cipher",
         {EnvelopeRecipient(TestRsaKey())},
         {.cipher = algorithm::tripleDesCbc},
         "Unsupported encryption algorithm"},
        {"a hash that does not mask",
         {EnvelopeRecipient(TestRsaKey())},
         {.keyPadding = SCryptoPadding::Scheme::masked, .maskingHash = algorithm::md5},
         "Unsupported hash function"},
    };
    for (const auto& entry : cases) {
        ForgetFailure();
        EXPECT_TRUE(EncryptForRecipients(TextBytes("content"), entry.recipients, entry.options).isEmpty()) << entry.name;
        EXPECT_EQ(ReasonOfFailure(), entry.reason) << entry.name;
    }
}

TEST(CmsEnvelopes, ADamagedKeyLooksLikeDamagedContent)
{
    const CertificatePtr certificate = EnvelopeRecipient(TestRsaKey());
    const std::vector<CertificatePtr> recipients = {certificate};
    for (const auto scheme : {SCryptoPadding::Scheme::pkcs1, SCryptoPadding::Scheme::masked}) {
        const EnvelopeOptions options = {.keyPadding = scheme};
        const Bytes message = BytesOf(EncryptForRecipients(Bytes(100, 0x41), recipients, options));
        CCryptoPKCS7Document document;
        ASSERT_TRUE(document.Parse(message));
        CCryptoPKCS7EnvelopedDataObject data;
        ASSERT_TRUE(data.Parse(document.contentInfo()->content()));
        const Bytes encrypted = BytesOf(data.recipients[0].encryptedKey);
        const auto place = std::search(message.begin(), message.end(), encrypted.begin(), encrypted.end()) - message.begin();
        for (const std::ptrdiff_t offset : {place + 10, place + 200}) {
            Bytes changed = message;
            changed[static_cast<std::size_t>(offset)] ^= 1;
            element content;
            ForgetFailure();
            // A random key gives valid padding once in 256 times, and then other content.
            if (DecryptAsRecipient(changed, *certificate, *TestRsaKey(), content)) {
                EXPECT_NE(BytesOf(content), Bytes(100, 0x41));
            } else {
                EXPECT_EQ(ReasonOfFailure(), "The message cannot be opened");
                EXPECT_TRUE(content.isEmpty());
            }
        }
    }
}

TEST(CmsEnvelopes, AskTheKeyAsTheRecipientSays)
{
    const Bytes null = Tlv(der::null, Bytes{});
    const Bytes mask384 =
        Tlv(der::Context(1), EnvelopeAlgorithmOf("1.2.840.113549.1.1.8", EnvelopeAlgorithmOf("2.16.840.1.101.3.4.2.2")));
    const auto hash = [](const Bytes& parameters) {
        return Tlv(der::Context(0), EnvelopeAlgorithmOf("2.16.840.1.101.3.4.2.1", parameters));
    };
    const auto label = [](std::string_view oid, const Bytes& value) {
        return Tlv(der::Context(2), EnvelopeAlgorithmOf(oid, value));
    };
    const char* const refused = "Unsupported decryption algorithm";
    const KeyTransportCase cases[] = {
        {"PKCS#1", PlainRsa()},
        {"PKCS#1 without NULL", EnvelopeAlgorithmOf("1.2.840.113549.1.1.1")},
        {"PKCS#1 with parameters", EnvelopeAlgorithmOf("1.2.840.113549.1.1.1", NumberTlv(1)), refused},
        {"another algorithm", EnvelopeAlgorithmOf("1.2.3"), refused},
        {"OAEP", OaepOf({}), nullptr, algorithm::sha1, algorithm::sha1},
        {"OAEP with two hashes", OaepOf(Joined({hash(null), mask384})), nullptr, algorithm::sha256, algorithm::sha384},
        {"OAEP with the empty label", OaepOf(label("1.2.840.113549.1.1.9", Tlv(der::octetString, Bytes{}))), nullptr,
         algorithm::sha1, algorithm::sha1},
        {"OAEP without parameters", EnvelopeAlgorithmOf("1.2.840.113549.1.1.7"), refused},
        {"OAEP, a hash with parameters", OaepOf(hash(NumberTlv(1))), refused},
        {"OAEP, another masking function",
         OaepOf(Tlv(der::Context(1), EnvelopeAlgorithmOf("1.2.3", EnvelopeAlgorithmOf("1.3.14.3.2.26")))), refused},
        {"OAEP, a label", OaepOf(label("1.2.840.113549.1.1.9", Tlv(der::octetString, Bytes{1}))), refused},
        {"OAEP, a label that is no octets", OaepOf(label("1.2.840.113549.1.1.9", Tlv(der::utf8String, Bytes{}))), refused},
        {"OAEP, another source of the label", OaepOf(label("1.2.3", Tlv(der::octetString, Bytes{}))), refused},
        {"OAEP, more parameters", OaepOf(Tlv(der::Context(3), Bytes{})), refused},
    };
    const CertificatePtr certificate = EnvelopeRecipient(TestRsaKey());
    for (const KeyTransportCase& test : cases) {
        SCOPED_TRACE(test.name);
        AnsweringKey key;
        element content("what was there");
        ForgetFailure();
        const Bytes message = EnvelopeOf(Joined({RecipientOf(6, EnvelopeAlgorithmOf("1.2.3")), RecipientOf(7, test.algorithm)}));
        EXPECT_EQ(DecryptAsRecipient(message, *certificate, key, content), test.reason == nullptr);
        EXPECT_EQ(content.view(), test.reason == nullptr ? "content" : "");
        EXPECT_EQ(ReasonOfFailure(), test.reason == nullptr ? "" : test.reason);
        EXPECT_EQ(key.encrypted, test.reason == nullptr ? TextBytes("key of 7") : Bytes());
        EXPECT_EQ(key.unwrappedLength, test.reason == nullptr && test.hash == algorithm::none ? 16U : 0U);
        if (test.hash != algorithm::none) {
            EXPECT_EQ(key.padding.scheme, SCryptoPadding::Scheme::masked);
            EXPECT_EQ(key.padding.masking.hash, test.hash);
            EXPECT_EQ(key.padding.masking.maskHash, test.maskHash);
        }
    }
    // However the key fails.
    for (const Bytes& algorithm : {PlainRsa(), OaepOf({})}) {
        for (const std::size_t length : {0, 15, 24, 32}) {
            AnsweringKey key;
            key.succeeds = length != 15;
            key.answer.resize(length);
            element content;
            if (!DecryptAsRecipient(EnvelopeOf(RecipientOf(7, algorithm)), *certificate, key, content)) {
                EXPECT_EQ(ReasonOfFailure(), "The message cannot be opened");
            }
            EXPECT_NE(content.view(), "content");
        }
    }
}

TEST(CmsEnvelopes, AreReadWithinTheirLimits)
{
    const Bytes ours = RecipientOf(7, PlainRsa());
    const auto others = [&](std::size_t count) {
        Bytes all;
        for (; count != 0; --count)
            all.insert(all.end(), {0xA1, 0});
        return Joined({all, ours});
    };
    const struct {
        const char* name;
        Bytes message;
        bool isRead = false;
    } cases[] = {
        {"version 2", EnvelopeOf(ours, NumberTlv(2)), true},
        {"version 1", EnvelopeOf(ours, NumberTlv(1))},
        {"version 5", EnvelopeOf(ours, NumberTlv(5))},
        {"a long version", EnvelopeOf(ours, Tlv(der::integer, Bytes{1, 0, 0, 0, 0}))},
        {"a recipient of version 2", EnvelopeOf(RecipientOf(7, PlainRsa(), NumberTlv(2)))},
        {"a recipient of a long version", EnvelopeOf(RecipientOf(7, PlainRsa(), Tlv(der::integer, Bytes{1, 0, 0, 0, 0})))},
        {"10,000 recipients", EnvelopeOf(others(9'999)), true},
        {"10,001 recipients", EnvelopeOf(others(10'000))},
    };
    const CertificatePtr certificate = EnvelopeRecipient(TestRsaKey());
    for (const auto& test : cases) {
        AnsweringKey key;
        element content;
        Oid type = Oid::FromDotted("1.2.3");
        EXPECT_EQ(DecryptAsRecipient(test.message, *certificate, key, content, &type), test.isRead) << test.name;
        EXPECT_EQ(ContentTypeOf(type) == ContentType::data, test.isRead) << test.name;
        EXPECT_EQ(type.isNone(), !test.isRead) << test.name;
    }
}

TEST(CmsEnvelopes, LogTheSameForEveryWrongKey)
{
    const CertificatePtr certificate = EnvelopeRecipient(TestRsaKey());
    ICryptoDecrypter* const rsa = TestRsaKey()->decrypter();
    std::vector<std::vector<std::string>> logs;
    for (const Bytes& key : {Bytes(16, 1), Bytes(15, 1), Bytes(32, 1), Bytes(1, 1)}) {
        for (const bool isDamaged : {false, true}) {
            Bytes encrypted = BytesOf(rsa->encrypt(key));
            encrypted.back() ^= isDamaged ? 1 : 0;
            // Content of 15 octets has no padding, whatever the key.
            const Bytes recipient = Tlv(der::sequence, {NumberTlv(0), Tlv(der::sequence, {TestName("CN=Envelopes"), NumberTlv(7)}),
                                                        PlainRsa(), Tlv(der::octetString, encrypted)});
            const Bytes message = EnvelopeOf(recipient, NumberTlv(0), 15);
            const CapturedLog log;
            element content;
            EXPECT_FALSE(DecryptAsRecipient(message, *certificate, *TestRsaKey(), content));
            logs.push_back(log.texts());
        }
    }
    EXPECT_EQ(std::ranges::count(logs, logs.front()), std::ssize(logs));
}
