#include "asn1/der/pem.h"
#include "core/diagnostics/failure.h"
#include "pki/x509/certificate.h"
#include "pki/x509/extension_builder.h"
#include "pki/x509/name.h"
#include "tests/pki/keys/test_keys.h"
#include "tests/pki/x509/certificate_fields.h"
#include "tests/support/captured_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using namespace ccrypto;

namespace {

/// The certificates of the system's trust store.
std::vector<element> StoreCertificates()
{
    std::ifstream file("/etc/ssl/certs/ca-certificates.crt", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    std::vector<DataBlock> blocks;
    std::vector<element> certificates;
    if (!ReadPem(text, blocks))
        return certificates;
    for (DataBlock& block : blocks)
        certificates.push_back(std::move(block.bytes));
    return certificates;
}

} // namespace

TEST(Certificate, TrustStoreLoadsPrintsAndEncodesAgain)
{
    const std::vector<element> store = StoreCertificates();
    ASSERT_GT(store.size(), 100u);
    for (const element& der : store) {
        CCrypto_X509_Certificate certificate;
        ASSERT_TRUE(certificate.LoadCertificate(der));
        EXPECT_TRUE(certificate.isDer());
        EXPECT_TRUE(certificate.algorithmsAgree());
        EXPECT_EQ(certificate.GetCertificate(), der);
        const element subject = certificate.subject().GetDerEncodedElement();
        EXPECT_FALSE(NameText(subject.bytes()).isEmpty());
        EXPECT_EQ(NameText(certificate.subject()), NameText(subject.bytes()));
        // The same certificate again, of its fields.
        const element signature = certificate.signature();
        certificate.setSignature(signature);
        EXPECT_TRUE(!certificate.isLoaded() && certificate.signedOctets().empty());
        // A year before 2050 is written in two digits; not everybody does.
        const element built = certificate.GetCertificate();
        const bool hasLongTime = der.view().find("\x18\x0F") != std::string_view::npos;
        EXPECT_EQ(built.length(), hasLongTime ? der.length() - 4 : der.length()) << NameText(subject.bytes()).c_str();
        EXPECT_TRUE(hasLongTime || built == der) << NameText(subject.bytes()).c_str();
    }
}

TEST(Certificate, FieldsAreThoseOfTheOctets)
{
    const Bytes der = LeafCertificate()
                          .serialOctets({0x00, 0x81})
                          .extension(TestKeyUsage(0x80))
                          .extension(TestAlternativeNames({TestDns("a.example")}))
                          .build(CertificateRoot());
    CCrypto_X509_Certificate certificate;
    ASSERT_TRUE(certificate.LoadCertificate(ElementOf(der)));
    EXPECT_EQ(certificate.version(), 3u);
    EXPECT_EQ(BytesOf(certificate.serialNumber()), (Bytes{0x00, 0x81}));
    EXPECT_EQ(BytesOf(certificate.issuer().GetDerEncodedElement()), CertificateRoot().name);
    EXPECT_EQ(NameText(certificate.subject()), "CN=Leaf, C=FI");
    EXPECT_EQ(certificate.validFrom(), CCryptoDateTime("20200101000000Z"));
    EXPECT_EQ(certificate.publicKeyInfo(), TestKey(2)->publicKeyInfo());
    EXPECT_EQ(BytesOf(certificate.publicKeyBits()), TestKeyBits(*TestKey(2)));
    const Bytes tbs(certificate.signedOctets().begin(), certificate.signedOctets().end());
    EXPECT_EQ(tbs.size() + TestAlgorithm(CertificateRoot()).size() + certificate.signature().length() + 3 + 4, der.size());
    const CCrypto_X509_Value* const usage = certificate.extensions().find(Oid::FromDotted("2.5.29.15"));
    ASSERT_NE(usage, nullptr);
    EXPECT_TRUE(usage->isCritical());
    EXPECT_EQ(HexOf(usage->content()), "03020780");
    EXPECT_FALSE(certificate.extensions().find(Oid::FromDotted("2.5.29.17"))->isCritical());
    EXPECT_EQ(certificate.extensions().find(Oid::FromDotted("2.5.29.19")), nullptr);
}

namespace {

struct SignatureCase {
    const char* name;
    Bytes (*make)();
    SignatureResult result;
    bool isDer = true;
};

class VerifiesCertificate : public ::testing::TestWithParam<SignatureCase> {};

const SignatureCase signatureCases[] = {
    {"the issuer's", [] { return LeafCertificate().build(CertificateRoot()); }, SignatureResult::good},
    {"another key's", [] { return LeafCertificate().build({.name = CertificateRoot().name, .key = TestKey(3)}); },
     SignatureResult::bad},
    {"an algorithm outside that is not the one inside",
     [] {
         return LeafCertificate()
             .innerAlgorithm(TestAlgorithm({.name = {}, .key = TestKey(1), .hash = algorithm::sha384}))
             .build(CertificateRoot());
     },
     SignatureResult::bad},
    {"an algorithm inside with parameters that the one outside lacks",
     [] {
         return LeafCertificate()
             .innerAlgorithm(Tlv(der::sequence, {OidTlv("1.2.840.10045.4.3.2"), Tlv(der::null, Bytes())}))
             .build(CertificateRoot());
     },
     SignatureResult::bad},
    {"the issuer's, an unused bit in it",
     [] {
         Bytes der = LeafCertificate().build(CertificateRoot());
         DerCursor fields(*OnlyValue(der, der::sequence));
         const bool areRead = fields.read(der::sequence) && fields.read(der::sequence);
         der[der.size() - fields.read(der::bitString).value.size()] = areRead ? 1 : 0;
         return der;
     },
     SignatureResult::bad},
    {"an unknown algorithm",
     [] {
         const Bytes algorithm = Tlv(der::sequence, OidTlv("1.2.3.4"));
         return LeafCertificate().innerAlgorithm(algorithm).outerAlgorithm(algorithm).build(CertificateRoot());
     },
     SignatureResult::unsupportedAlgorithm},
    {"octets that a zero hides",
     [] {
         return LeafCertificate()
             .extensionsDer(Joined({Tlv(der::Context(3), Tlv(der::sequence, TestKeyUsage(0x80))), {0x00, 1, 2, 3, 4}}))
             .build(CertificateRoot());
     },
     SignatureResult::bad, false},
    {"a zero after the certificate",
     [] {
         return Joined({LeafCertificate().build(CertificateRoot()), {0x00}});
     },
     SignatureResult::bad, false},
    {"a length in more octets than it needs",
     [] {
         Bytes fields = JoinedFields(FieldsOfVersion1());
         fields = Joined({{0x02, 0x81, 0x01, 0x01}, Bytes(fields.begin() + 3, fields.end())});
         return SignedFields(fields);
     },
     SignatureResult::bad, false},
    {"an indefinite length",
     [] {
         const Bytes der = LeafCertificate().build(CertificateRoot());
         return Joined({{0x30, 0x80}, Bytes(der.begin() + 4, der.end()), {0, 0}});
     },
     SignatureResult::bad, false},
};

} // namespace

TEST_P(VerifiesCertificate, OverTheOctetsReceived)
{
    SCOPED_TRACE(GetParam().name);
    CCrypto_X509_Certificate certificate;
    ASSERT_TRUE(certificate.LoadCertificate(ElementOf(GetParam().make())));
    EXPECT_EQ(certificate.isDer(), GetParam().isDer);
    EXPECT_EQ(certificate.verifySignature(*TestKey(1)), GetParam().result);
    EXPECT_EQ(certificate.isDer(), !certificate.signedOctets().empty());
}

INSTANTIATE_TEST_SUITE_P(Signatures, VerifiesCertificate, ::testing::ValuesIn(signatureCases));

TEST(Certificate, NoFlippedBitAndNoTruncationVerifies)
{
    const Bytes der = LeafCertificate().extension(TestKeyUsage(0x80)).build(CertificateRoot());
    for (std::size_t index = 0; index < der.size(); ++index) {
        CCrypto_X509_Certificate certificate;
        Bytes changed = der;
        changed[index] ^= static_cast<std::uint8_t>(1u << (index % 8));
        if (certificate.LoadCertificate(ElementOf(changed))) {
            EXPECT_NE(certificate.verifySignature(*TestKey(1)), SignatureResult::good) << index;
        }
        changed.assign(der.begin(), der.begin() + static_cast<std::ptrdiff_t>(index));
        EXPECT_FALSE(certificate.LoadCertificate(ElementOf(changed))) << index;
    }
}

namespace {

struct ValidityCase {
    const char* now;
    std::int64_t tolerance;
    const char* reason; ///< empty when it is valid
};

class ChecksValidity : public ::testing::TestWithParam<ValidityCase> {};

} // namespace

TEST_P(ChecksValidity, EndsIncluded)
{
    CCrypto_X509_Certificate certificate;
    ASSERT_TRUE(certificate.LoadCertificate(
        ElementOf(LeafCertificate().validity("20200101000000Z", "20300101000000Z").build(CertificateRoot()))));
    ForgetFailure();
    EXPECT_EQ(certificate.isValidAt(CCryptoDateTime(GetParam().now), GetParam().tolerance), *GetParam().reason == '\0');
    EXPECT_EQ(ReasonOfFailure(), GetParam().reason);
}

INSTANTIATE_TEST_SUITE_P(
    Moments, ChecksValidity,
    ::testing::Values(ValidityCase{"20250101000000Z", 0, ""}, ValidityCase{"20200101000000Z", 0, ""},
                      ValidityCase{"20300101000000Z", 0, ""},
                      ValidityCase{"20191231235959Z", 0, "Not valid yet: 2020-01-01 00:00:00Z > 2019-12-31 23:59:59Z"},
                      ValidityCase{"20300101000001Z", 0, "Expired: 2030-01-01 00:00:00Z < 2030-01-01 00:00:01Z"},
                      ValidityCase{"20300101000000.001Z", 0, "Expired: 2030-01-01 00:00:00Z < 2030-01-01 00:00:00Z"},
                      ValidityCase{"19691231235959.5Z", 1, "Not valid yet: 2020-01-01 00:00:00Z > 1970-01-01 00:00:00Z"},
                      ValidityCase{"20191231235959Z", 1, ""}, ValidityCase{"20300101000001Z", -1, ""},
                      ValidityCase{"20300101000000Z", 1, "Expired: 2030-01-01 00:00:00Z < 2030-01-01 00:00:01Z"},
                      ValidityCase{"20250101000000Z", INT64_MAX, "Invalid time"},
                      ValidityCase{"20250101000000Z", INT64_MIN, "Invalid time"}, ValidityCase{"", 0, "Invalid time"}));

TEST(Certificate, IsBuiltOfItsFields)
{
    CCrypto_X509_ValueList name;
    ASSERT_TRUE(BuildName({.country = "FI", .commonName = "Built"}, name));
    const element nameOctets = name.GetDerEncodedElement();
    CCrypto_X509_ValueList issuer;
    ASSERT_TRUE(issuer.Parse(name.BuildItems(true).get(), true));

    CCrypto_X509_Certificate certificate;
    certificate.setSubject(std::move(name));
    certificate.setIssuer(std::move(issuer));
    certificate.setValidity(CCryptoDateTime("19491231000000Z"), CCryptoDateTime("20500101000000Z"));
    EXPECT_FALSE(certificate.setPublicKey(nullptr));
    EXPECT_TRUE(certificate.GetCertificate().isEmpty());
    ASSERT_TRUE(certificate.setPublicKey(TestKey(1)));
    ASSERT_TRUE(certificate.setSignatureAlgorithm(SignatureAlgorithmFor(*TestKey(1), algorithm::sha256)));
    certificate.setSerialNumber(element("\0\0\x80", 3));
    EXPECT_TRUE(certificate.GetCertificate().isEmpty());
    EXPECT_EQ(LastFailure()->text, "There is no signature");
    certificate.setSignature(SignOctets(*TestKey(1), algorithm::sha256, certificate.GetSignedPart().bytes()));

    CCrypto_X509_Certificate read;
    ASSERT_TRUE(read.LoadCertificate(certificate.GetCertificate()));
    EXPECT_EQ(read.verifySignature(*TestKey(1)), SignatureResult::good);
    EXPECT_EQ(read.version(), 3u);
    EXPECT_EQ(HexOf(read.serialNumber()), "0080");
    EXPECT_EQ(read.subject().GetDerEncodedElement(), nameOctets);
    EXPECT_EQ(read.validFrom(), CCryptoDateTime("19491231000000Z"));
    EXPECT_EQ(read.validTo(), CCryptoDateTime("20500101000000Z"));
}

TEST(Certificate, WarnsOfNoSerialNumberAndGoesOn)
{
    CCrypto_X509_Certificate certificate;
    ASSERT_TRUE(certificate.LoadCertificate(ElementOf(LeafCertificate().build(CertificateRoot()))));
    EXPECT_FALSE(certificate.setVersion(2));
    EXPECT_FALSE(certificate.setPublicKeyInfo(element("x", 1)));
    EXPECT_TRUE(certificate.isLoaded());
    certificate.setSerialNumber({});
    const CapturedLog log;
    CCrypto_X509_Certificate read;
    ASSERT_TRUE(read.LoadCertificate(certificate.GetCertificate()));
    EXPECT_EQ(HexOf(read.serialNumber()), "00");
    EXPECT_THAT(log.texts(), ::testing::Contains("CCrypto_X509_Certificate::GetCertificate(); WARNING: CSN is empty?"));
}

TEST(Certificate, OfVersion1BecomesVersion3WithExtensions)
{
    CCrypto_X509_Certificate certificate;
    ASSERT_TRUE(certificate.LoadCertificate(ElementOf(SignedFields(JoinedFields(FieldsOfVersion1())))));
    certificate.setSignature(element("x", 1));
    CCrypto_X509_Certificate read;
    ASSERT_TRUE(read.LoadCertificate(certificate.GetCertificate()));
    EXPECT_EQ(read.version(), 1u);
    CCrypto_X509_ValueList extensions;
    extensions.add(BuildBasicConstraints({}));
    certificate.setExtensions(std::move(extensions));
    ASSERT_TRUE(read.LoadCertificate(certificate.GetCertificate()));
    EXPECT_EQ(read.version(), 3u);
    EXPECT_EQ(read.extensions().values().size(), 1u);
}
