#include "pki/cms/document.h"
#include "tests/pki/cms/cms_files.h"
#include "tests/pki/keys/test_keys.h"

#include <algorithm>

using namespace ccrypto;

namespace {

struct SignedFileCase {
    const char* file;
    std::uint32_t version;
    std::size_t certificates;
    std::size_t signers;
    bool hasContent;
    bool isByKey;
    std::uint32_t signedAttributes;
    algorithm::Id digest;
};

const SignedFileCase signedFileCases[] = {
    {"ec_detached", 1, 2, 1, false, false, 3, algorithm::sha256},
    {"ec_attached", 1, 2, 1, true, false, 3, algorithm::sha256},
    {"ec_key_identifier", 3, 2, 1, true, true, 3, algorithm::sha256},
    {"ec_no_attributes", 1, 2, 1, true, false, 0, algorithm::sha256},
    {"ec_stream", 1, 2, 1, true, false, 3, algorithm::sha256},
    {"ec_cades_sha384", 1, 2, 1, true, false, 4, algorithm::sha384},
    {"ec_no_certificates", 1, 1, 1, true, false, 3, algorithm::sha256},
    {"ec_other_type", 3, 2, 1, true, false, 3, algorithm::sha256},
    {"rsa_md5", 1, 2, 1, true, false, 3, algorithm::md5},
    {"two_signers", 1, 3, 2, true, false, 3, algorithm::sha256},
    {"certificates_alone", 1, 1, 0, false, false, 0, algorithm::none},
};

const Bytes dataType = HexOctets("06 09 2A 86 48 86 F7 0D 01 07 01");

Bytes Message(const Bytes& signedData)
{
    return Tlv(0x30, Joined({HexOctets("06 09 2A 86 48 86 F7 0D 01 07 02"), Tlv(0xA0, signedData)}));
}

/// With these between the content and the signers.
Bytes SignedWith(const Bytes& items, const Bytes& signers = {}, std::uint8_t version = 1)
{
    return Message(Tlv(0x30, Joined({NumberTlv(version), Tlv(0x31, Bytes()), Tlv(0x30, dataType), items, Tlv(0x31, signers)})));
}

Bytes Repeated(const Bytes& item, std::size_t count)
{
    Bytes all;
    for (std::size_t index = 0; index < count; ++index)
        all.insert(all.end(), item.begin(), item.end());
    return all;
}

const Bytes sha256Algorithm = HexOctets("30 0B 06 09 60 86 48 01 65 03 04 02 01");
const Bytes issuerAndSerial = HexOctets("30 13 30 0E 31 0C 30 0A 06 03 55 04 03 0C 03 4F 6E 65 02 01 07");
const Bytes keyIdentifier = HexOctets("80 04 01 02 03 04");

Bytes Signer(std::uint8_t version, const Bytes& identifier, const Bytes& attributes = {})
{
    return Tlv(0x30, Joined({NumberTlv(version), identifier, sha256Algorithm, attributes,
                             HexOctets("30 0D 06 09 2A 86 48 86 F7 0D 01 01 01 05 00"), Tlv(0x04, Bytes{1, 2, 3})}));
}

struct SignerVersionCase {
    std::uint8_t version;
    bool isByKey;
    bool isRead;
};

} // namespace

TEST(CmsDocument, ReadsSignedData)
{
    for (const SignedFileCase& entry : signedFileCases) {
        SCOPED_TRACE(entry.file);
        const Bytes file = CmsFile(entry.file);
        CCryptoPKCS7Document document;
        ASSERT_TRUE(document.Parse(file));
        const CCryptoPKCS7SignedDataObject* const data = document.signedData();
        ASSERT_NE(data, nullptr);
        EXPECT_EQ(data->version, entry.version);
        EXPECT_EQ(data->certificates.size(), entry.certificates);
        EXPECT_EQ(data->hasContent, entry.hasContent);
        EXPECT_EQ(data->content.view(), entry.hasContent ? "content" : "");
        ASSERT_EQ(data->signerInfos.size(), entry.signers);
        for (const auto& signer : data->signerInfos) {
            EXPECT_EQ(signer->signer.isByKey(), entry.isByKey);
            EXPECT_EQ(signer->signedAttributes != nullptr ? signer->signedAttributes->size() : 0, entry.signedAttributes);
            EXPECT_EQ(signer->digestAlgorithm.id(), entry.digest);
            EXPECT_FALSE(signer->signature.isEmpty());
        }
        const element der = document.GetDerEncodedObject();
        EXPECT_EQ(BytesOf(der) == file, std::string_view(entry.file) != "ec_stream");
        EXPECT_TRUE(CCryptoPKCS7Document().Parse(der.bytes()));
    }
}

