#include "crypto/hash/hash.h"
#include "pki/cms/pkcs7.h"
#include "pki/cms/signed_data_verification.h"
#include "tests/pki/cms/signed_verdict.h"
#include "tests/pki/keys/test_keys.h"
#include "tests/pki/x509/test_authority.h"

#include <algorithm>

using namespace ccrypto;

namespace {

const TestIssuer& VerificationRoot()
{
    static const TestIssuer issuer = {.name = TestName("CN=Verification root"), .key = TestKey(1)};
    return issuer;
}

SignedDataTrust TrustInRoot()
{
    SignedDataTrust trust;
    trust.anchors = {LoadCertificate(TestCertificate(VerificationRoot()).authority().build(VerificationRoot()))};
    return trust;
}

Bytes SignerCertificate(std::uint8_t keyUsage = 0x80)
{
    return TestCertificate("CN=Signer", TestKey(2)).serial(7).extension(TestKeyUsage(keyUsage)).build(VerificationRoot());
}

const Bytes sha256Identifier = Tlv(0x30, OidTlv("2.16.840.1.101.3.4.2.1"));
const Bytes ecdsaIdentifier = Tlv(0x30, OidTlv("1.2.840.10045.4.3.2"));
const Bytes ecKeyIdentifier = Tlv(0x30, OidTlv("1.2.840.10045.2.1"));

Bytes Sha256(const Bytes& octets)
{
    return BytesOf(ICryptoHash::Create(algorithm::sha256)->digestOf(octets));
}

Bytes AttributeOf(std::string_view oid, const Bytes& values)
{
    return Tlv(0x30, {OidTlv(oid), Tlv(0x31, values)});
}

const Bytes dataTypeAttribute = AttributeOf("1.2.840.113549.1.9.3", OidTlv("1.2.840.113549.1.7.1"));
const Bytes digestAttribute = AttributeOf("1.2.840.113549.1.9.4", Tlv(0x04, Sha256(verifiedContent)));

/// A message written here, sense or not.
struct TestMessage {
    Bytes attributes = Joined({dataTypeAttribute, digestAttribute}); ///< without the SET
    Bytes signedOctets;                                              ///< empty for the SET of these
    Bytes content = verifiedContent;
    Bytes contentType = OidTlv("1.2.840.113549.1.7.1");
    Bytes certificate = SignerCertificate();
    Bytes crls;
    Bytes digestAlgorithm = sha256Identifier;
    Bytes signatureAlgorithm = ecdsaIdentifier;
    Bytes unsignedAttributes;
    Bytes digestAlgorithms = sha256Identifier; ///< of the message
    std::vector<Bytes> moreSigners;            ///< the same one again, with these unsigned attributes

    [[nodiscard]] Bytes build() const
    {
        const Bytes octets = !signedOctets.empty() ? signedOctets : Tlv(0x31, attributes);
        const Bytes signature = BytesOf(TestKey(2)->signer()->sign(algorithm::sha256, Sha256(octets)));
        const auto info = [&](const Bytes& more) {
            return Tlv(0x30, {NumberTlv(1), Tlv(0x30, {VerificationRoot().name, NumberTlv(7)}), digestAlgorithm,
                              attributes.empty() ? Bytes() : Tlv(0xA0, attributes), signatureAlgorithm, Tlv(0x04, signature),
                              more.empty() ? Bytes() : Tlv(0xA1, more)});
        };
        Bytes infos = info(unsignedAttributes);
        for (const Bytes& more : moreSigners)
            infos = Joined({infos, info(more)});
        const Bytes data =
            Tlv(0x30, {NumberTlv(1), Tlv(0x31, digestAlgorithms), Tlv(0x30, {contentType, Tlv(0xA0, Tlv(0x04, content))}),
                       Tlv(0xA0, certificate), crls.empty() ? Bytes() : Tlv(0xA1, crls), Tlv(0x31, infos)});
        return Tlv(0x30, {OidTlv("1.2.840.113549.1.7.2"), Tlv(0xA0, data)});
    }
    [[nodiscard]] SignerVerdict verdict(bool isCades = false, bool wantsStatus = false) const
    {
        SignedDataOptions options;
        options.validation.at = verificationTime;
        options.validation.status = wantsStatus ? ValidationOptions::Status::leaf : ValidationOptions::Status::none;
        options.requiresSigningCertificate = isCades;
        SignedDataVerdict whole = VerdictOf(build(), TrustInRoot(), options);
        EXPECT_EQ(whole.signers.size(), 1u) << whole.detail.c_str();
        return whole.signers.empty() ? SignerVerdict() : std::move(whole.signers[0]);
    }
    TestMessage& with(const Bytes& more)
    {
        attributes = Joined({attributes, more});
        return *this;
    }
};

Bytes Protection(const Bytes& digest, const Bytes& signatureItems, std::uint8_t tag = 0xA1)
{
    return AttributeOf("1.2.840.113549.1.9.52", Tlv(0x30, {digest, Tlv(tag, signatureItems)}));
}

/// ESSCertIDv2.
Bytes Reference(const Bytes& certificate, const Bytes& more = {})
{
    return Tlv(0x30, {Tlv(0x04, Sha256(certificate)), more});
}

Bytes SigningCertificateV2(const Bytes& references)
{
    return AttributeOf("1.2.840.113549.1.9.16.2.47", Tlv(0x30, Tlv(0x30, references)));
}

Bytes IssuerSerial(const Bytes& name, std::uint64_t serial)
{
    return Tlv(0x30, {Tlv(0x30, Tlv(0xA4, name)), NumberTlv(serial)});
}

} // namespace

