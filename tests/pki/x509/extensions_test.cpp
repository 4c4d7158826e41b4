#include "pki/x509/certificate.h"
#include "pki/x509/extensions.h"
#include "tests/crypto/base/test_bytes.h"
#include "tests/pki/x509/der_text.h"
#include "tests/pki/x509/test_authority.h"

#include <gtest/gtest.h>

#include <string>

using namespace ccrypto;

namespace {

std::string NamesAsText(const GeneralNames& names)
{
    std::string text;
    for (const GeneralName& name : names)
        text += std::to_string(static_cast<int>(name.kind)) + ":" + HexOf(name.value) + " ";
    return text;
}

std::string PointNameAsText(const std::optional<DistributionPointName>& name)
{
    return name ? "name " + NamesAsText(name->fullName) + HexOf(name->relativeName) + " " : "";
}

template <typename Number>
std::string NumberAsText(const std::optional<Number>& number)
{
    return number ? std::to_string(*number) : "-";
}

// What is read of the octets, in words; "none" where the reader refuses.

std::string BasicConstraintsAsText(const Bytes& octets)
{
    const auto read = ReadBasicConstraints(octets);
    return read ? (read->isCa ? "ca " : "end ") + NumberAsText(read->pathLength) : "none";
}

std::string KeyUsageAsText(const Bytes& octets)
{
    const auto read = ReadKeyUsage(octets);
    return read ? std::to_string(read->bits) : "none";
}

std::string PurposesAsText(const Bytes& octets)
{
    const auto read = ReadExtendedKeyUsage(octets);
    if (!read)
        return "none";
    std::string text;
    for (const ccrypto::Oid& purpose : *read)
        text += std::string(purpose.dotted().view()) + " ";
    return text;
}

std::string SubjectKeyAsText(const Bytes& octets)
{
    const auto read = ReadSubjectKeyIdentifier(octets);
    return read ? "key " + HexOf(*read) : "none";
}

std::string AuthorityKeyAsText(const Bytes& octets)
{
    const auto read = ReadAuthorityKeyIdentifier(octets);
    return read ? "key " + HexOf(read->keyIdentifier) + " " + NamesAsText(read->issuer) + "serial " + HexOf(read->serialNumber)
                : "none";
}

std::string GeneralNamesAsText(const Bytes& octets)
{
    const auto read = ReadGeneralNames(octets);
    return read ? NamesAsText(*read) : "none";
}

std::string NameConstraintsAsText(const Bytes& octets)
{
    const auto read = ReadNameConstraints(octets);
    return read ? "in " + NamesAsText(read->permitted) + "out " + NamesAsText(read->excluded) : "none";
}

std::string PoliciesAsText(const Bytes& octets)
{
    const auto read = ReadCertificatePolicies(octets);
    if (!read)
        return "none";
    std::string text;
    for (const PolicyInformation& policy : *read) {
        text += std::string(policy.policy.dotted().view()) + " ";
        for (const element& qualifier : policy.qualifiers)
            text += HexOf(qualifier) + " ";
    }
    return text;
}

std::string MappingsAsText(const Bytes& octets)
{
    const auto read = ReadPolicyMappings(octets);
    if (!read)
        return "none";
    std::string text;
    for (const PolicyMapping& mapping : *read)
        text += std::string(mapping.issuerDomain.dotted().view()) + "=" + std::string(mapping.subjectDomain.dotted().view()) + " ";
    return text;
}

std::string PolicyConstraintsAsText(const Bytes& octets)
{
    const auto read = ReadPolicyConstraints(octets);
    return read ? NumberAsText(read->requireExplicitPolicy) + " " + NumberAsText(read->inhibitPolicyMapping) : "none";
}

std::string SkipCertificatesAsText(const Bytes& octets)
{
    const auto read = ReadSkipCertificates(octets);
    return read ? std::to_string(*read) : "none";
}

std::string PointsAsText(const Bytes& octets)
{
    const auto read = ReadDistributionPoints(octets);
    if (!read)
        return "none";
    std::string text;
    for (const DistributionPoint& point : *read)
        text += PointNameAsText(point.name) + "reasons " + NumberAsText(point.reasons) + " by " + NamesAsText(point.crlIssuer);
    return text;
}

std::string IssuingPointAsText(const Bytes& octets)
{
    const auto read = ReadIssuingDistributionPoint(octets);
    if (!read)
        return "none";
    return PointNameAsText(read->name) + (read->onlyUserCertificates ? "user " : "") + (read->onlyCaCertificates ? "ca " : "") +
           NumberAsText(read->onlySomeReasons) + (read->isIndirect ? " indirect" : "") +
           (read->onlyAttributeCertificates ? " attributes" : "");
}

std::string AccessAsText(const Bytes& octets)
{
    const auto read = ReadAuthorityInformationAccess(octets);
    if (!read)
        return "none";
    std::string text;
    for (const AccessDescription& access : *read)
        text += std::string(access.method.dotted().view()) + " " + NamesAsText({access.location});
    return text;
}

std::string CrlNumberAsText(const Bytes& octets)
{
    const auto read = ReadCrlNumber(octets);
    return read ? HexOf(*read) : "none";
}

struct ExtensionCase {
    const char* name;
    std::string (*read)(const Bytes& octets);
    const char* octets; ///< as DerOf takes them
    const char* text;
};

const ExtensionCase extensionCases[] = {
    {"an end entity", BasicConstraintsAsText, "30[]", "end -"},
    {"an end entity in so many words", BasicConstraintsAsText, "30[010100]", "end -"},
    {"a CA", BasicConstraintsAsText, "30[0101FF]", "ca -"},
    {"a CA with a path length", BasicConstraintsAsText, "30[0101FF 020100]", "ca 0"},
    {"a path length without a CA", BasicConstraintsAsText, "30[020105]", "end 5"},
    {"a path length of 32 bits", BasicConstraintsAsText, "30[0101FF 02[00FFFFFFFE]]", "ca 4294967294"},
    {"a path length of 33 bits", BasicConstraintsAsText, "30[0101FF 02[0100000000]]", "ca 4294967295"},
    {"a path length below zero", BasicConstraintsAsText, "30[0101FF 0201FF]", "none"},
    {"a path length with a needless zero", BasicConstraintsAsText, "30[0101FF 02020005]", "none"},
    {"a path length of no octets", BasicConstraintsAsText, "30[0101FF 0200]", "none"},
    {"a truth of BER", BasicConstraintsAsText, "30[010101]", "none"},
    {"a truth of two octets", BasicConstraintsAsText, "30[0102FFFF]", "none"},
    {"fields in the wrong order", BasicConstraintsAsText, "30[020100 0101FF]", "none"},
    {"a third field", BasicConstraintsAsText, "30[0101FF 020100 0500]", "none"},
    {"octets after the constraints", BasicConstraintsAsText, "3000 0500", "none"},
    {"a SET of constraints", BasicConstraintsAsText, "31[0101FF]", "none"},
    {"a length beyond the end", BasicConstraintsAsText, "3004 0101FF", "none"},
    {"an indefinite length", BasicConstraintsAsText, "3080 0101FF 0000", "none"},
    {"a length in two octets", BasicConstraintsAsText, "308103 0101FF", "none"},
    {"nothing", BasicConstraintsAsText, "", "none"},

    {"digital signature", KeyUsageAsText, "03[0780]", "1"},
    {"signing certificates and lists", KeyUsageAsText, "03[0106]", "96"},
    {"decipher only, bit 8", KeyUsageAsText, "03[070080]", "256"},
    {"trailing zeros", KeyUsageAsText, "03[0080]", "1"},
    {"a second octet of zeros", KeyUsageAsText, "03[008000]", "1"},
    {"no bits", KeyUsageAsText, "03[00]", "0"},
    {"bits from 16 on", KeyUsageAsText, "03[00800080]", "1"},
    {"unused bits that are set", KeyUsageAsText, "03[0781]", "none"},
    {"eight unused bits", KeyUsageAsText, "03[0800]", "none"},
    {"an unused bit of none", KeyUsageAsText, "03[01]", "none"},
    {"no count of unused bits", KeyUsageAsText, "0300", "none"},
    {"bits in pieces", KeyUsageAsText, "23[03[0780]]", "none"},

    {"two purposes", PurposesAsText, "30[06[551D2500] 06[2B060105]]", "2.5.29.37.0 1.3.6.1.5 "},
    {"no purpose", PurposesAsText, "30[]", "none"},
    {"an identifier cut short", PurposesAsText, "30[06[2B0681]]", "none"},
    {"an identifier with a needless octet", PurposesAsText, "30[06[2B068001]]", "none"},
    {"an identifier of no octets", PurposesAsText, "30[0600]", "none"},
    {"a purpose that is a number", PurposesAsText, "30[020101]", "none"},

    {"a key identifier", SubjectKeyAsText, "04[0102]", "key 0102"},
    {"an empty key identifier", SubjectKeyAsText, "04[]", "key "},
    {"a key identifier without its type", SubjectKeyAsText, "0102", "none"},
    {"a key identifier in pieces", SubjectKeyAsText, "24[04[0102]]", "none"},

    {"the key of an authority", AuthorityKeyAsText, "30[80[0102]]", "key 0102 serial "},
    {"all of an authority", AuthorityKeyAsText, "30[80[01] A1[82['ab']] 82[05]]", "key 01 2:6162 serial 05"},
    {"an authority of which nothing is said", AuthorityKeyAsText, "30[]", "key  serial "},
    {"an authority by a serial number below zero", AuthorityKeyAsText, "30[82[FF]]", "key  serial ff"},
    {"a serial number with a needless zero", AuthorityKeyAsText, "30[82[0005]]", "none"},
    {"a serial number with needless ones", AuthorityKeyAsText, "30[82[FF85]]", "none"},
    {"an issuer without a name", AuthorityKeyAsText, "30[A100]", "none"},
    {"a key identifier in a constructed tag", AuthorityKeyAsText, "30[A0[0101]]", "none"},

    {"names of every form", GeneralNamesAsText,
     "30[A0[06[2B0A] A0[0500]] 81['a'] 82['b'] A3[3000] A4[30[31[30[06[550403] 13['Ci']]]]] A5[3000] 86['c'] 8700 88[2B06]]",
     "0:06022b0aa0020500 1:61 2:62 3:3000 4:300d310b3009060355040313024369 5:3000 6:63 7: 8:2b06 "},
    {"no names", GeneralNamesAsText, "30[]", "none"},
    {"a name of a tenth form", GeneralNamesAsText, "30[89['a']]", "none"},
    {"a DNS name in a constructed tag", GeneralNamesAsText, "30[A2[13['a']]]", "none"},
    {"a DNS name beyond ASCII", GeneralNamesAsText, "30[82[C3A4]]", "none"},
    {"an address beyond ASCII", GeneralNamesAsText, "30[81[C3A4]]", "none"},
    {"a place beyond ASCII", GeneralNamesAsText, "30[86[80]]", "none"},
    {"a directory name without its SEQUENCE", GeneralNamesAsText, "30[A4[31[30[06[550403] 13['Ci']]]]]", "none"},
    {"an empty directory name", GeneralNamesAsText, "30[A4[30[]]]", "4:3000 "},
    {"an empty relative name", GeneralNamesAsText, "30[A4[30[31[]]]]", "none"},
    {"an attribute without a value", GeneralNamesAsText, "30[A4[30[31[30[06[550403]]]]]]", "none"},
    {"an attribute of two values", GeneralNamesAsText, "30[A4[30[31[30[06[550403] 0500 0500]]]]]", "none"},
    {"an attribute without an identifier", GeneralNamesAsText, "30[A4[30[31[30[0500 0500]]]]]", "none"},
    {"another name without its value", GeneralNamesAsText, "30[A0[06[2B0A]]]", "none"},
    {"another name with two values", GeneralNamesAsText, "30[A0[06[2B0A] A0[0500 0500]]]", "none"},
    {"another name with a field too many", GeneralNamesAsText, "30[A0[06[2B0A] A0[0500] 0500]]", "none"},
    {"a registered identifier cut short", GeneralNamesAsText, "30[88[2B88]]", "none"},

    {"constraints of both kinds", NameConstraintsAsText, "30[A0[30[82['a']]] A1[30[82['b']]]]", "in 2:61 out 2:62 "},
    {"a minimum of zero in so many words", NameConstraintsAsText, "30[A0[30[82['a'] 800100]]]", "in 2:61 out "},
    {"a minimum of one", NameConstraintsAsText, "30[A0[30[82['a'] 800101]]]", "none"},
    {"a maximum", NameConstraintsAsText, "30[A0[30[82['a'] 810101]]]", "none"},
    {"no constraint", NameConstraintsAsText, "30[]", "in out "},
    {"no permitted subtree", NameConstraintsAsText, "30[A000]", "none"},
    {"no excluded subtree", NameConstraintsAsText, "30[A100]", "none"},
    {"a subtree without a base", NameConstraintsAsText, "30[A0[3000]]", "none"},
    {"excluded before permitted", NameConstraintsAsText, "30[A1[30[82['b']]] A0[30[82['a']]]]", "none"},

    {"a policy", PoliciesAsText, "30[30[06[2A03]]]", "1.2.3 "},
    {"a policy with a qualifier", PoliciesAsText, "30[30[06[2A03] 30[30[06[2A04] 0500]]]]", "1.2.3 300606022a040500 "},
    {"a qualifier without a value", PoliciesAsText, "30[30[06[2A03] 30[30[06[2A04]]]]]", "none"},
    {"a qualifier of three fields", PoliciesAsText, "30[30[06[2A03] 30[30[06[2A04] 0500 0500]]]]", "none"},
    {"no qualifier", PoliciesAsText, "30[30[06[2A03] 30[]]]", "none"},
    {"no policy", PoliciesAsText, "30[]", "none"},
    {"a policy without an identifier", PoliciesAsText, "30[30[]]", "none"},
    {"a policy with a third field", PoliciesAsText, "30[30[06[2A03] 30[30[06[2A04] 0500]] 0500]]", "none"},

    {"a mapping", MappingsAsText, "30[30[06[2A03] 06[2A04]]]", "1.2.3=1.2.4 "},
    {"half a mapping", MappingsAsText, "30[30[06[2A03]]]", "none"},
    {"a mapping of three", MappingsAsText, "30[30[06[2A03] 06[2A04] 06[2A05]]]", "none"},

    {"both policy constraints", PolicyConstraintsAsText, "30[800100 810102]", "0 2"},
    {"one policy constraint", PolicyConstraintsAsText, "30[810103]", "- 3"},
    {"no policy constraint", PolicyConstraintsAsText, "30[]", "- -"},
    {"a policy constraint below zero", PolicyConstraintsAsText, "30[8001FF]", "none"},
    {"policy constraints in the wrong order", PolicyConstraintsAsText, "30[810102 800100]", "none"},
    {"any policy inhibited", SkipCertificatesAsText, "020101", "1"},
    {"any policy inhibited after more than there are", SkipCertificatesAsText, "02[7FFFFFFFFFFF]", "4294967295"},
    {"any policy inhibited before the beginning", SkipCertificatesAsText, "0201FF", "none"},

    {"a point with a full name", PointsAsText, "30[30[A0[A0[86['a']]]]]", "name 6:61  reasons - by "},
    {"a point with all", PointsAsText, "30[30[A0[A0[86['a']]] 81[0640] A2[A4[3000]]]]", "name 6:61  reasons 2 by 4:3000 "},
    {"a point with a name relative to the issuer", PointsAsText, "30[30[A0[A1[30[06[550403] 13['Ci']]]]]]",
     "name 310b3009060355040313024369 reasons - by "},
    {"a point of nothing", PointsAsText, "30[30[]]", "reasons - by "},
    {"no point", PointsAsText, "30[]", "none"},
    {"a point with a fourth field", PointsAsText, "30[30[A0[A0[86['a']]] A3[3000]]]", "none"},
    {"a point with two names", PointsAsText, "30[30[A0[A0[86['a']] A0[86['b']]]]]", "none"},
    {"a point with a third kind of name", PointsAsText, "30[30[A0[A2[86['a']]]]]", "none"},
    {"a point with an empty name", PointsAsText, "30[30[A0[A0[]]]]", "none"},
    {"a point with an empty relative name", PointsAsText, "30[30[A0[A1[]]]]", "none"},
    {"a point of an empty issuer", PointsAsText, "30[30[A2[]]]", "none"},

    {"all that a list may say", IssuingPointAsText, "30[A0[A0[86['a']]] 8101FF 8201FF 83[0640] 8401FF 8501FF]",
     "name 6:61  user ca 2 indirect attributes"},
    {"a list that says nothing", IssuingPointAsText, "30[]", "-"},
    {"an indirect list", IssuingPointAsText, "30[8401FF]", "- indirect"},
    {"a list that says false", IssuingPointAsText, "30[840100]", "-"},
    {"a list that says one", IssuingPointAsText, "30[840101]", "none"},
    {"a list that says more", IssuingPointAsText, "30[8601FF]", "none"},

    {"an access description", AccessAsText, "30[30[06[2B06] 86['a']]]", "1.3.6 6:61 "},
    {"an access description of three fields", AccessAsText, "30[30[06[2B06] 86['a'] 0500]]", "none"},
    {"an access description without a place", AccessAsText, "30[30[06[2B06]]]", "none"},

    {"a list number", CrlNumberAsText, "02[0080]", "0080"},
    {"a list number below zero", CrlNumberAsText, "02[80]", "none"},
    {"a list number with a needless zero", CrlNumberAsText, "02[0001]", "none"},
};

} // namespace