TEST(CmsDocument, CertificatesStayAsTheyAre)
{
    const Bytes certificate = CmsFile("certificate_ec");
    for (const char* const name : {"ec_attached", "ec_stream"}) {
        CCryptoPKCS7Document document;
        ASSERT_TRUE(document.Parse(CmsFile(name)));
        EXPECT_EQ(std::ranges::count_if(document.signedData()->certificates,
                                        [&](const element& one) { return BytesOf(one) == certificate; }),
                  1)
            << name;
    }
    // A list beside an OCSP response of the form for other status, which is BER here.
    const Bytes list = HexOctets("30 03 02 01 05");
    const Bytes response = HexOctets("A1 0F 06 08 2B 06 01 05 05 07 10 02 30 03 0A 01 06");
    CCryptoPKCS7Document document;
    ASSERT_TRUE(document.Parse(SignedWith(Tlv(0xA1, Joined({list, response})))));
    ASSERT_EQ(document.signedData()->crls.size(), 1u);
    ASSERT_EQ(document.signedData()->ocspResponses.size(), 1u);
    EXPECT_EQ(HexOf(document.signedData()->ocspResponses[0]), "30030a0106");
    // What an issuer signed is not written anew.
    EXPECT_FALSE(document.Parse(SignedWith(Tlv(0xA0, HexOctets("30 80 02 01 05 00 00")))));
    EXPECT_FALSE(document.Parse(SignedWith(Tlv(0xA0, HexOctets("30 81 03 02 01 05")))));
    EXPECT_FALSE(document.Parse(SignedWith(Tlv(0xA0, HexOctets("30 05 30 80 05 00 00 00")))));
    EXPECT_EQ(document.signedData(), nullptr);
}

TEST(CmsDocument, IgnoresOtherCertificateForms)
{
    CCryptoPKCS7Document document;
    ASSERT_TRUE(document.Parse(SignedWith(HexOctets("A0 0A A1 03 02 01 05 30 03 02 01 06"))));
    ASSERT_EQ(document.signedData()->certificates.size(), 1u);
    EXPECT_EQ(HexOf(document.signedData()->certificates[0]), "3003020106");
}

TEST(CmsDocument, KnowsVersions)
{
    for (std::uint8_t version = 0; version < 8; ++version) {
        ForgetFailure();
        const bool isKnown = version == 1 || (version >= 3 && version <= 5);
        EXPECT_EQ(CCryptoPKCS7Document().Parse(SignedWith({}, {}, version)), isKnown) << int{version};
    }
    for (const SignerVersionCase& entry : {SignerVersionCase{1, false, true},
                                           {3, true, true},
                                           {1, true, false},
                                           {3, false, false},
                                           {0, false, false},
                                           {2, true, false},
                                           {4, true, false}}) {
        ForgetFailure();
        const Bytes signer = Signer(entry.version, entry.isByKey ? keyIdentifier : issuerAndSerial);
        EXPECT_EQ(CCryptoPKCS7SignerInfo().ParseDer(ElementOf(signer)), entry.isRead) << int{entry.version};
        CCryptoPKCS7Document document;
        EXPECT_EQ(document.Parse(SignedWith({}, signer)), entry.isRead);
    }
}