TEST(CmsVerification, AttributesStandExactlyOnceAndDescribeTheContent)
{
    const Bytes typeValue = OidTlv("1.2.840.113549.1.7.1");
    const Bytes digestValue = Tlv(0x04, Sha256(verifiedContent));
    const Bytes otherDigest = Tlv(0x04, Sha256(TextBytes("other")));
    const auto type = [](const Bytes& values) { return AttributeOf("1.2.840.113549.1.9.3", values); };
    const auto digest = [](const Bytes& values) { return AttributeOf("1.2.840.113549.1.9.4", values); };
    const auto time = [](const Bytes& values) { return AttributeOf("1.2.840.113549.1.9.5", values); };
    const Bytes now = TestTime("20261123120000Z");
    const Bytes certificate = SignerCertificate();
    const Bytes otherCertificate = TestCertificate("CN=Signer", TestKey(2)).serial(8).build(VerificationRoot());
    const Bytes ecdsa = OidTlv("1.2.840.10045.4.3.2");
    const Bytes named = Tlv(0x30, Reference(certificate));
    const Bytes rootInPrint = Tlv(0x30, Tlv(0x31, Tlv(0x30, {OidTlv("2.5.4.3"), Tlv(0x13, TextBytes("verification ROOT"))})));
    const Bytes both = Joined({dataTypeAttribute, digestAttribute});
    const struct {
        const char* name;
        Bytes attributes;
        Reason reason;
    } cases[] = {
        {"as it should be", both, Reason::none},
        {"no content type", digestAttribute, Reason::malformed},
        {"two content types", Joined({both, dataTypeAttribute}), Reason::malformed},
        {"a content type of two values", Joined({type(Joined({typeValue, typeValue})), digestAttribute}), Reason::malformed},
        {"another content type", Joined({type(OidTlv("1.2.3.4")), digestAttribute}), Reason::badSignature},
        {"a content type that is no identifier", Joined({type(NumberTlv(1)), digestAttribute}), Reason::malformed},
        {"no digest", dataTypeAttribute, Reason::malformed},
        {"two digests", Joined({both, digestAttribute}), Reason::malformed},
        {"a right digest before a wrong one", Joined({dataTypeAttribute, digest(Joined({digestValue, otherDigest}))}),
         Reason::malformed},
        {"another digest", Joined({dataTypeAttribute, digest(otherDigest)}), Reason::badSignature},
        {"a digest that is no octets", Joined({dataTypeAttribute, digest(NumberTlv(1))}), Reason::malformed},
        {"a signing time", Joined({both, time(now)}), Reason::none},
        {"two signing times", Joined({both, time(now), time(now)}), Reason::malformed},
        {"a time that does not exist", Joined({both, time(Tlv(0x17, TextBytes("260231000000Z")))}), Reason::malformed},
        {"the algorithms protected", Joined({both, Protection(sha256Identifier, ecdsa)}), Reason::none},
        {"NULL for no parameters", Joined({both, Protection(Tlv(0x30, {OidTlv("2.16.840.1.101.3.4.2.1"), {5, 0}}), ecdsa)}),
         Reason::none},
        {"another signature algorithm protected", Joined({both, Protection(sha256Identifier, OidTlv("1.2.840.10045.4.3.3"))}),
         Reason::badSignature},
        {"another digest algorithm protected", Joined({both, Protection(Tlv(0x30, OidTlv("2.16.840.1.101.3.4.2.3")), ecdsa)}),
         Reason::badSignature},
        {"an explicit tag of protection", Joined({both, Protection(sha256Identifier, ecdsaIdentifier)}), Reason::badSignature},
        {"a code's algorithm protected", Joined({both, Protection(sha256Identifier, ecdsa, 0xA2)}), Reason::malformed},
        {"more protected than algorithms",
         Joined({both, AttributeOf("1.2.840.113549.1.9.52", Tlv(0x30, {sha256Identifier, Tlv(0xA1, ecdsa), NumberTlv(1)}))}),
         Reason::malformed},
        {"other parameters protected",
         Joined({both, Protection(Tlv(0x30, {OidTlv("2.16.840.1.101.3.4.2.1"), NumberTlv(1)}), ecdsa)}), Reason::badSignature},
        {"two parameters protected",
         Joined({both, Protection(Tlv(0x30, {OidTlv("2.16.840.1.101.3.4.2.1"), {5, 0}, {5, 0}}), ecdsa)}), Reason::badSignature},
        {"the certificate named", Joined({both, SigningCertificateV2(Reference(certificate))}), Reason::none},
        {"with its issuer", Joined({both, SigningCertificateV2(Reference(certificate, IssuerSerial(VerificationRoot().name, 7)))}),
         Reason::none},
        {"with its issuer, written otherwise",
         Joined({both, SigningCertificateV2(Reference(certificate, IssuerSerial(rootInPrint, 7)))}), Reason::none},
        {"more than the issuer",
         Joined({both,
                 SigningCertificateV2(Reference(certificate, Joined({IssuerSerial(VerificationRoot().name, 7), NumberTlv(1)})))}),
         Reason::malformed},
        {"a hash with parameters",
         Joined({both, SigningCertificateV2(Tlv(
                           0x30, {Tlv(0x30, {OidTlv("2.16.840.1.101.3.4.2.1"), NumberTlv(1)}), Tlv(0x04, Sha256(certificate))}))}),
         Reason::malformed},
        {"with policies", Joined({both, AttributeOf("1.2.840.113549.1.9.16.2.47", Tlv(0x30, {named, Tlv(0x30, Bytes())}))}),
         Reason::none},
        {"more than policies",
         Joined({both, AttributeOf("1.2.840.113549.1.9.16.2.47", Tlv(0x30, {named, Tlv(0x30, Bytes()), NumberTlv(1)}))}),
         Reason::malformed},
        {"with another serial number",
         Joined({both, SigningCertificateV2(Reference(certificate, IssuerSerial(VerificationRoot().name, 8)))}),
         Reason::badSignature},
        {"with another issuer", Joined({both, SigningCertificateV2(Reference(certificate, IssuerSerial(TestName("CN=Other"), 7)))}),
         Reason::badSignature},
        {"another certificate named", Joined({both, SigningCertificateV2(Reference(otherCertificate))}), Reason::badSignature},
        {"another certificate named second",
         Joined({both, SigningCertificateV2(Joined({Reference(certificate), Reference(otherCertificate)}))}), Reason::none},
        {"no certificate named", Joined({both, SigningCertificateV2({})}), Reason::malformed},
        {"named twice", Joined({both, SigningCertificateV2(Reference(certificate)), SigningCertificateV2(Reference(certificate))}),
         Reason::malformed},
    };
    for (const auto& entry : cases) {
        TestMessage message;
        message.attributes = entry.attributes;
        message.certificate = certificate;
        const SignerVerdict verdict = message.verdict();
        EXPECT_EQ(ReasonWord(verdict.reason), ReasonWord(entry.reason)) << entry.name << ": " << verdict.detail.c_str();
        EXPECT_EQ(verdict.verdict == Verdict::valid, entry.reason == Reason::none) << entry.name;
    }
}

