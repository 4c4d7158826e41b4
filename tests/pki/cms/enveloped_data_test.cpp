#include "pki/cms/document.h"
#include "pki/cms/enveloped_data.h"
#include "tests/pki/cms/cms_files.h"
#include "tests/pki/keys/test_keys.h"
#include "tests/pki/x509/test_authority.h"

#include <algorithm>

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
    {"ec_attached", "Not a message of enveloped data"},
};

CertificatePtr EnvelopeRecipient(const TestKeyPtr& key, std::uint8_t keyUsage = 0x20)
{
    const TestIssuer issuer = {.name = TestName("CN=Envelopes"), .key = TestKey(1)};
    return LoadCertificate(TestCertificate("CN=Recipient", key).serial(7).extension(TestKeyUsage(keyUsage)).build(issuer));
}

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
    EXPECT_EQ(ReasonOfFailure(), "Messages for elliptic-curve keys cannot be opened; they come later");
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
        {"no certificate", {nullptr}, {}, "Messages are encrypted for RSA keys alone; elliptic-curve recipients come later"},
        {"a curve",
         {EnvelopeRecipient(TestKey(2))},
         {},
         "Messages are encrypted for RSA keys alone; elliptic-curve recipients come later"},
        {"a key that signs",
         {EnvelopeRecipient(TestRsaKey(), 0x80)},
         {},
         "The key usage of a recipient does not allow key encipherment"},
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
