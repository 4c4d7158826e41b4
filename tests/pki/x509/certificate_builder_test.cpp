#include "asn1/der/der_cursor.h"
#include "pki/x509/certificate.h"
#include "pki/x509/certificate_builder.h"
#include "pki/x509/extension_builder.h"
#include "tests/pki/keys/test_keys.h"
#include "tests/pki/x509/test_authority.h"
#include "tests/support/captured_log.h"

#include <algorithm>
#include <functional>

using namespace ccrypto;

namespace {

CCryptoDateTime MomentOf(std::int32_t year, std::int32_t second = 0)
{
    platform::CalendarTime fields;
    fields.year = year;
    fields.month = 1;
    fields.day = 1;
    fields.second = second;
    return CCryptoDateTime(fields, true);
}

/// What the fields of CertificateOf() and ListOf() say, without extensions.
const TestIssuer& BuilderIssuer()
{
    static const TestIssuer issuer = {.name = TestName("C=FI,O=Example,CN=Root"), .key = TestKey(1)};
    return issuer;
}

CertificateFields CertificateOf(std::uint32_t version = 3)
{
    CertificateFields fields;
    fields.version = version;
    fields.serialNumber = ElementOf({0, 0x80, 1});
    fields.issuer = ElementOf(BuilderIssuer().name);
    fields.validFrom = MomentOf(1950);
    fields.validTo = MomentOf(2050, 59);
    fields.subject = ElementOf(TestName("CN=Leaf"));
    fields.publicKeyInfo = TestKey(2)->publicKeyInfo();
    return fields;
}

TestCertificate ExpectedCertificate()
{
    TestCertificate expected("CN=Leaf", TestKey(2));
    expected.serial(0x8001).validity("19500101000000Z", "20500101000059Z");
    return expected;
}

RevocationListFields RevocationList(std::uint32_t version = 2)
{
    RevocationListFields fields;
    fields.version = version;
    fields.issuer = ElementOf(BuilderIssuer().name);
    fields.thisUpdate = MomentOf(2049);
    fields.nextUpdate = MomentOf(2050);
    return fields;
}

RevokedEntry EntryOf(std::uint8_t serial, std::optional<RevocationReason> reason = {})
{
    RevokedEntry entry;
    entry.serialNumber = ElementOf({serial});
    entry.revocationDate = MomentOf(2026);
    entry.reason = reason;
    return entry;
}

/// What is signed, when the key of BuilderIssuer() signed it.
std::string SignedHex(const element& der)
{
    const auto whole = OnlyValue(der.bytes(), der::sequence);
    if (!whole)
        return "nothing";
    DerCursor fields(*whole);
    const DerItem octets = fields.read();
    const DerItem algorithm = fields.read();
    const DerItem bits = fields.read(der::bitString);
    const auto read = ReadSignatureAlgorithm(algorithm.octets);
    const bool isGood = read && bits && fields.atEnd() && bits.value[0] == 0 &&
                        VerifySignature(*BuilderIssuer().key, *read, octets.octets, bits.value.subspan(1)) == SignatureResult::good;
    return isGood ? Hex({octets.octets.begin(), octets.octets.end()}) : "a bad signature";
}

} // namespace

// What is expected is made by hand.
TEST(CertificateBuilder, IssuesCertificates)
{
    ICryptoKeyPair& key = *BuilderIssuer().key;
    CertificateFields fields = CertificateOf();
    EXPECT_EQ(SignedHex(IssueCertificate(fields, key, algorithm::sha256)), Hex(ExpectedCertificate().tbs(BuilderIssuer())));

    fields.extensions.add(BuildBasicConstraints({.isCa = true, .pathLength = 2}));
    fields.extensions.add(BuildSubjectKeyIdentifier(KeyIdentifierOf(*TestKey(2))));
    const element issued = IssueCertificate(fields, key, algorithm::sha256);
    EXPECT_EQ(SignedHex(issued), Hex(ExpectedCertificate()
                                         .extension(TestBasicConstraints(true, 2))
                                         .extension(TestSubjectKeyIdentifier(*TestKey(2)))
                                         .tbs(BuilderIssuer())));
    CCrypto_X509_Certificate loaded;
    ASSERT_TRUE(loaded.LoadCertificate(issued));
    EXPECT_EQ(loaded.verifySignature(key), SignatureResult::good);

    EXPECT_EQ(SignedHex(IssueCertificate(CertificateOf(1), key, algorithm::sha256)),
              Hex(ExpectedCertificate().version(1).tbs(BuilderIssuer())));

    fields = CertificateOf();
    fields.subject = ElementOf(Tlv(der::sequence, Bytes()));
    fields.serialNumber = {};
    const CapturedLog log;
    EXPECT_EQ(SignedHex(IssueCertificate(fields, key, algorithm::sha256)),
              Hex(ExpectedCertificate().subjectDer(Tlv(der::sequence, Bytes())).serial(0).tbs(BuilderIssuer())));
    EXPECT_NE(std::ranges::count(log.texts(), "CCrypto_X509_Certificate::GetCertificate(); WARNING: CSN is empty?"), 0);
}

