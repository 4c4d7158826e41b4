#include "crypto/kdf/key_derivation.h"
#include "pki/cms/encrypted_data.h"
#include "pki/cms/enveloped_data.h"
#include "pki/pkcs12/pkcs12.h"
#include "tests/pki/x509/test_authority.h"
#include "tests/support/posix/released_blocks.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

using namespace ccrypto;

namespace {

constexpr std::string_view secretPassword = "the password that no block of the heap may keep";
constexpr std::string_view secretContent = "the content that no block of the heap may keep";

std::span<const std::uint8_t> SecretOctets(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// What is worked on, made before anybody watches.
struct SecretWork {
    CertificatePtr certificate;
    element files[2]; ///< PKCS#12 with PBES2, and with an old scheme
    element encryptedData;
    CertificatePtr recipient;
    element message;
    std::vector<std::string> secrets;

    SecretWork()
    {
        const TestIssuer issuer = {.name = TestName("CN=Root"), .key = TestKey(1)};
        certificate = LoadCertificate(TestCertificate("CN=Signer", TestKey(2)).build(issuer));
        files[0] = save(algorithm::pbes2);
        files[1] = save(algorithm::pkcs12Sha1TripleDes3Key);
        CCryptoPKCS7encryptedDataObject data;
        EXPECT_TRUE(data.Encrypt({.iterations = 1}, secretPassword, SecretOctets(secretContent)));
        encryptedData = data.BuildDer();
        recipient = LoadCertificate(TestCertificate("CN=Recipient", TestRsaKey()).build(issuer));
        message = EncryptForRecipients(SecretOctets(secretContent), std::array{recipient});

        const element units = CCryptoKeyDerivation::PKCS12Password(secretPassword);
        const element scalar = TestKey(2)->privateNumbers().front().value;
        const std::string number(scalar.view());
        secrets = {std::string(secretPassword), std::string(units.view()), std::string(secretContent), number,
                   std::string(number.rbegin(), number.rend())};
    }

    element save(algorithm::Id scheme) const
    {
        SCryptoPKCS12Options options;
        options.encryption.scheme = scheme;
        options.encryption.iterations = options.macIterations = 1;
        return CCryptoPKCS12::Save(TestKey(2).get(), std::array{certificate}, secretPassword, options);
    }
};

bool LoadSecretStore(const element& file)
{
    CCryptoPKCS12 store;
    return store.Load(file.bytes(), [](element& password) {
        password = element(secretPassword);
        return true;
    });
}

struct SecretCase {
    const char* name;
    bool (*work)(const SecretWork& work);
};

constexpr SecretCase secretCases[] = {
    {"a file that is read", [](const SecretWork& work) { return LoadSecretStore(work.files[0]); }},
    {"a file with an old scheme that is read", [](const SecretWork& work) { return LoadSecretStore(work.files[1]); }},
    {"a file that is written", [](const SecretWork& work) { return !work.save(algorithm::pbes2).isEmpty(); }},
    {"a file with an old scheme that is written",
     [](const SecretWork& work) { return !work.save(algorithm::pkcs12Sha1TripleDes3Key).isEmpty(); }},
    {"encrypted data",
     [](const SecretWork& work) {
         CCryptoPKCS7encryptedDataObject data;
         element content;
         return data.ParseDer(work.encryptedData) && data.Decrypt(secretPassword, content);
     }},
    {"an enveloped message",
     [](const SecretWork& work) {
         element content;
         return DecryptAsRecipient(work.message.bytes(), *work.recipient, *TestRsaKey(), content);
     }},
};

} // namespace

TEST(ReleasedSecrets, AreWiped)
{
    if (!ReleasedBlocks::canWatch())
        GTEST_SKIP() << "no sanitizer shows released memory";
    const SecretWork work;
    for (const SecretCase& each : secretCases) {
        const ReleasedBlocks blocks(work.secrets);
        EXPECT_TRUE(each.work(work)) << each.name;
        EXPECT_GT(blocks.released(), 0U) << each.name;
        EXPECT_EQ(blocks.kept(), 0U) << each.name;
    }
}
