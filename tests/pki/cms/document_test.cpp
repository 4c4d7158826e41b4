#include "pki/cms/document.h"
#include "tests/pki/cms/cms_files.h"
#include "tests/pki/keys/test_keys.h"
#include "tests/support/captured_log.h"

#include <gmock/gmock.h>

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

        auto signedData = std::make_unique<CCryptoPKCS7SignedDataObject>();
        ASSERT_TRUE(signedData->Parse(document.contentInfo()->content()));
        signedData->content = data->content;
        CCryptoPKCS7Document written;
        written.setSignedData(std::move(signedData));
        EXPECT_EQ(HexOf(written.GetDerEncodedObject()), entry.version == 1 && entry.signedAttributes != 0 ? HexOf(der) : "");
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
}

TEST(CmsDocument, SaysWhatIsWrong)
{
    const auto attribute = [](std::string_view octets) {
        return SignedWith({}, Signer(1, issuerAndSerial, Tlv(0xA0, HexOctets(octets))));
    };
    const auto data = [](const Bytes& items) { return Message(Tlv(0x30, Joined({HexOctets("02 01 01 31 00"), items}))); };
    const struct {
        const char* name;
        Bytes message;
        std::string_view reason; ///< or its beginning
    } cases[] = {
        {"a version of the message", SignedWith({}, {}, 2), "Invalid version"},
        {"a version of a signer, whose identifier is unknown", SignedWith({}, Signer(9, HexOctets("A1 00"))), "Invalid version"},
        {"the version of the other identifier", SignedWith({}, Signer(3, issuerAndSerial)), "Invalid version"},
        {"an unknown identifier of a signer", SignedWith({}, Signer(1, HexOctets("A1 00"))),
         "The signer is not identified by issuer and serial number, nor by a key identifier"},
        {"attributes without any", attribute(""), "There is no attribute"},
        {"an empty attribute", attribute("30 00"), "Attribute type not found?"},
        {"an attribute without a type", attribute("30 04 31 02 05 00"), "Attribute type not found?"},
        {"a number as its type", attribute("30 07 02 01 05 31 02 05 00"), "Attribute type not found?"},
        {"an empty type", attribute("30 06 06 00 31 02 05 00"), "Attribute type not found?"},
        {"an attribute without values", attribute("30 05 06 03 2A 03 04"), "attrValues parsing error"},
        {"a SEQUENCE as its values", attribute("30 09 06 03 2A 03 04 30 02 05 00"), "attrValues parsing error"},
        {"an empty set of values", attribute("30 07 06 03 2A 03 04 31 00"), "attrValues parsing error"},
        {"an attribute that is not one", attribute("02 01 05"), "ParseNode() failed: SEQUENCE: the data holds INTEGER (item 1)"},
        {"an item after the values", attribute("30 0B 06 03 2A 03 04 31 02 05 00 05 00"),
         "ParseNode() failed: Data follows the last item of the template"},
        {"content that is a number", data(Joined({Tlv(0x30, Joined({dataType, Tlv(0xA0, NumberTlv(5))})), HexOctets("31 00")})),
         "The content is not an OCTET STRING"},
        {"content that is not there", data(Joined({Tlv(0x30, Joined({dataType, HexOctets("A0 00")})), HexOctets("31 00")})),
         "The content is not one element"},
        {"no set of signers", data(Tlv(0x30, dataType)), "ParseNode() failed: SET"},
        {"an item after the signers", data(Joined({Tlv(0x30, dataType), HexOctets("31 00 05 00")})),
         "ParseNode() failed: Data follows the last item of the template"},
    };
    CCryptoPKCS7Document document;
    ASSERT_TRUE(document.Parse(SignedWith({}, Signer(1, issuerAndSerial))));
    for (const auto& entry : cases) {
        ForgetFailure();
        EXPECT_FALSE(document.Parse(entry.message)) << entry.name;
        EXPECT_TRUE(ReasonOfFailure().starts_with(entry.reason)) << entry.name << ": " << ReasonOfFailure();
        EXPECT_EQ(document.contentInfo(), nullptr) << entry.name;
    }
}

TEST(CmsDocument, LogsWhatItReads)
{
    const Bytes file = CmsFile("ec_attached");
    const CapturedLog log;
    CCryptoPKCS7Document document;
    ASSERT_TRUE(document.Parse(file));
    for (const char* const name :
         {"CCryptoPKCS7Document::CCryptoPKCS7Document", "CCryptoPKCS7Document::Parse",
          "CCryptoPKCS7contentBase::CCryptoPKCS7contentBase", "CCryptoPKCS7ContentInfoObject::CCryptoPKCS7ContentInfoObject",
          "CCryptoPKCS7ContentInfoObject::ParseNode", "CCryptoPKCS7SignedDataObject::CCryptoPKCS7SignedDataObject",
          "CCryptoPKCS7SignedDataObject::ParseNode", "CCryptoPKCS7SignerInfo::CCryptoPKCS7SignerInfo",
          "CCryptoPKCS7SignerInfo::ParseNode", "CCryptoPKCS7Attributes::CCryptoPKCS7Attributes",
          "CCryptoPKCS7Attributes::ParseNode", "CCryptoPKCS7Attribute::CCryptoPKCS7Attribute", "CCryptoPKCS7Attribute::ParseNode",
          "OID = 1.2.840.113549.1.7.2 (id-signedData)", "OID = 1.2.840.113549.1.7.1 (id-data)"})
        EXPECT_THAT(log.texts(), testing::Contains(testing::HasSubstr(name)));
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