TEST(CertificateBuilder, SignsWithEveryKey)
{
    for (const TestKeyPtr& key : {TestRsaKey(), TestEd25519Key()}) {
        const TestIssuer issuer = {.name = BuilderIssuer().name, .key = key, .hash = algorithm::sha384};
        CCrypto_X509_Certificate loaded;
        ASSERT_TRUE(loaded.LoadCertificate(IssueCertificate(CertificateOf(), *key, algorithm::sha384)));
        const std::span<const std::uint8_t> octets = loaded.signedOctets();
        EXPECT_EQ(Hex({octets.begin(), octets.end()}), Hex(ExpectedCertificate().tbs(issuer)));
        EXPECT_EQ(loaded.verifySignature(*key), SignatureResult::good);
    }
}

TEST(CertificateBuilder, RefusesFieldsOfNoCertificate)
{
    const std::pair<const char*, std::function<void(CertificateFields&)>> cases[] = {
        {"version 2", [](CertificateFields& fields) { fields.version = 2; }},
        {"extensions of version 1",
         [](CertificateFields& fields) {
             fields.version = 1;
             fields.extensions.add(BuildBasicConstraints({}));
         }},
        {"a negative serial number", [](CertificateFields& fields) { fields.serialNumber = ElementOf({0x80}); }},
        {"a serial number with a needless zero",
         [](CertificateFields& fields) {
             fields.serialNumber = ElementOf({0, 1});
         }},
        {"a serial number of 21 bytes", [](CertificateFields& fields) { fields.serialNumber = ElementOf(Bytes(21, 1)); }},
        {"an empty issuer",
         [](CertificateFields& fields) {
             fields.issuer = ElementOf({der::sequence, 0});
         }},
        {"an issuer that is no name",
         [](CertificateFields& fields) {
             fields.issuer = ElementOf({1, 2, 3});
         }},
        {"an issuer of another structure",
         [](CertificateFields& fields) { fields.issuer = ElementOf(Tlv(der::sequence, NumberTlv(1))); }},
        {"a subject that is not DER",
         [](CertificateFields& fields) {
             fields.subject = ElementOf({der::sequence, 0x81, 0});
         }},
        {"a subject with octets after it",
         [](CertificateFields& fields) {
             fields.subject = ElementOf({der::sequence, 0, der::null, 0});
         }},
        {"a key of another structure",
         [](CertificateFields& fields) { fields.publicKeyInfo = ElementOf(Tlv(der::sequence, NumberTlv(1))); }},
        {"no subject", [](CertificateFields& fields) { fields.subject = {}; }},
        {"no start", [](CertificateFields& fields) { fields.validFrom = {}; }},
        {"no end", [](CertificateFields& fields) { fields.validTo = {}; }},
        {"an end before the start", [](CertificateFields& fields) { fields.validTo = MomentOf(1949); }},
        {"no key", [](CertificateFields& fields) { fields.publicKeyInfo = {}; }},
    };
    for (const auto& [name, change] : cases) {
        CertificateFields fields = CertificateOf();
        change(fields);
        ForgetFailure();
        EXPECT_TRUE(IssueCertificate(fields, *BuilderIssuer().key, algorithm::sha256).isEmpty()) << name;
        EXPECT_NE(ReasonOfFailure(), "") << name;
    }
    EXPECT_TRUE(IssueCertificate(CertificateOf(), *BuilderIssuer().key, algorithm::sha1).isEmpty());
    EXPECT_TRUE(IssueCertificate(CertificateOf(), *BuilderIssuer().key->publicHalf(), algorithm::sha256).isEmpty());
}

