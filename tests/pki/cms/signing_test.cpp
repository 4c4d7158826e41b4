#include "crypto/hash/hash.h"
#include "pki/cms/document.h"
#include "pki/cms/pkcs7.h"
#include "pki/x509/signature.h"
#include "tests/pki/cms/cms_files.h"
#include "tests/pki/keys/test_keys.h"
#include "tests/pki/x509/test_authority.h"

#include <algorithm>
#include <functional>

using namespace ccrypto;

namespace {

const TestIssuer& SigningAuthority()
{
    static const TestIssuer issuer = {.name = TestName("C=FI,CN=CMS authority"), .key = TestKey(1)};
    return issuer;
}

CertificatePtr LoadedSigner(const Bytes& der)
{
    CertificatePtr certificate = LoadCertificate(der);
    EXPECT_NE(certificate, nullptr);
    return certificate;
}

const Bytes contentOctets = TextBytes("content");

/// A request that succeeds.
SCryptoSignature SigningRequestOf(const TestKeyPtr& key, algorithm::Id hash = algorithm::sha256)
{
    SCryptoSignature request;
    request.signer =
        LoadedSigner(TestCertificate("C=FI,CN=Signer", key).serial(4711).extension(TestKeyUsage(0x80)).build(SigningAuthority()));
    request.key = key.get();
    request.hash = hash;
    request.content = contentOctets;
    request.now = CCryptoDateTime({.year = 2026, .month = 11, .day = 23, .hour = 12}, true);
    return request;
}

/// The signer of a message, which must parse; the document keeps it.
const CCryptoPKCS7SignerInfo* OnlySigner(CCryptoPKCS7Document& document, const element& der)
{
    if (!document.Parse(der.bytes()) || document.signedData() == nullptr || document.signedData()->signerInfos.size() != 1)
        return nullptr;
    return document.signedData()->signerInfos[0].get();
}

/// The dotted types of attributes, joined by blanks.
std::string TypesOf(const CCryptoPKCS7Attributes* attributes)
{
    std::string types;
    for (std::uint32_t index = 0; attributes != nullptr && index < attributes->size(); ++index)
        types += (types.empty() ? "" : " ") + std::string(attributes->attribute(index).type().dotted().view());
    return types;
}

std::string OctetsOf(const CCryptoPKCS7Attributes& attributes, const Oid& type)
{
    const CCryptoPKCS7Attribute* const attribute = attributes.find(type);
    const elementNode* const value = attribute != nullptr ? attribute->onlyValue() : nullptr;
    return value != nullptr ? HexOf(CCryptoParser::ToDer(value)) : std::string("none");
}

/// OCSPResponse of this basic response.
Bytes OcspResponseOf(const Bytes& basic, std::uint8_t status = 0)
{
    return Tlv(0x30, {NumberTlv(status, 0x0A), Tlv(0xA0, Tlv(0x30, {OidTlv("1.3.6.1.5.5.7.48.1.1"), Tlv(0x04, basic)}))});
}

constexpr const char* typeAndDigest = "1.2.840.113549.1.9.3 1.2.840.113549.1.9.4 1.2.840.113549.1.9.16.2.47";

/// A list long enough that its attribute is longer than that of the certificate.
const Bytes& LongList()
{
    static const Bytes list = [] {
        TestCrl crl;
        for (std::uint64_t serial = 1; serial <= 30; ++serial)
            crl.entry(serial);
        return crl.build(SigningAuthority());
    }();
    return list;
}

/// A key that has been pulled.
class DeadKey : public ICryptoKeyPair, public ICryptoSigner {
public:
    explicit DeadKey(ICryptoKeyPair& alive) : alive_(alive) {}