TEST(CmsVerification, HashesAttributesAsEncodedThenSorted)
{
    const Bytes unsorted = Joined({digestAttribute, dataTypeAttribute});
    const Bytes sorted = Tlv(0x31, {dataTypeAttribute, digestAttribute});
    TestMessage message;
    message.attributes = unsorted;
    EXPECT_EQ(message.verdict().verdict, Verdict::valid);
    EXPECT_EQ(message.verdict().order, AttributeOrder::encoded);
    message.signedOctets = sorted;
    EXPECT_EQ(message.verdict().verdict, Verdict::valid);
    EXPECT_EQ(message.verdict().order, AttributeOrder::sorted);
    // The octets in the message, whose tag is [0], are not what is signed.
    message.signedOctets = Tlv(0xA0, unsorted);
    EXPECT_EQ(message.verdict().reason, Reason::badSignature);
}

TEST(CmsVerification, WithoutAttributesTheContentIsSigned)
{
    TestMessage message;
    message.attributes.clear();
    message.signedOctets = verifiedContent;
    EXPECT_EQ(message.verdict().verdict, Verdict::valid);
    EXPECT_EQ(message.verdict().order, AttributeOrder::none);
    EXPECT_EQ(message.verdict(true).reason, Reason::malformed);
    // The attributes of another message, as its content.
    message.content = message.signedOctets = Tlv(0x31, {dataTypeAttribute, digestAttribute});
    EXPECT_EQ(message.verdict().reason, Reason::badSignature);
    EXPECT_STREQ(message.verdict().detail.c_str(), "The content is itself a set of attributes");
    // Less than a set of attributes.
    for (const Bytes& item : {NumberTlv(1), Tlv(0x30, {OidTlv("1.2.3.4"), Tlv(0x31, NumberTlv(1)), NumberTlv(1)})}) {
        message.content = message.signedOctets = Tlv(0x31, {dataTypeAttribute, item});
        EXPECT_EQ(message.verdict().verdict, Verdict::valid);
    }
    message.content = message.signedOctets = verifiedContent;
    message.contentType = OidTlv("1.2.3.4");
    EXPECT_EQ(message.verdict().reason, Reason::malformed);
}