TEST(Extensions, AreReadAsDer)
{
    for (const ExtensionCase& test : extensionCases)
        EXPECT_EQ(test.read(DerOf(test.octets)), test.text) << test.name;
}

TEST(Extensions, ListsEndAtTenThousandItems)
{
    const Bytes purpose = DerOf("06[2A03]");
    Bytes content;
    for (int count = 0; count < 10'000; ++count)
        content.insert(content.end(), purpose.begin(), purpose.end());
    const auto list = [&] {
        const std::size_t size = content.size();
        const Bytes head = {0x30, 0x82, static_cast<std::uint8_t>(size >> 8), static_cast<std::uint8_t>(size)};
        return Joined({head, content});
    };
    EXPECT_TRUE(ReadExtendedKeyUsage(list()));
    content.insert(content.end(), purpose.begin(), purpose.end());
    EXPECT_FALSE(ReadExtendedKeyUsage(list()));
}

namespace {

struct ExtensionsCase {
    const char* name;
    std::vector<Bytes> extensions;
    bool isMalformed;
    bool hasUnknownCritical;
    bool hasUnknownCriticalInList;
};

/// \param content as DerOf takes it.
Bytes CriticalExtension(std::string_view oid, std::string_view content)
{
    return TestExtension(oid, DerOf(content), true);
}

} // namespace

TEST(Extensions, AreReadOnceEach)
{
    const Bytes names = TestAlternativeNames({TestDns("a")});
    const ExtensionsCase cases[] = {
        {"none", {}, false, false, false},
        {"names", {names}, false, false, false},
        {"names twice", {names, TestKeyUsage(0x80), names}, true, false, true},
        {"an unknown one twice",
         {TestExtension("1.2.3", DerOf("0500")), names, TestExtension("1.2.3", DerOf("0500"))},
         true,
         false,
         false},
        {"names that are none", {TestExtension("2.5.29.17", DerOf("3000"))}, true, false, false},
        {"an unknown one", {TestExtension("1.2.3", DerOf("0500"))}, false, false, false},
        {"a critical unknown one", {CriticalExtension("1.2.3", "0500")}, false, true, true},
        {"critical constraints", {TestBasicConstraints(true)}, false, false, true},
        {"a critical key identifier", {CriticalExtension("2.5.29.14", "04[00]")}, false, true, true},
        {"the critical key identifier of an authority", {CriticalExtension("2.5.29.35", "30[80[00]]")}, false, true, false},
        {"critical names of the issuer", {CriticalExtension("2.5.29.18", "30[82['a']]")}, false, true, true},
        {"critical access", {CriticalExtension("1.3.6.1.5.5.7.1.1", "30[30[06[2A03] 86['a']]]")}, false, true, true},
        {"a critical place of fresh lists", {CriticalExtension("2.5.29.46", "30[30[]]")}, false, true, true},
        {"critical places of lists", {CriticalExtension("2.5.29.31", "30[30[]]")}, false, false, true},
        {"a critical place of a list", {CriticalExtension("2.5.29.28", "30[8401FF]")}, false, true, false},
        {"a malformed place of a list in a certificate", {TestExtension("2.5.29.28", DerOf("0500"))}, false, false, false},
        {"a critical base of a list", {CriticalExtension("2.5.29.27", "020100")}, false, true, false},
        {"no checks of a responder", {TestExtension("1.3.6.1.5.5.7.48.1.5", DerOf("0500"))}, false, false, false},
        {"no checks of a responder, malformed", {TestExtension("1.3.6.1.5.5.7.48.1.5", DerOf("020100"))}, true, false, false},
    };
    const TestIssuer issuer = {.name = TestName("CN=Issuer"), .key = TestKey(1)};
    for (const ExtensionsCase& test : cases) {
        TestCertificate certificate("CN=Subject", TestKey(2));
        for (const Bytes& extension : test.extensions)
            certificate.extension(extension);
        const CertificatePtr loaded = LoadCertificate(certificate.build(issuer));
        ASSERT_TRUE(loaded) << test.name;
        const ReadExtensions read = ReadAllExtensions(loaded->extensions(), ExtensionOwner::certificate);
        EXPECT_EQ(read.isMalformed, test.isMalformed) << test.name;
        EXPECT_EQ(read.hasUnknownCritical, test.hasUnknownCritical) << test.name;
        EXPECT_EQ(ReadAllExtensions(loaded->extensions(), ExtensionOwner::list).hasUnknownCritical, test.hasUnknownCriticalInList)
            << test.name;
    }
}

TEST(Extensions, FillTheirFields)
{
    const TestIssuer issuer = {.name = TestName("CN=Issuer"), .key = TestKey(1)};
    const Bytes der = TestCertificate("CN=Subject", TestKey(2))
                          .authority(3)
                          .extension(TestExtendedKeyUsage({"1.3.6.1.5.5.7.3.9"}))
                          .extension(TestAuthorityKeyIdentifier(*issuer.key))
                          .extension(TestAlternativeNames({TestDns("a"), TestEmail("b@c")}))
                          .extension(TestNameConstraints({TestDns("d")}, {TestDns("e"), TestDns("f")}))
                          .extension(TestPolicies({"1.2.3"}))
                          .extension(TestPolicyMappings({{"1.2.3", "1.2.4"}}))
                          .extension(TestPolicyConstraints(4, {}))
                          .extension(TestInhibitAnyPolicy(5))
                          .extension(TestDistributionPoint("http://g"))
                          .extension(TestOcspLocation("http://h"))
                          .extension(TestExtension("1.3.6.1.5.5.7.48.1.5", DerOf("0500")))
                          .extension(TestExtension("2.5.29.46", DerOf("30[30[A2[A4[3000]]]]")))
                          .build(issuer);
    const CertificatePtr certificate = LoadCertificate(der);
    ASSERT_TRUE(certificate);
    const ReadExtensions read = ReadAllExtensions(certificate->extensions(), ExtensionOwner::certificate);
    EXPECT_FALSE(read.isMalformed);
    EXPECT_EQ(read.basicConstraints.value().pathLength, 3U);
    EXPECT_TRUE(read.keyUsage.value().has(KeyUsageBit::keyCertSign));
    EXPECT_EQ(read.extendedKeyUsage.value(), std::vector{oids::ocspSigning});
    EXPECT_EQ(BytesOf(read.subjectKeyIdentifier.value()), TestKeyIdentifier(*TestKey(2)));
    EXPECT_EQ(BytesOf(read.authorityKeyIdentifier.value().keyIdentifier), TestKeyIdentifier(*issuer.key));
    EXPECT_EQ(read.subjectAlternativeName.value().size(), 2U);
    EXPECT_EQ(read.nameConstraints.value().excluded.size(), 2U);
    EXPECT_EQ(read.policies.value().size(), 1U);
    EXPECT_EQ(read.policyMappings.value().size(), 1U);
    EXPECT_EQ(read.policyConstraints.value().requireExplicitPolicy, 4U);
    EXPECT_EQ(read.inhibitAnyPolicy, 5U);
    EXPECT_EQ(read.distributionPoints.value().front().name.value().fullName.front().value.view(), "http://g");
    EXPECT_EQ(read.authorityInformation.value().front().location.value.view(), "http://h");
    EXPECT_EQ(read.freshestCrl.value().front().crlIssuer.size(), 1U);
    EXPECT_TRUE(read.hasOcspNoCheck);
}