    algorithm::Id algorithmId() const override { return alive_.algorithmId(); }
    algorithm::Id curveId() const override { return alive_.curveId(); }
    const char* name() const override { return alive_.name(); }
    std::uint32_t keySize() const override { return alive_.keySize(); }
    bool hasPrivate() const override { return true; }
    std::vector<SCryptoKeyNumber> publicNumbers() const override { return alive_.publicNumbers(); }
    std::vector<SCryptoKeyNumber> privateNumbers() const override { return {}; }
    element publicKeyInfo() const override { return alive_.publicKeyInfo(); }
    element privateKeyInfo() const override { return {}; }
    element ownForm(KeyForm) const override { return {}; }
    std::unique_ptr<ICryptoKeyPair> publicHalf() const override { return alive_.publicHalf(); }
    ICryptoSigner* signer() override { return this; }
    ICryptoDecrypter* decrypter() override { return nullptr; }
    ICryptoKeyAgreement* agreement() override { return nullptr; }
    std::uint32_t signatureSize() const override { return 64; }
    bool signsMessages() const override { return false; }
    element sign(algorithm::Id, std::span<const std::uint8_t>, const SCryptoPadding&) override { return {}; }
    bool verify(algorithm::Id, std::span<const std::uint8_t>, std::span<const std::uint8_t>, const SCryptoPadding&) const override
    {
        return false;
    }

private:
    ICryptoKeyPair& alive_;
};

struct RefusedSignatureCase {
    const char* name;
    std::function<void(SCryptoSignature&)> change;
    const char* reason;
};

/// Takes the place of the signer's certificate.
std::function<void(SCryptoSignature&)> WithSigner(const std::function<TestCertificate()>& make)
{
    return [make](SCryptoSignature& request) { request.signer = LoadedSigner(make().build(SigningAuthority())); };
}

} // namespace

TEST(CmsSigning, WritesAttributesInTheirOrder)
{
    const struct {
        TestKeyPtr key;
        algorithm::Id hash;
        const char* digestOid;
        const char* signatureAlgorithm;
        const char* protection;
    } cases[] = {
        {TestRsaKey(), algorithm::sha256, "2.16.840.1.101.3.4.2.1", "300d06092a864886f70d0101010500",
         "301c300b0609608648016503040201a10d06092a864886f70d0101010500"},
        {TestRsaKey(), algorithm::sha384, "2.16.840.1.101.3.4.2.2", "300d06092a864886f70d0101010500",
         "301c300b0609608648016503040202a10d06092a864886f70d0101010500"},
        {TestKey(2), algorithm::sha256, "2.16.840.1.101.3.4.2.1", "300a06082a8648ce3d040302",
         "3019300b0609608648016503040201a10a06082a8648ce3d040302"},
        {TestKey(2), algorithm::sha512, "2.16.840.1.101.3.4.2.3", "300a06082a8648ce3d040304",
         "3019300b0609608648016503040203a10a06082a8648ce3d040304"},
        {TestEd25519Key(), algorithm::sha512, "2.16.840.1.101.3.4.2.3", "300506032b6570",
         "3014300b0609608648016503040203a10506032b6570"},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(std::string(entry.key->name()) + " " + entry.digestOid);
        SCryptoSignature request = SigningRequestOf(entry.key, entry.hash);
        request.addsSigningTime = true;
        request.addsAlgorithmProtection = true;
        const element der = CCryptoPKCS7::ComputeSignature(request);
        CCryptoPKCS7Document document;
        const CCryptoPKCS7SignerInfo* const info = OnlySigner(document, der);
        ASSERT_NE(info, nullptr);
        EXPECT_EQ(TypesOf(info->signedAttributes.get()), "1.2.840.113549.1.9.3 1.2.840.113549.1.9.5 1.2.840.113549.1.9.52 "
                                                         "1.2.840.113549.1.9.4 1.2.840.113549.1.9.16.2.47");
        EXPECT_EQ(info->unsignedAttributes, nullptr);
        EXPECT_STREQ(info->digestAlgorithm.oid().c_str(), entry.digestOid);
        EXPECT_EQ(HexOf(info->signatureAlgorithm.readOctets()), entry.signatureAlgorithm);
        EXPECT_EQ(OctetsOf(*info->signedAttributes, cms::contentType), "06092a864886f70d010701");
        EXPECT_EQ(OctetsOf(*info->signedAttributes, cms::signingTime), "170d3236313132333132303030305a");
        EXPECT_EQ(OctetsOf(*info->signedAttributes, cms::algorithmProtection), entry.protection);
        const auto hash = ICryptoHash::Create(entry.hash);
        EXPECT_EQ(OctetsOf(*info->signedAttributes, cms::messageDigest), Hex(Tlv(0x04, BytesOf(hash->digestOf(contentOctets)))));
        const Bytes issuerSerial = Tlv(0x30, {Tlv(0x30, Tlv(0xA4, SigningAuthority().name)), NumberTlv(4711)});
        const Bytes hashAlgorithm = Tlv(0x30, OidTlv(entry.digestOid));
        const Bytes hashed = Tlv(0x04, BytesOf(hash->digestOf(request.signer->der().bytes())));
        EXPECT_EQ(OctetsOf(*info->signedAttributes, cms::signingCertificateV2),
                  Hex(Tlv(0x30, Tlv(0x30, Tlv(0x30, {hashAlgorithm, hashed, issuerSerial})))));

        const element set = info->signedAttributes->encodedSet();
        EXPECT_EQ(SortedSet(set), set);
        const auto signatureAlgorithm = ReadSignatureAlgorithm(SignatureAlgorithmFor(*entry.key, entry.hash).bytes());
        ASSERT_TRUE(signatureAlgorithm);
        EXPECT_EQ(VerifySignature(*entry.key, *signatureAlgorithm, set.bytes(), info->signature.bytes()), SignatureResult::good);
    }
}