TEST(CmsVerification, RefusesAlgorithmsAndCertificates)
{
    const Bytes null = {5, 0};
    const struct {
        const char* name;
        Bytes digest;
        Bytes signature;
        Bytes certificate;
        Reason reason;
    } cases[] = {
        {"NULL beside the digest", Tlv(0x30, {OidTlv("2.16.840.1.101.3.4.2.1"), null}), ecdsaIdentifier, SignerCertificate(),
         Reason::none},
        {"the key's own algorithm", sha256Identifier, ecKeyIdentifier, SignerCertificate(), Reason::none},
        {"NULL beside the key's own algorithm", sha256Identifier, Tlv(0x30, {OidTlv("1.2.840.10045.2.1"), null}),
         SignerCertificate(), Reason::unsupportedAlgorithm},
        {"a curve beside the key's own algorithm", sha256Identifier,
         Tlv(0x30, {OidTlv("1.2.840.10045.2.1"), OidTlv("1.2.840.10045.3.1.7")}), SignerCertificate(),
         Reason::unsupportedAlgorithm},
        {"SHA-256 with Ed25519", sha256Identifier, Tlv(0x30, OidTlv("1.3.101.112")),
         TestCertificate("CN=Signer", TestEd25519Key()).serial(7).build(VerificationRoot()), Reason::unsupportedAlgorithm},
        {"other parameters of the digest", Tlv(0x30, {OidTlv("2.16.840.1.101.3.4.2.1"), NumberTlv(1)}), ecdsaIdentifier,
         SignerCertificate(), Reason::unsupportedAlgorithm},
        {"an unknown digest", Tlv(0x30, OidTlv("1.2.3.4")), ecdsaIdentifier, SignerCertificate(), Reason::unsupportedAlgorithm},
        {"NULL beside ECDSA", sha256Identifier, Tlv(0x30, {OidTlv("1.2.840.10045.4.3.2"), null}), SignerCertificate(),
         Reason::unsupportedAlgorithm},
        {"another hash of the signature", sha256Identifier, Tlv(0x30, OidTlv("1.2.840.10045.4.3.3")), SignerCertificate(),
         Reason::unsupportedAlgorithm},
        {"SHAKE256 with ECDSA", Tlv(0x30, OidTlv("2.16.840.1.101.3.4.2.12")), ecKeyIdentifier, SignerCertificate(),
         Reason::unsupportedAlgorithm},
        {"DSA of 1024 bits", sha256Identifier, Tlv(0x30, OidTlv("2.16.840.1.101.3.4.3.2")),
         TestCertificate("CN=Signer", TestDsaKey()).serial(7).build(VerificationRoot()), Reason::weakAlgorithm},
        {"RSA", sha256Identifier, Tlv(0x30, {OidTlv("1.2.840.113549.1.1.1"), null}), SignerCertificate(),
         Reason::unsupportedAlgorithm},
        {"a key usage for certificates alone", sha256Identifier, ecdsaIdentifier, SignerCertificate(0x04), Reason::keyUsage},
        {"a key usage for signatures that cannot be denied", sha256Identifier, ecdsaIdentifier, SignerCertificate(0x40),
         Reason::none},
        {"a certificate that another name and key claim first", sha256Identifier, ecdsaIdentifier,
         Joined({TestCertificate("CN=Bogus", TestKey(3)).serial(7).build(VerificationRoot()), SignerCertificate()}), Reason::none},
        {"an expired certificate", sha256Identifier, ecdsaIdentifier,
         TestCertificate("CN=Signer", TestKey(2))
             .serial(7)
             .validity("20200101000000Z", "20261101000000Z")
             .build(VerificationRoot()),
         Reason::expired},
        {"a certificate whose key does not load", sha256Identifier, ecdsaIdentifier,
         TestCertificate("CN=Signer", TestKey(2))
             .serial(7)
             .publicKeyInfo(Tlv(0x30, {Tlv(0x30, OidTlv("1.2.3.4")), Tlv(0x03, {0, 1})}))
             .build(VerificationRoot()),
         Reason::unsupportedAlgorithm},
        {"a certificate that does not load", sha256Identifier, ecdsaIdentifier,
         TestCertificate("CN=Signer", TestKey(2)).serial(7).version(0x105).build(VerificationRoot()), Reason::malformed},
        {"a certificate of another serial number", sha256Identifier, ecdsaIdentifier,
         TestCertificate("CN=Signer", TestKey(2)).serial(9).build(VerificationRoot()), Reason::noPath},
    };
    for (const auto& entry : cases) {
        TestMessage message;
        message.digestAlgorithm = entry.digest;
        message.signatureAlgorithm = entry.signature;
        message.certificate = entry.certificate;
        const SignerVerdict verdict = message.verdict();
        EXPECT_EQ(ReasonWord(verdict.reason), ReasonWord(entry.reason)) << entry.name << ": " << verdict.detail.c_str();
        EXPECT_EQ(verdict.verdict == Verdict::valid, entry.reason == Reason::none) << entry.name;
    }
}