TEST(CertificateBuilder, IssuesRevocationLists)
{
    ICryptoKeyPair& key = *BuilderIssuer().key;
    TestCrl expected;
    expected.thisUpdate("20490101000000Z").nextUpdate("20500101000000Z").withoutNumber();
    EXPECT_EQ(SignedHex(IssueRevocationList(RevocationList(), key, algorithm::sha256)), Hex(expected.tbs(BuilderIssuer())));

    RevocationListFields fields = RevocationList(1);
    fields.nextUpdate = {};
    fields.entries.push_back(EntryOf(1));
    EXPECT_EQ(SignedHex(IssueRevocationList(fields, key, algorithm::sha256)),
              Hex(TestCrl().version(1).thisUpdate("20490101000000Z").nextUpdate("").entry(1).tbs(BuilderIssuer())));

    fields = RevocationList();
    fields.extensions.add(BuildCrlNumber(ElementOf({3})));
    fields.extensions.add(BuildDeltaCrlIndicator(ElementOf({2})));
    fields.entries.push_back(EntryOf(1));
    fields.entries.push_back(EntryOf(2, RevocationReason::unspecified));
    fields.entries.push_back(EntryOf(3, RevocationReason::keyCompromise));
    fields.entries.push_back(EntryOf(4));
    fields.entries.back().invalidityDate = MomentOf(2025);
    fields.entries.push_back(EntryOf(5, RevocationReason::removeFromCrl));
    fields.entries.back().invalidityDate = MomentOf(2024);
    fields.entries.push_back(EntryOf(6));
    const Bytes issuerNames = Tlv(der::sequence, TestDirectoryName("CN=Other"));
    fields.entries.back().certificateIssuer = issuerNames;

    constexpr std::string_view date = "20260101000000Z";
    const auto invalidity = [](std::string_view time) {
        return TestExtension("2.5.29.24", Tlv(der::generalizedTime, TextBytes(time)));
    };
    const Bytes reason = TestExtension("2.5.29.21", NumberTlv(8, der::enumerated));
    expected.number(3)
        .delta(2)
        .entry(1)
        .entry(2)
        .entry(3, 1)
        .entry(4, {}, date, {invalidity("20250101000000Z")})
        .entry(5, {}, date, {invalidity("20240101000000Z"), reason})
        .entry(6, {}, date, {TestExtension("2.5.29.29", issuerNames, true)});
    const element issued = IssueRevocationList(fields, key, algorithm::sha256);
    EXPECT_EQ(SignedHex(issued), Hex(expected.tbs(BuilderIssuer())));
    CCrypto_X509_CRL loaded;
    ASSERT_TRUE(loaded.LoadCRL(issued));
    EXPECT_EQ(loaded.verifySignature(key), SignatureResult::good);
}

TEST(CertificateBuilder, RefusesFieldsOfNoRevocationList)
{
    const std::pair<const char*, std::function<void(RevocationListFields&)>> cases[] = {
        {"version 3", [](RevocationListFields& fields) { fields.version = 3; }},
        {"extensions of version 1",
         [](RevocationListFields& fields) {
             fields.version = 1;
             fields.extensions.add(BuildCrlNumber(ElementOf({3})));
         }},
        {"extensions of an entry of version 1",
         [](RevocationListFields& fields) {
             fields.version = 1;
             fields.entries.push_back(EntryOf(1, RevocationReason::superseded));
         }},
        {"an empty issuer",
         [](RevocationListFields& fields) {
             fields.issuer = ElementOf({der::sequence, 0});
         }},
        {"no start", [](RevocationListFields& fields) { fields.thisUpdate = {}; }},
        {"an end before the start", [](RevocationListFields& fields) { fields.nextUpdate = MomentOf(2048); }},
        {"an entry without a serial number", [](RevocationListFields& fields) { fields.entries.emplace_back(); }},
        {"an entry without a date",
         [](RevocationListFields& fields) {
             fields.entries.push_back(EntryOf(1));
             fields.entries.back().revocationDate = {};
         }},
    };
    for (const auto& [name, change] : cases) {
        RevocationListFields fields = RevocationList();
        change(fields);
        ForgetFailure();
        EXPECT_TRUE(IssueRevocationList(fields, *BuilderIssuer().key, algorithm::sha256).isEmpty()) << name;
        EXPECT_NE(ReasonOfFailure(), "") << name;
    }
    EXPECT_TRUE(IssueRevocationList(RevocationList(), *BuilderIssuer().key->publicHalf(), algorithm::sha256).isEmpty());
}

TEST(CertificateBuilder, SerialNumbersAreNewAndPositive)
{
    const element first = NewSerialNumber();
    EXPECT_EQ(first.length(), 16u);
    EXPECT_EQ(first[0] & 0xC0, 0x40);
    EXPECT_NE(first, NewSerialNumber());
}