TEST(CmsSigning, LeavesOutWhatIsNotAskedFor)
{
    SCryptoSignature request = SigningRequestOf(TestKey(2));
    // A mode alone embeds nothing.
    for (const RevocationEmbedding mode : {RevocationEmbedding::none, RevocationEmbedding::pdf, RevocationEmbedding::etsi}) {
        request.embedding = mode;
        CCryptoPKCS7Document document;
        const CCryptoPKCS7SignerInfo* const info = OnlySigner(document, CCryptoPKCS7::ComputeSignature(request));
        ASSERT_NE(info, nullptr);
        EXPECT_EQ(TypesOf(info->signedAttributes.get()), typeAndDigest);
        EXPECT_EQ(info->unsignedAttributes, nullptr);
    }
    request.embedding = RevocationEmbedding::none;
    request.crl = ElementOf(LongList());
    CCryptoPKCS7Document document;
    const CCryptoPKCS7SignerInfo* const info = OnlySigner(document, CCryptoPKCS7::ComputeSignature(request));
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(TypesOf(info->signedAttributes.get()), typeAndDigest);
}

TEST(CmsSigning, EmbedsWhatProvesTheStatus)
{
    const Bytes basic = Tlv(0x30, Tlv(0x04, Bytes(500, 0x77)));
    const Bytes response = OcspResponseOf(basic);
    const struct {
        RevocationEmbedding mode;
        bool hasList;
        bool hasResponse;
        Bytes value;
    } cases[] = {
        {RevocationEmbedding::pdf, true, false, Tlv(0x30, Tlv(0xA0, Tlv(0x30, LongList())))},
        {RevocationEmbedding::pdf, true, true, Tlv(0x30, Tlv(0xA1, Tlv(0x30, response)))},
        {RevocationEmbedding::etsi, true, false, Tlv(0x30, Tlv(0xA0, Tlv(0x30, LongList())))},
        {RevocationEmbedding::etsi, true, true, Tlv(0x30, Tlv(0xA1, Tlv(0x30, basic)))},
    };
    const CertificatePtr signer = SigningRequestOf(TestKey(2)).signer;
    for (const auto& entry : cases) {
        SCryptoSignature request = SigningRequestOf(TestKey(2));
        request.signer = signer;
        CCryptoPKCS7Document plain;
        const CCryptoPKCS7SignerInfo* const other = OnlySigner(plain, CCryptoPKCS7::ComputeSignature(request));
        ASSERT_NE(other, nullptr);
        request.embedding = entry.mode;
        if (entry.hasList)
            request.crl = ElementOf(LongList());
        if (entry.hasResponse)
            request.ocspResponse = ElementOf(response);
        CCryptoPKCS7Document document;
        const CCryptoPKCS7SignerInfo* const info = OnlySigner(document, CCryptoPKCS7::ComputeSignature(request));
        ASSERT_NE(info, nullptr);
        if (entry.mode == RevocationEmbedding::pdf) {
            EXPECT_EQ(OctetsOf(*info->signedAttributes, cms::pdfRevocationInformation), Hex(entry.value));
            EXPECT_EQ(info->unsignedAttributes, nullptr);
            continue;
        }
        ASSERT_NE(info->unsignedAttributes, nullptr);
        EXPECT_EQ(OctetsOf(*info->unsignedAttributes, cms::revocationReferences), Hex(entry.value));
        // What is hashed is the same as without.
        EXPECT_EQ(TypesOf(info->signedAttributes.get()), typeAndDigest);
        EXPECT_EQ(info->signedAttributes->encodedSet(), other->signedAttributes->encodedSet());
    }
}

