#include "asn1/der/pem.h"
#include "asn1/parser/parser.h"
#include "pki/x509/certificate.h"
#include "pki/x509/name.h"

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
        EXPECT_EQ(NameText(certificate.subject()), NameText(subject.bytes()));
        CCrypto_X509_ValueList rebuilt;
        ASSERT_TRUE(rebuilt.Parse(certificate.subject().BuildItems(true).get()));
        EXPECT_EQ(rebuilt.GetDerEncodedElement(), subject);
        ASSERT_TRUE(rebuilt.Parse(certificate.extensions().BuildItems(false).get()));
        EXPECT_EQ(rebuilt.values().size(), certificate.extensions().values().size());
    }
}