TEST(CmsDocument, HasLimits)
{
    constexpr std::size_t limit = 10'000;
    const Bytes attribute = HexOctets("30 09 06 03 2A 03 04 31 02 05 00");
    const auto values = [](std::size_t count) {
        return Tlv(0xA0, Tlv(0x30, Joined({HexOctets("06 03 2A 03 04"), Tlv(0x31, Repeated({0x05, 0x00}, count))})));
    };
    const struct {
        const char* name;
        Bytes atLimit;
        Bytes beyond;
    } cases[] = {
        {"certificates", SignedWith(Tlv(0xA0, Repeated({0x30, 0x00}, limit))),
         SignedWith(Tlv(0xA0, Repeated({0x30, 0x00}, limit + 1)))},
        {"values", SignedWith({}, Signer(1, issuerAndSerial, values(limit))),
         SignedWith({}, Signer(1, issuerAndSerial, values(limit + 1)))},
        {"attributes", SignedWith({}, Signer(1, issuerAndSerial, Tlv(0xA0, Repeated(attribute, 100)))),
         SignedWith({}, Signer(1, issuerAndSerial, Tlv(0xA0, Repeated(attribute, limit + 1))))},
        {"signers", SignedWith({}, Repeated(Signer(1, issuerAndSerial), 20)), SignedWith({}, Repeated({0x30, 0x00}, limit + 1))},
    };
    for (const auto& entry : cases) {
        ForgetFailure();
        EXPECT_TRUE(CCryptoPKCS7Document().Parse(entry.atLimit)) << entry.name << ": " << ReasonOfFailure();
        EXPECT_FALSE(CCryptoPKCS7Document().Parse(entry.beyond)) << entry.name;
    }
}

TEST(CmsDocument, RefusesPartsOfAMessage)
{
    const Bytes file = CmsFile("ec_stream");
    CCryptoPKCS7Document document;
    for (std::size_t length = 0; length < file.size(); length += 3)
        EXPECT_FALSE(document.Parse(std::span(file).first(length))) << length;
    const Bytes signer = Signer(1, issuerAndSerial);
    EXPECT_TRUE(document.Parse(SignedWith({}, signer)));
    // Attributes without any, content that is not an OCTET STRING, and what follows the last item.
    EXPECT_FALSE(document.Parse(SignedWith({}, Signer(1, issuerAndSerial, Tlv(0xA0, Bytes())))));
    EXPECT_FALSE(document.Parse(SignedWith({}, Signer(1, issuerAndSerial, Tlv(0xA0, HexOctets("30 05 06 03 2A 03 04"))))));
    EXPECT_FALSE(document.Parse(SignedWith({}, Signer(1, issuerAndSerial, Tlv(0xA0, HexOctets("30 07 06 03 2A 03 04 30 00"))))));
    const Bytes content = Tlv(0x30, Joined({dataType, Tlv(0xA0, HexOctets("02 01 05"))}));
    EXPECT_FALSE(document.Parse(Message(Tlv(0x30, Joined({HexOctets("02 01 01 31 00"), content, HexOctets("31 00")})))));
    EXPECT_FALSE(
        document.Parse(Message(Tlv(0x30, Joined({HexOctets("02 01 01 31 00"), Tlv(0x30, dataType), HexOctets("31 00 05 00")})))));
    EXPECT_EQ(document.contentInfo(), nullptr);
}

TEST(CmsDocument, NamesTypesThatItDoesNotOpen)
{
    CCryptoPKCS7Document document;
    ASSERT_TRUE(document.Parse(CmsFile("digested")));
    EXPECT_EQ(document.contentInfo()->contentType(), ContentType::digestedData);
    EXPECT_EQ(document.signedData(), nullptr);
    EXPECT_FALSE(document.Parse(HexOctets("30 07 06 03 2A 03 04 A0 00")));
    ASSERT_TRUE(document.Parse(HexOctets("30 05 06 03 2A 03 04")));
    EXPECT_EQ(document.contentInfo()->contentType(), ContentType::other);
    EXPECT_STREQ(document.contentInfo()->contentOid().dotted().c_str(), "1.2.3.4");
    for (std::uint32_t number = 1; number <= 10; ++number) {
        const auto type = static_cast<ContentType>(number);
        EXPECT_EQ(ContentTypeOf(OidOfContentType(type)), type);
    }
    EXPECT_EQ(ContentTypeOf(Oid()), ContentType::other);
}