TEST(CmsSigning, EmbedsOrDetachesTheContent)
{
    SCryptoSignature request = SigningRequestOf(TestKey(2));
    const Bytes extra = TestCertificate(SigningAuthority()).authority().build(SigningAuthority());
    const Bytes small = TestCertificate("CN=A", TestKey(3)).build(SigningAuthority());
    request.extraCertificates = {LoadedSigner(extra), request.signer, LoadedSigner(extra), LoadedSigner(small)};
    CCryptoPKCS7Document attached;
    ASSERT_NE(OnlySigner(attached, CCryptoPKCS7::ComputeSignature(request)), nullptr);
    EXPECT_TRUE(attached.signedData()->hasContent);
    EXPECT_EQ(attached.signedData()->content.view(), "content");
    EXPECT_EQ(attached.signedData()->contentType, OidOfContentType(ContentType::data));
    ASSERT_EQ(attached.signedData()->certificates.size(), 3u);
    // Whichever comes first by its octets does, whatever the caller's order.
    std::vector<Bytes> all = {BytesOf(request.signer->der()), extra, small};
    std::ranges::sort(all);
    for (std::size_t index = 0; index < all.size(); ++index)
        EXPECT_EQ(BytesOf(attached.signedData()->certificates[index]), all[index]);
    EXPECT_TRUE(attached.signedData()->crls.empty());

    const Bytes nothing;
    request.content = nothing;
    CCryptoPKCS7Document empty;
    ASSERT_NE(OnlySigner(empty, CCryptoPKCS7::ComputeSignature(request)), nullptr);
    EXPECT_TRUE(empty.signedData()->hasContent);
    EXPECT_TRUE(empty.signedData()->content.isEmpty());

    request.content.reset();
    request.documentDigest = ElementOf(Bytes(32, 0x11));
    CCryptoPKCS7Document detached;
    const CCryptoPKCS7SignerInfo* const info = OnlySigner(detached, CCryptoPKCS7::ComputeSignature(request));
    ASSERT_NE(info, nullptr);
    EXPECT_FALSE(detached.signedData()->hasContent);
    EXPECT_EQ(OctetsOf(*info->signedAttributes, cms::messageDigest), Hex(Tlv(0x04, Bytes(32, 0x11))));
}