TEST(CmsVerification, FindsProofsOfStatusInTheMessage)
{
    const Bytes good = TestCrl().entry(8).build(VerificationRoot());
    const Bytes revoked = TestCrl().entry(7).build(VerificationRoot());
    const auto values = [](const Bytes& list) { return Tlv(0x30, Tlv(0xA0, Tlv(0x30, list))); };
    TestMessage message;
    EXPECT_EQ(message.verdict(false, true).verdict, Verdict::undecided);
    for (const char* const oid : {"1.2.840.113549.1.9.16.2.22", "1.2.840.113549.1.9.16.2.24"}) {
        message.unsignedAttributes = AttributeOf(oid, values(good));
        EXPECT_EQ(message.verdict(false, true).verdict, Verdict::valid) << oid;
        message.unsignedAttributes = AttributeOf(oid, values(revoked));
        EXPECT_EQ(message.verdict(false, true).reason, Reason::revoked) << oid;
    }
    message.unsignedAttributes.clear();
    message.crls = revoked;
    EXPECT_EQ(message.verdict(false, true).reason, Reason::revoked);
    message.crls = good;
    EXPECT_EQ(message.verdict(false, true).verdict, Verdict::valid);
    message.crls.clear();
    message.with(AttributeOf("1.2.840.113583.1.1.8", values(good)));
    EXPECT_EQ(message.verdict(false, true).verdict, Verdict::valid);
}

