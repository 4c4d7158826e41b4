#include "pki/x509/certificate.h"
#include "pki/x509/issuer_and_serial_number.h"
#include "tests/pki/x509/test_authority.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

const CCrypto_X509_Certificate& CertificateOfTest()
{
    static const CertificatePtr certificate = LoadCertificate(
        TestCertificate("CN=Leaf", TestKey(2)).serial(0x81).build({.name = TestName("C=FI,CN=Root"), .key = TestKey(1)}));
    return *certificate;
}

Bytes IssuerAndSerial(const Bytes& issuer, const Bytes& serialNumber)
{
    return Tlv(der::sequence, {issuer, Tlv(der::integer, serialNumber)});
}

} // namespace

TEST(IssuerAndSerialNumber, IsBuiltOfACertificateAndMeansIt)
{
    CCryptoIssuerAndSerialNumber built(CertificateOfTest());
    const Bytes der = BytesOf(built.BuildDer());
    EXPECT_EQ(der, IssuerAndSerial(TestName("C=FI,CN=Root"), {0x00, 0x81}));
    CCryptoIssuerAndSerialNumber read;
    ASSERT_TRUE(read.ParseDer(ElementOf(der)));
    EXPECT_TRUE(read.means(CertificateOfTest()));
    EXPECT_EQ(BytesOf(read.BuildDer()), der);
    EXPECT_TRUE(CCryptoIssuerAndSerialNumber().BuildDer().isEmpty());
    EXPECT_FALSE(CCryptoIssuerAndSerialNumber().means(CCrypto_X509_Certificate()));
}

TEST(IssuerAndSerialNumber, ComparesTheNameAsNames)
{
    CCryptoIssuerAndSerialNumber pair;
    ASSERT_TRUE(pair.ParseDer(ElementOf(IssuerAndSerial(TestName("C=FI,CN= ROOT "), {0x00, 0x81}))));
    EXPECT_TRUE(pair.means(CertificateOfTest()));
    ASSERT_TRUE(pair.ParseDer(ElementOf(IssuerAndSerial(TestName("C=FI,CN=Root"), {0x01, 0x81}))));
    EXPECT_FALSE(pair.means(CertificateOfTest()));
    ASSERT_TRUE(pair.ParseDer(ElementOf(IssuerAndSerial(TestName("C=SE,CN=Root"), {0x00, 0x81}))));
    EXPECT_FALSE(pair.means(CertificateOfTest()));
}

TEST(IssuerAndSerialNumber, RefusesOtherStructuresAndStaysEmpty)
{
    const Bytes name = TestName("CN=Root");
    CCryptoIssuerAndSerialNumber pair(CertificateOfTest());
    EXPECT_TRUE(pair.ParseDer(ElementOf(IssuerAndSerial(name, Bytes(64, 1)))));
    for (const Bytes& der : {IssuerAndSerial(name, Bytes(65, 1)), IssuerAndSerial(name, {}), IssuerAndSerial(name, {0, 1}),
                             IssuerAndSerial(Tlv(der::sequence, NumberTlv(1)), {1}), Tlv(der::sequence, name),
                             IssuerAndSerial(Tlv(der::sequence, TestExtension("2.5.29.14", Bytes{4, 0})), {1}),
                             Tlv(der::sequence, {name, NumberTlv(1), NumberTlv(1)})}) {
        EXPECT_FALSE(pair.ParseDer(ElementOf(der))) << Hex(der);
        EXPECT_TRUE(pair.issuer().isEmpty() && pair.serialNumber().isEmpty());
    }
}