TEST(CmsSigning, RefusesWithoutOutput)
{
    const TestKeyPtr key = TestKey(2);
    const TestKeyPtr otherKey = TestKey(3);
    const TestKeyPtr rsa = TestRsaKey();
    DeadKey dead(*key);
    const std::unique_ptr<ICryptoKeyPair> agreement = KeyOf(algorithm::x25519);
    const auto plain = [&] { return TestCertificate("CN=Signer", key); };
    const auto rsaSigner = [&](algorithm::Id hash, bool isProtected) {
        return [=](SCryptoSignature& request) {
            request = SigningRequestOf(rsa, hash);
            request.addsAlgorithmProtection = isProtected;
        };
    };
    const RefusedSignatureCase cases[] = {
        {"no certificate", [](SCryptoSignature& request) { request.signer.reset(); }, "Invalid subject certificate"},
        {"a certificate that never loaded",
         [](SCryptoSignature& request) { request.signer = std::make_shared<const CCrypto_X509_Certificate>(); },
         "Invalid subject certificate"},
        {"not valid any more", WithSigner([&] { return plain().validity("20200101000000Z", "20261123115959Z"); }),
         "VerifyCertificate: Expired: "},
        {"not valid yet", WithSigner([&] { return plain().validity("20261123120001Z", "20300101000000Z"); }),
         "VerifyCertificate: Not valid yet: "},
        {"the certificate of another key", WithSigner([&] { return TestCertificate("CN=Signer", otherKey); }),
         "VerifyCertificate: The certificate is not one of the signing key"},
        {"a key usage for certificates alone", WithSigner([&] { return plain().extension(TestKeyUsage(0x24)); }),
         "VerifyCertificate: The key usage allows no signatures"},
        {"an unknown critical extension", WithSigner([&] {
             return plain().extension(TestExtension("1.2.3.4", {0x05, 0x00}, true));
         }),
         "VerifyCertificate: A critical extension is not known: 1.2.3.4"},
        {"a malformed extension", WithSigner([&] {
             return plain().extension(TestExtension("2.5.29.15", {0x05, 0x00}));
         }),
         "VerifyCertificate: An extension is malformed"},
        {"an expired certificate and no key",
         [&](SCryptoSignature& request) {
             WithSigner([&] { return plain().validity("20200101000000Z", "20261123115959Z"); })(request);
             request.key = nullptr;
         },
         "VerifyCertificate: Expired: "},
        {"no key", [](SCryptoSignature& request) { request.key = nullptr; }, "Unknown key type?"},
        {"a key that does not sign", [&](SCryptoSignature& request) { request.key = agreement.get(); }, "Unknown key type?"},
        {"a key that was pulled", [&](SCryptoSignature& request) { request.key = &dead; }, "signHash: The key does not sign"},
        {"SHA-1", [](SCryptoSignature& request) { request.hash = algorithm::sha1; }, "Unsupported hash function"},
        {"MD5 with RSA", rsaSigner(algorithm::md5, false), "Unsupported hash function"},
        {"SHA-1 with RSA", rsaSigner(algorithm::sha1, false), "Unsupported hash function"},
        {"SHA-224 with ECDSA", [](SCryptoSignature& request) { request.hash = algorithm::sha224; }, "Unsupported hash function"},
        {"SHA-224 with RSA, whose attributes would not be sorted", rsaSigner(algorithm::sha224, true),
         "The signed attributes would not be in the order of DER"},
        {"SHA-256 with Ed25519", [](SCryptoSignature& request) { request = SigningRequestOf(TestEd25519Key()); },
         "Unsupported hash function"},
        {"a digest of another hash",
         [](SCryptoSignature& request) {
             request.content.reset();
             request.documentDigest = ElementOf(Bytes(20, 1));
         },
         "The digest of the document is not one of SHA-256"},
        {"neither digest nor content", [](SCryptoSignature& request) { request.content.reset(); },
         "The digest of the document is not one of SHA-256"},
        {"a list in the place of a response",
         [](SCryptoSignature& request) {
             request.embedding = RevocationEmbedding::pdf;
             request.ocspResponse = ElementOf(LongList());
         },
         "The OCSP response holds no basic response"},
        {"octets after the basic response",
         [](SCryptoSignature& request) {
             request.embedding = RevocationEmbedding::pdf;
             request.ocspResponse = ElementOf(OcspResponseOf({0x30, 0x00, 0x05, 0x00}));
         },
         "The OCSP response holds no basic response"},
        {"a response in the place of a list",
         [](SCryptoSignature& request) {
             request.crl = ElementOf(OcspResponseOf({0x30, 0x00}));
         },
         "The revocation list is not one"},
        {"the digest of other content", [](SCryptoSignature& request) { request.documentDigest = ElementOf(Bytes(32, 1)); },
         "The digest of the document is not that of its content"},
        {"a list that is not DER",
         [](SCryptoSignature& request) {
             request.crl = ElementOf({0x30, 0x01});
         },
         "What is to prove the status of the certificate is not DER"},
        {"a response that is not DER",
         [](SCryptoSignature& request) {
             request.ocspResponse = ElementOf({0x30, 0x80, 0, 0});
         },
         "What is to prove the status of the certificate is not DER"},
        {"a response without a basic response",
         [](SCryptoSignature& request) {
             request.embedding = RevocationEmbedding::etsi;
             request.ocspResponse = ElementOf(OcspResponseOf({0x30, 0x00}, 6));
         },
         "The OCSP response holds no basic response"},
        {"an extra certificate that is none", [](SCryptoSignature& request) { request.extraCertificates = {nullptr}; },
         "A certificate to be embedded is not DER, or there are too many"},
    };
    for (const RefusedSignatureCase& entry : cases) {
        SCryptoSignature request = SigningRequestOf(key);
        EXPECT_FALSE(CCryptoPKCS7::ComputeSignature(request).isEmpty());
        entry.change(request);
        ForgetFailure();
        EXPECT_TRUE(CCryptoPKCS7::ComputeSignature(request).isEmpty()) << entry.name;
        EXPECT_TRUE(ReasonOfFailure().starts_with(entry.reason)) << entry.name << ": " << ReasonOfFailure();
    }
}

TEST(CmsSigning, LastsAsLongAsAUtcTime)
{
    SCryptoSignature request = SigningRequestOf(TestKey(2));
    request.signer = LoadedSigner(
        TestCertificate("CN=Signer", TestKey(2)).validity("20200101000000Z", "20990101000000Z").build(SigningAuthority()));
    for (const std::int32_t year : {2049, 2050}) {
        request.now = CCryptoDateTime({.year = year, .month = 12, .day = 31, .hour = 23, .minute = 59, .second = 59}, true);
        request.addsSigningTime = true;
        ForgetFailure();
        EXPECT_EQ(CCryptoPKCS7::ComputeSignature(request).isEmpty(), year == 2050);
        request.addsSigningTime = false;
        EXPECT_FALSE(CCryptoPKCS7::ComputeSignature(request).isEmpty());
    }
    EXPECT_EQ(ReasonOfFailure(), "The signing time is not in the years 1950 to 2049, which a UTCTime can say");
}