TEST(CmsVerification, ARevocationInTheMessageCountsAlways)
{
    const Bytes good = TestCrl().entry(8).build(VerificationRoot());
    const Bytes revoked = TestCrl().thisUpdate("20260601000000Z").entry(7).build(VerificationRoot());
    const Bytes forged = TestCrl().entry(7).build({.name = VerificationRoot().name, .key = TestKey(3)});
    const auto values = [](const Bytes& list) { return Tlv(0x30, Tlv(0xA0, Tlv(0x30, list))); };
    const auto pdf = [&](const Bytes& octets) { return AttributeOf("1.2.840.113583.1.1.8", octets); };
    const auto etsi = [&](const Bytes& octets) { return AttributeOf("1.2.840.113549.1.9.16.2.24", octets); };
    const struct {
        const char* name;
        Bytes attributes;
        Bytes unsignedAttributes;
        Reason reason;
    } cases[] = {
        {"good", pdf(values(good)), {}, Reason::none},
        {"revoked by another key", pdf(values(forged)), {}, Reason::none},
        {"revoked, signed", pdf(values(revoked)), {}, Reason::revoked},
        {"revoked, not signed", {}, etsi(values(revoked)), Reason::revoked},
        {"good, then revoked", Joined({pdf(values(good)), pdf(values(revoked))}), {}, Reason::revoked},
        {"a second value", pdf(Joined({values(good), values(revoked)})), {}, Reason::revoked},
        {"a second attribute, not signed", {}, Joined({etsi(values(good)), etsi(values(revoked))}), Reason::revoked},
    };
    for (const auto& entry : cases) {
        TestMessage message;
        message.with(entry.attributes).unsignedAttributes = entry.unsignedAttributes;
        const SignerVerdict verdict = message.verdict();
        EXPECT_EQ(ReasonWord(verdict.reason), ReasonWord(entry.reason)) << entry.name << ": " << verdict.detail.c_str();
        EXPECT_EQ(verdict.verdict == Verdict::valid, entry.reason == Reason::none) << entry.name;
    }
}

TEST(CmsVerification, EmbeddedContentIsTheContentGiven)
{
    const Bytes signedContent = verifiedContent;
    const SignedContent digest(algorithm::sha256, ElementOf(Sha256(verifiedContent)));
    for (const bool hasAttributes : {true, false}) {
        for (const Bytes& embedded : {verifiedContent, TextBytes("evil content"), Bytes()}) {
            TestMessage message;
            message.content = embedded;
            if (!hasAttributes) {
                message.attributes.clear();
                message.signedOctets = verifiedContent;
            }
            SignedDataOptions options;
            options.validation.at = verificationTime;
            for (SignedContent content : {SignedContent(signedContent), digest}) {
                if (!hasAttributes && !content.octets())
                    continue;
                const SignedDataVerdict verdict = VerdictOf(message.build(), TrustInRoot(), options, &content);
                EXPECT_EQ(verdict.verdict == Verdict::valid, embedded == verifiedContent) << hasAttributes << embedded.size();
                if (embedded != verifiedContent) {
                    EXPECT_EQ(verdict.reason, Reason::badSignature);
                    EXPECT_STREQ(verdict.detail.c_str(), "The embedded content is another one than the content given");
                }
            }
        }
    }
}

TEST(CmsVerification, AttributesAndAlgorithmsStandInTheirPlaces)
{
    const Bytes sha384 = Tlv(0x30, OidTlv("2.16.840.1.101.3.4.2.2"));
    const Bytes time = AttributeOf("1.2.840.113549.1.9.5", TestTime("20261123120000Z"));
    const Bytes counterSignature = AttributeOf("1.2.840.113549.1.9.6", Tlv(0x30, NumberTlv(1)));
    const Bytes empty = AttributeOf("1.2.3.4", {});
    const struct {
        const char* name;
        Bytes attributes;
        Bytes unsignedAttributes;
        Bytes digestAlgorithms;
        bool isValid;
    } cases[] = {
        {"as it should be", {}, {}, sha256Identifier, true},
        {"two digest algorithms", {}, {}, Joined({sha384, sha256Identifier}), true},
        {"another digest algorithm", {}, {}, sha384, false},
        {"no digest algorithm", {}, {}, {}, false},
        {"a content type, not signed", {}, dataTypeAttribute, sha256Identifier, false},
        {"a message digest, not signed", {}, digestAttribute, sha256Identifier, false},
        {"a signing time, not signed", {}, time, sha256Identifier, false},
        {"a protection, not signed", {}, Protection(sha256Identifier, OidTlv("1.2.840.10045.4.3.2")), sha256Identifier, false},
        {"a named certificate, not signed", {}, SigningCertificateV2(Reference(SignerCertificate())), sha256Identifier, false},
        {"a named certificate by SHA-1, not signed",
         {},
         AttributeOf("1.2.840.113549.1.9.16.2.12", Tlv(0x30, NumberTlv(1))),
         sha256Identifier,
         false},
        {"a countersignature, not signed", {}, counterSignature, sha256Identifier, true},
        {"a countersignature, signed", counterSignature, {}, sha256Identifier, false},
        {"no values", empty, {}, sha256Identifier, false},
        {"no values, not signed", {}, empty, sha256Identifier, false},
    };
    for (const auto& entry : cases) {
        TestMessage message;
        message.with(entry.attributes).unsignedAttributes = entry.unsignedAttributes;
        message.digestAlgorithms = entry.digestAlgorithms;
        SignedDataOptions options;
        options.validation.at = verificationTime;
        const SignedDataVerdict verdict = VerdictOf(message.build(), TrustInRoot(), options);
        EXPECT_EQ(verdict.verdict == Verdict::valid, entry.isValid) << entry.name << ": " << verdict.detail.c_str();
        EXPECT_EQ(verdict.reason, entry.isValid ? Reason::none : Reason::malformed) << entry.name;
    }
}

TEST(CmsVerification, NamedCertificatesLimitThePath)
{
    const TestIssuer sub = {.name = VerificationRoot().name, .key = TestKey(4)};
    const Bytes issuer = TestCertificate(sub).serial(5).authority().build(VerificationRoot());
    const Bytes other = TestCertificate(sub).serial(6).authority().build(VerificationRoot());
    const Bytes signer = TestCertificate("CN=Signer", TestKey(2)).serial(7).build(sub);
    const struct {
        const char* name;
        Bytes references;
        Reason reason;
    } cases[] = {
        {"the signer's alone", Reference(signer), Reason::none},
        {"the path", Joined({Reference(signer), Reference(issuer)}), Reason::none},
        {"the path and another one", Joined({Reference(signer), Reference(other), Reference(issuer)}), Reason::none},
        {"not the issuer", Joined({Reference(signer), Reference(other)}), Reason::badSignature},
        {"the issuer first", Joined({Reference(issuer), Reference(signer)}), Reason::badSignature},
    };
    for (const auto& entry : cases) {
        TestMessage message;
        message.certificate = Joined({signer, issuer});
        message.with(SigningCertificateV2(entry.references));
        const SignerVerdict verdict = message.verdict();
        EXPECT_EQ(ReasonWord(verdict.reason), ReasonWord(entry.reason)) << entry.name << ": " << verdict.detail.c_str();
    }
}

TEST(CmsVerification, OnlyAStrongHashNamesTheCertificate)
{
    const Bytes certificate = SignerCertificate();
    const Bytes digest = BytesOf(ICryptoHash::Create(algorithm::sha1)->digestOf(certificate));
    const Bytes first = AttributeOf("1.2.840.113549.1.9.16.2.12", Tlv(0x30, Tlv(0x30, Tlv(0x30, Tlv(0x04, digest)))));
    TestMessage message;
    message.certificate = certificate;
    message.with(first);
    EXPECT_EQ(message.verdict().reason, Reason::none);
    EXPECT_EQ(message.verdict(true).reason, Reason::weakAlgorithm);
    message.with(SigningCertificateV2(Reference(certificate)));
    EXPECT_EQ(message.verdict(true).reason, Reason::none);
}

TEST(CmsVerification, CertificatesThatClaimToBeTheSignersDoNotHideIt)
{
    Bytes fakes;
    for (std::uint32_t count = 0; count < 20; ++count)
        fakes = Joined({fakes, TestCertificate("CN=Fake " + std::to_string(count), TestKey(3))
                                   .serial(7)
                                   .build({.name = VerificationRoot().name, .key = TestKey(3)})});
    TestMessage message;
    message.certificate = Joined({fakes, SignerCertificate()});
    EXPECT_EQ(message.verdict().reason, Reason::none);

    // What the caller gives comes first, however much the message brings.
    message.certificate = fakes;
    message.moreSigners.resize(149);
    SignedDataTrust trust = TrustInRoot();
    SignedDataOptions options;
    options.validation.at = verificationTime;
    const SignedDataVerdict fake = VerdictOf(message.build(), trust, options);
    EXPECT_EQ(fake.reason, Reason::badSignature);
    ASSERT_EQ(fake.signers.size(), 150u);
    EXPECT_EQ(fake.signers.back().reason, Reason::limit);
    trust.candidates = {LoadCertificate(SignerCertificate())};
    EXPECT_EQ(VerdictOf(message.build(), trust, options).verdict, Verdict::valid);
}

TEST(CmsVerification, WorkIsBoundedOverAllSigners)
{
    // Each signer brings a list that claims to be the issuer's, and is not.
    TestMessage message;
    for (std::uint32_t number = 0; number < 250; ++number) {
        const Bytes list = TestCrl().entry(7).entry(1000 + number).build({.name = VerificationRoot().name, .key = TestKey(3)});
        message.moreSigners.push_back(AttributeOf("1.2.840.113549.1.9.16.2.24", Tlv(0x30, Tlv(0xA0, Tlv(0x30, list)))));
    }
    SignedDataOptions options;
    options.validation.at = verificationTime;
    EXPECT_EQ(VerdictOf(message.build(), TrustInRoot(), options).reason, Reason::limit);
    // The same list again costs nothing.
    const Bytes same = message.moreSigners[0];
    message.moreSigners.assign(250, same);
    EXPECT_EQ(VerdictOf(message.build(), TrustInRoot(), options).verdict, Verdict::valid);
}

TEST(CmsVerification, AcceptsWhatIsSignedHere)
{
    const struct {
        TestKeyPtr key;
        algorithm::Id hash;
    } cases[] = {
        {TestRsaKey(), algorithm::sha256},
        {TestRsaKey(), algorithm::sha512},
        {TestKey(2), algorithm::sha256},
        {TestKey(2), algorithm::sha512},
        {KeyOf(algorithm::secp384r1), algorithm::sha384},
        {KeyOf(algorithm::secp521r1), algorithm::sha512},
        {TestEd25519Key(), algorithm::sha512},
        {std::make_shared<CCryptoEddsaKeyPair>(EddsaKey::Generate(algorithm::ed448)), algorithm::shake256},
    };
    for (const auto& [key, hash] : cases) {
        SCryptoSignature request;
        request.signer = LoadCertificate(TestCertificate("CN=Signer", key).serial(7).build(VerificationRoot()));
        request.key = key.get();
        request.hash = hash;
        request.content = verifiedContent;
        request.addsSigningTime = request.addsAlgorithmProtection = true;
        request.now = verificationTime;
        SignedDataOptions options;
        options.validation.at = verificationTime;
        options.requiresSigningCertificate = true;
        const SignedDataVerdict verdict = VerdictOf(BytesOf(CCryptoPKCS7::ComputeSignature(request)), TrustInRoot(), options);
        EXPECT_EQ(verdict.verdict, Verdict::valid) << key->name() << ": " << verdict.detail.c_str();
        ASSERT_EQ(verdict.signers.size(), 1u);
        EXPECT_EQ(verdict.signers[0].signingTime, verificationTime);
        EXPECT_TRUE(verdict.signers[0].namesCertificate);
    }
}
