#include "pki/validation/profile.h"
#include "tests/pki/test_der.h"
#include "tests/pki/x509/der_text.h"
#include "tests/pki/x509/test_authority.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

using namespace ccrypto;

namespace {

const TestIssuer& ProfileIssuer()
{
    static const TestIssuer issuer = {.name = TestName("C=FI,CN=Issuer"), .key = TestKey(1)};
    return issuer;
}

/// \param content of the extension, as DerOf takes it.
Bytes ProfileExtension(std::string_view oid, std::string_view content, bool critical = false)
{
    return TestExtension(oid, DerOf(content), critical);
}

std::vector<Bytes> Extensions(std::initializer_list<std::vector<Bytes>> lists)
{
    std::vector<Bytes> all;
    for (const std::vector<Bytes>& list : lists)
        all.insert(all.end(), list.begin(), list.end());
    return all;
}

std::vector<Bytes> OfAuthority()
{
    return {TestAuthorityKeyIdentifier(*ProfileIssuer().key)};
}

/// What a certificate of a subject needs, and more.
std::vector<Bytes> SubjectWith(std::initializer_list<Bytes> more)
{
    return Extensions({OfAuthority(), more});
}

/// What a certificate of a CA needs, and more.
std::vector<Bytes> CaWith(std::initializer_list<Bytes> more)
{
    return Extensions(
        {OfAuthority(), {TestBasicConstraints(true), TestKeyUsage(0x06), TestSubjectKeyIdentifier(*TestKey(2))}, more});
}

KnownCertificate Known(const Bytes& der)
{
    KnownCertificate known;
    known.certificate = LoadCertificate(der);
    if (known.certificate == nullptr)
        return known;
    known.subject = ComparableName::Read(known.certificate->subject().GetDerEncodedElement().bytes()).value();
    known.issuer = ComparableName::Read(known.certificate->issuer().GetDerEncodedElement().bytes()).value();
    known.extensions = ReadAllExtensions(known.certificate->extensions(), ExtensionOwner::certificate);
    return known;
}

struct ProfileCase {
    std::string_view detail; ///< empty for a certificate that keeps all rules
    std::vector<Bytes> extensions;
    std::string_view subject = "CN=Subject";
    CertificateRole role = CertificateRole::endEntity;
};

void ExpectDetail(const KnownCertificate& known, CertificateRole role, std::string_view detail)
{
    ASSERT_TRUE(known.certificate) << detail;
    EXPECT_FALSE(known.extensions.isMalformed) << detail;
    const Finding finding = CheckProfile(known, role);
    EXPECT_EQ(finding.reason, detail.empty() ? Reason::none : Reason::profile) << detail << finding.detail.view();
    EXPECT_EQ(finding.detail.view(), detail.empty() ? "" : "RFC 5280, " + std::string(detail));
}

} // namespace

TEST(Profile, OfExtensions)
{
    constexpr CertificateRole ca = CertificateRole::ca;
    const auto names = [](std::initializer_list<Bytes> list) { return TestAlternativeNames(list); };
    const auto policies = [](std::string_view content) { return ProfileExtension("2.5.29.32", content); };
    const auto points = [](std::string_view content) { return ProfileExtension("2.5.29.31", content); };
    constexpr std::string_view directoryAttributes = "4.2.1.8: directory attributes that are empty or not of their form";
    constexpr std::string_view informationAccess = "4.2.2.2: the information access of the subject is empty or not of its form";
    const ProfileCase cases[] = {
        {"", SubjectWith({})},
        {"", SubjectWith({names({TestDns("a.example"), TestDns("*.a.example"), TestEmail("a@b"), TestUri("urn:a"),
                                 TestUri("http://a/"), TestIp({1, 2, 3, 4}), TestIp(Bytes(16)), TestDirectoryName("CN=a")}),
                          TestKeyUsage(0x80), TestPolicies({"1.2.3", "1.2.4"}), TestDistributionPoint("http://a/")})},
        {"",
         CaWith({TestNameConstraints({TestDns("a")}, {}), TestPolicyConstraints(0, {}), TestInhibitAnyPolicy(0),
                 TestPolicyMappings({{"1.2.3", "1.2.4"}})}),
         "CN=CA", ca},

        {"4.1.2.4: the subject of a CA or of an issuer of revocation lists is empty", CaWith({}), "", ca},
        {"4.1.2.4: the subject of a CA or of an issuer of revocation lists is empty", CaWith({}), ""},
        {"4.1.2.4: the subject of a CA or of an issuer of revocation lists is empty",
         SubjectWith({TestKeyUsage(0x02), TestAlternativeNames({TestDns("a")}, true)}), ""},
        {"4.1.2.4: the subject is empty and the alternative names are not critical", SubjectWith({}), ""},
        {"4.1.2.4: the subject is empty and the alternative names are not critical", SubjectWith({names({TestDns("a")})}), ""},
        {"", SubjectWith({TestAlternativeNames({TestDns("a")}, true)}), ""},

        {"4.1: the basic constraints say FALSE where cA is left out", SubjectWith({ProfileExtension("2.5.29.19", "30[010100]")})},
        {"", SubjectWith({ProfileExtension("2.5.29.19", "30[]")})},
        {"4.1: the key usage ends with a zero", SubjectWith({ProfileExtension("2.5.29.15", "03[0080]")})},
        {"4.1: the key usage ends with a zero", SubjectWith({ProfileExtension("2.5.29.15", "03[06C0 00]")})},
        {"4.1: an extension says FALSE where the critical flag is left out",
         SubjectWith({DerOf("30[06[551D0F] 010100 04[03[0780]]]")})},

        {"4.1: a name constraint says 0 where the minimum is left out",
         CaWith({ProfileExtension("2.5.29.30", "30[A1[30[82['a']] 30[82['a'] 800100]]]", true)})},

        {"4.1.2.6: an e-mail address in the subject alone", SubjectWith({}), "CN=Subject,E=a@b"},
        {"4.1.2.6: an e-mail address in the subject alone", SubjectWith({names({TestDns("a")})}), "CN=Subject,E=a@b"},
        {"", SubjectWith({names({TestDns("a"), TestEmail("a@b")})}), "CN=Subject,E=a@b"},

        {"4.2: name constraints, policy constraints or inhibitAnyPolicy that are not critical",
         CaWith({TestNameConstraints({TestDns("a")}, {}, false)})},
        {"4.2: name constraints, policy constraints or inhibitAnyPolicy that are not critical",
         CaWith({ProfileExtension("2.5.29.36", "30[800100]")})},
        {"4.2: name constraints, policy constraints or inhibitAnyPolicy that are not critical",
         CaWith({ProfileExtension("2.5.29.54", "020100")})},
        {"4.2: information access, directory attributes or the place of fresh lists is critical",
         SubjectWith({ProfileExtension("2.5.29.46", "30[30[A0[A0[86['a:b']]]]]", true)})},
        {"4.2: information access, directory attributes or the place of fresh lists is critical",
         SubjectWith({ProfileExtension("1.3.6.1.5.5.7.1.1", "30[30[06[2A03] 86['a:b']]]", true)})},
        {"4.2: information access, directory attributes or the place of fresh lists is critical",
         SubjectWith({ProfileExtension("1.3.6.1.5.5.7.1.11", "30[30[06[2A03] 86['a:b']]]", true)})},
        {"4.2: information access, directory attributes or the place of fresh lists is critical",
         SubjectWith({ProfileExtension("2.5.29.9", "30[30[06[2A03] 31[0500]]]", true)})},
        {"4.2: an extension that belongs to CAs", SubjectWith({TestNameConstraints({TestDns("a")}, {})})},
        {"4.2: an extension that belongs to CAs", SubjectWith({TestPolicyMappings({{"1.2.3", "1.2.4"}})})},
        {"4.2: an extension that belongs to CAs", SubjectWith({TestPolicyConstraints(0, {})})},
        {"4.2: an extension that belongs to CAs", SubjectWith({TestInhibitAnyPolicy(0)})},

        {"4.2.1.1: no authority key identifier", {}},
        {"4.2.1.1: the authority key identifier is critical", {ProfileExtension("2.5.29.35", "30[80[01]]", true)}},
        {"4.2.1.1: the authority key identifier names no key", {ProfileExtension("2.5.29.35", "30[A1[82['a']] 82[05]]")}},
        {"4.2.1.1: the authority key identifier names no key", {ProfileExtension("2.5.29.35", "30[80[]]")}},
        {"4.2.1.1: the authority key identifier has an issuer or a serial number alone",
         {ProfileExtension("2.5.29.35", "30[80[01] 82[05]]")}},
        {"4.2.1.1: the authority key identifier has an issuer or a serial number alone",
         {ProfileExtension("2.5.29.35", "30[80[01] A1[82['a']]]")}},
        {"", {ProfileExtension("2.5.29.35", "30[80[01] A1[82['a']] 82[05]]")}},

        {"4.2.1.2: the subject key identifier is critical", SubjectWith({ProfileExtension("2.5.29.14", "04[01]", true)})},
        {"4.2.1.2: a CA without a subject key identifier", SubjectWith({TestBasicConstraints(true), TestKeyUsage(0x04)})},
        {"4.2.1.2: a CA without a subject key identifier", SubjectWith({TestBasicConstraints(true), TestKeyUsage(0x04)}), "CN=CA",
         ca},
        {"4.2.1.3: the key usage is empty", SubjectWith({ProfileExtension("2.5.29.15", "03[00]")})},
        {"4.2.1.3: a CA without a key usage", SubjectWith({TestBasicConstraints(true), TestSubjectKeyIdentifier(*TestKey(2))})},

        {"4.2.1.4: a policy occurs twice", SubjectWith({TestPolicies({"1.2.3", "1.2.4", "1.2.3"})})},
        {"", SubjectWith({policies("30[30[06[2A03] 30[30[06[2A04] 0500]]]]")})},
        {"4.2.1.4: anyPolicy has a qualifier that RFC 5280 does not define",
         SubjectWith({policies("30[30[06[551D2000] 30[30[06[2A04] 0500]]]]")})},
        {"", SubjectWith({policies("30[30[06[551D2000] 30[30[06[2B06010505070201] 16['a']]]]]")})},
        {"4.2.1.4: the address of a practice statement is not an IA5String",
         SubjectWith({policies("30[30[06[2A03] 30[30[06[2B06010505070201] 0C['a']]]]]")})},
        {"", SubjectWith({policies("30[30[06[551D2000] 30[30[06[2B06010505070202] 30[0C['a']]]]]]")})},
        {"", SubjectWith({policies("30[30[06[2A03] 30[30[06[2B06010505070202] 30[30[0C['a'] 30[020101]] 16['a']]]]]]")})},
        {"", SubjectWith({policies("30[30[06[2A03] 30[30[06[2B06010505070202] 30[]]]]]")})},
        {"4.2.1.4: the text of a user notice is not a UTF8String or IA5String of at most 200 characters",
         SubjectWith({policies("30[30[06[2A03] 30[30[06[2B06010505070202] 30[1A['a']]]]]]")})},
        {"4.2.1.4: the text of a user notice is not a UTF8String or IA5String of at most 200 characters",
         SubjectWith({policies("30[30[06[2A03] 30[30[06[2B06010505070202] 30[0C['" + std::string(201, 'a') + "']]]]]]")})},
        {"", SubjectWith({policies("30[30[06[2A03] 30[30[06[2B06010505070202] 30[0C['" + std::string(200, 'a') + "']]]]]]")})},
        {"4.2.1.4: the text of a user notice is not a UTF8String or IA5String of at most 200 characters",
         SubjectWith({policies("30[30[06[2A03] 30[30[06[2B06010505070202] 30[0C00]]]]]")})},
        {"",
         SubjectWith({policies("30[30[06[2A03] 30[30[06[2B06010505070202] 30[0C['\u00E4" + std::string(199, 'a') + "']]]]]]")})},
        {"4.2.1.5: anyPolicy is mapped", CaWith({TestPolicyMappings({{"1.2.3", "2.5.29.32.0"}})})},
        {"4.2.1.5: anyPolicy is mapped", CaWith({TestPolicyMappings({{"2.5.29.32.0", "1.2.3"}})})},
        {"4.2.1.11: the policy constraints are empty", CaWith({TestPolicyConstraints({}, {})})},

        {"4.2.1.9: keyCertSign without cA", SubjectWith({TestKeyUsage(0x04)})},
        {"4.2.1.9: keyCertSign without cA", SubjectWith({TestKeyUsage(0x04), TestBasicConstraints(false)})},
        {"4.2.1.9: a CA without cA", SubjectWith({TestKeyUsage(0x80), TestSubjectKeyIdentifier(*TestKey(2))}), "CN=CA", ca},
        {"4.2.1.9: the basic constraints of a CA are not critical",
         SubjectWith({TestKeyUsage(0x04), TestSubjectKeyIdentifier(*TestKey(2)), TestBasicConstraints(true, {}, false)})},
        {"", SubjectWith({TestBasicConstraints(false, {}, false)})},
        {"4.2.1.9: a path length without cA and keyCertSign", SubjectWith({TestBasicConstraints(false, 0)})},
        {"4.2.1.9: a path length without cA and keyCertSign",
         SubjectWith({TestKeyUsage(0x02), TestSubjectKeyIdentifier(*TestKey(2)), TestBasicConstraints(true, 0)})},

        {"4.2.1.10: the name constraints are empty", CaWith({ProfileExtension("2.5.29.30", "30[]", true)})},
        {"4.2.1.10: a DNS constraint begins with a dot", CaWith({TestNameConstraints({TestDns(".a")}, {})})},
        {"4.2.1.10: a DNS constraint begins with a dot", CaWith({TestNameConstraints({}, {TestDns(".a")})})},
        {"4.2.1.10: a name constraint that is not of its form", CaWith({TestNameConstraints({TestIp({1, 2, 3, 4})}, {})})},

        {"4.2.1.13: a distribution point has neither a name nor an issuer", SubjectWith({points("30[30[81[0640]]]")})},
        {"4.2.1.13: the issuer at a distribution point is not a directory name", SubjectWith({points("30[30[A2[82['a']]]]")})},
        {"", SubjectWith({points("30[30[A2[A4[30[31[30[06[550403] 0C['Lists']]]]]]]]")})},
        {"4.2.1.13: a distribution point names the issuer of the certificate",
         SubjectWith({TestExtension("2.5.29.31", Tlv(0x30, Tlv(0x30, Tlv(0xA2, Tlv(0xA4, ProfileIssuer().name)))))})},
        {"4.2.1.13: a relative name at a distribution point of several issuers",
         SubjectWith({points("30[30[A0[A1[30[06[550403] 0C['a']]]]"
                             "A2[A4[30[31[30[06[550403] 0C['b']]]]] A4[30[31[30[06[550403] 0C['c']]]]]]]]")})},
        {"4.2.1.13: no distribution point is for all reasons", SubjectWith({points("30[30[A0[A0[86['a:b']]] 81[0640]]]")})},
        {"", SubjectWith({points("30[30[A0[A0[86['a:b']]] 81[0640]] 30[A0[A0[86['a:b']]]]]")})},
        {"4.2.1.13: a distribution point has neither a name nor an issuer",
         SubjectWith({ProfileExtension("2.5.29.46", "30[30[81[0640]]]")})},
        {"", SubjectWith({ProfileExtension("2.5.29.9", "30[30[06[2A03] 31[0500]]]")})},
        {directoryAttributes, SubjectWith({ProfileExtension("2.5.29.9", "30[]")})},
        {directoryAttributes, SubjectWith({ProfileExtension("2.5.29.9", "0500")})},
        {directoryAttributes, SubjectWith({ProfileExtension("2.5.29.9", "30[30[06[2A03] 31[]]]")})},
        {directoryAttributes, SubjectWith({ProfileExtension("2.5.29.9", "30[30[06[2A03] 31[0500] 0500]]")})},
        {directoryAttributes, SubjectWith({ProfileExtension("2.5.29.9", "30[30[06[2A03] 31[0500]] 0500]")})},
        {"", SubjectWith({ProfileExtension("1.3.6.1.5.5.7.1.11", "30[30[06[2A03] 86['a:b']]]")})},
        {informationAccess, SubjectWith({ProfileExtension("1.3.6.1.5.5.7.1.11", "30[]")})},
        {informationAccess, SubjectWith({ProfileExtension("1.3.6.1.5.5.7.1.11", "30[30[06[2A03]]]")})},
    };
    for (const ProfileCase& test : cases) {
        TestCertificate made(test.subject, TestKey(2));
        for (const Bytes& extension : test.extensions)
            made.extension(extension);
        ExpectDetail(Known(made.build(ProfileIssuer())), test.role, test.detail);
    }
}

TEST(Profile, OfAlternativeNames)
{
    const auto detailOf = [](std::string_view oid, const Bytes& name) {
        TestCertificate made("CN=Subject", TestKey(2));
        made.extension(TestAuthorityKeyIdentifier(*ProfileIssuer().key)).extension(TestExtension(oid, Tlv(0x30, name)));
        return CheckProfile(Known(made.build(ProfileIssuer())), CertificateRole::endEntity).detail;
    };
    const Bytes improper[] = {
        TestDns(""),
        TestDns(" "),
        TestDns("a_b"),
        TestDns("-a"),
        TestDns("a-"),
        TestDns("a.-b"),
        TestDns("a-.b"),
        TestDns("a."),
        TestDns("a*.b"),
        TestDns("*"),
        TestDns("*.*.a"),
        TestDns("a..b"),
        TestEmail(""),
        TestEmail("a"),
        TestEmail("a@"),
        TestEmail("<a@b>"),
        TestUri(""),
        TestUri("a"),
        TestUri("a:"),
        TestUri("/a"),
        TestUri(":a"),
        TestUri("1:a"),
        TestUri("http:///a"),
        TestUri("http://:1/"),
        TestUri("http://a@/"),
        TestUri("http://a b/"),
        TestUri("http://[::1"),
        TestUri("http://[a]/"),
        TestUri("http://a..b"),
        TestUri("a:b c"),
        TestUri("a/b:c"),
        TestIp({}),
        TestIp({1, 2, 3}),
        TestIp(Bytes(8)),
        TestIp(Bytes(32)),
        DerOf("A4[30[]]"),
        DerOf("A3[]"),
    };
    for (const Bytes& name : improper) {
        EXPECT_EQ(detailOf("2.5.29.17", name), "RFC 5280, 4.2.1.6: an alternative name that is empty or not of its form")
            << Hex(name);
        EXPECT_EQ(detailOf("2.5.29.18", name),
                  "RFC 5280, 4.2.1.6: an alternative name of the issuer that is empty or not of its form")
            << Hex(name);
    }
    EXPECT_EQ(detailOf("2.5.29.18", {}), "RFC 5280, 4.2.1.6: an alternative name of the issuer that is empty or not of its form");
    const Bytes proper[] = {TestDns("a-b.c1"),          TestDns("1.a"),
                            TestUri("urn:a"),           TestUri("http://a@b:1/c"),
                            TestUri("ldap://1.2.3.4/"), TestUri("http://[::1]:8/"),
                            TestUri("http://a.b?c"),    TestEmail("a@b.c"),
                            DerOf("88[2A03]")};
    for (const Bytes& name : proper)
        EXPECT_EQ(detailOf("2.5.29.17", name), "") << Hex(name);
}

TEST(Profile, OfFields)
{
    struct FieldCase {
        std::string_view detail;
        std::function<void(TestCertificate&)> change;
    };
    constexpr std::string_view years = "4.1.2.5: years to 2049 are UTCTime, from 2050 on GeneralizedTime";
    const auto serial = [](const Bytes& octets) { return [octets](TestCertificate& made) { made.serialOctets(octets); }; };
    const auto times = [](std::string_view der) { return [der](TestCertificate& made) { made.validityDer(DerOf(der)); }; };
    const FieldCase cases[] = {
        {"", serial({0x7F})},
        {"", serial(Bytes(20, 0x11))},
        {"", serial({0x00, 0x80})},
        {"4.1.2.2: the serial number is zero", serial({0x00})},
        {"4.1.2.2: the serial number is negative", serial({0x80})},
        {"4.1.2.2: the serial number has more than 20 octets", serial(Bytes(21, 0x11))},
        {"", times("17['200101000000Z'] 17['491231235959Z']")},
        {"", times("17['500101000000Z'] 18['20500101000000Z']")},
        {"", times("18['19491231235959Z'] 18['99991231235959Z']")},
        {years, times("18['20200101000000Z'] 17['491231235959Z']")},
        {years, times("17['200101000000Z'] 18['20491231235959Z']")},
        {years, times("18['19500101000000Z'] 18['20500101000000Z']")},
    };
    for (const FieldCase& test : cases) {
        TestCertificate made("CN=Subject", TestKey(2));
        made.extension(TestAuthorityKeyIdentifier(*ProfileIssuer().key));
        test.change(made);
        ExpectDetail(Known(made.build(ProfileIssuer())), CertificateRole::endEntity, test.detail);
    }
}

TEST(Profile, OfNameForms)
{
    constexpr std::string_view wrongType = "4.1.2.4: an attribute of a name is not a string of its type";
    constexpr std::string_view empty = "4.1.2.4: an attribute of a name is empty";
    constexpr std::string_view tooLong = "4.1.2.4: an attribute of a name has too many characters";
    const auto one = [](std::string_view oid, const std::string& value) {
        return "30[31[30[06[" + std::string(oid) + "] " + value + "]]]";
    };
    const auto text = [](std::string_view tag, std::size_t size) {
        return std::string(tag) + "['" + std::string(size, 'x') + "']";
    };
    constexpr std::string_view commonName = "550403";
    constexpr std::string_view country = "550406";
    constexpr std::string_view email = "2A864886F70D010901";
    struct FormCase {
        std::string_view detail;
        std::string name;
    };
    const FormCase cases[] = {
        {"", "30[31[30[06[550403] 0C['b']] 30[06[55040A] 0C['a']]]]"},
        {"4.1.2.4: the attributes of a relative name are not in the order of DER",
         "30[31[30[06[55040A] 0C['a']] 30[06[550403] 0C['b']]]]"},

        {"", one(commonName, text("0C", 64))},
        {"", one(commonName, "0C['" + std::string(63, 'x') + "' C3A4]")},
        {tooLong, one(commonName, text("0C", 65))},
        {tooLong, one(commonName, text("13", 65))},
        {empty, one(commonName, "0C[]")},
        {"", one(commonName, "14[E4]")},
        {"", one(commonName, "1E[00E4]")},
        {"", one(commonName, "1C[000000E4]")},
        {wrongType, one(commonName, "1E[00E400]")},
        {wrongType, one(commonName, "1C[0000E4]")},
        {wrongType, one(commonName, "0C[E4]")},
        {wrongType, one(commonName, "13['a@b']")},
        {wrongType, one(commonName, "16['a']")},
        {wrongType, one(commonName, "30[0C['a']]")},

        {"", one(country, "13['FI']")},
        {wrongType, one(country, "0C['FI']")},
        {tooLong, one(country, "13['FIN']")},
        {wrongType, one("550405", "0C['1']")},
        {wrongType, one("55042E", "0C['1']")},
        {"", one("0992268993F22C640119", text("16", 300))},
        {wrongType, one("0992268993F22C640119", "0C['a']")},
        {wrongType, one(email, "0C['a@b']")},
        {"", one("2A03", "04[]")},
    };
    for (const FormCase& test : cases) {
        TestCertificate made("CN=Subject", TestKey(2));
        made.subjectDer(DerOf(test.name)).extension(TestAuthorityKeyIdentifier(*ProfileIssuer().key));
        ExpectDetail(Known(made.build(ProfileIssuer())), CertificateRole::endEntity, test.detail);
    }

    const TestIssuer odd = {.name = DerOf(one(commonName, "0C[]")), .key = TestKey(1)};
    TestCertificate made("CN=Subject", TestKey(2));
    ExpectDetail(Known(made.extension(TestAuthorityKeyIdentifier(*TestKey(1))).build(odd)), CertificateRole::endEntity, empty);
}

TEST(Profile, OfVersionsAndNames)
{
    const TestIssuer nameless = {.name = TestName(""), .key = TestKey(1)};
    TestCertificate made("CN=Subject", TestKey(2));
    made.extension(TestAuthorityKeyIdentifier(*TestKey(1)));
    ExpectDetail(Known(made.build(nameless)), CertificateRole::endEntity, "4.1.2.4: the issuer's name is empty");

    ExpectDetail(Known(TestCertificate(made).innerAlgorithm(DerOf("30[06[2A864886F70D01010B] 0500]")).build(ProfileIssuer())),
                 CertificateRole::endEntity, "4.1.1.2: the two signature algorithms differ");
    const Bytes rsaWithoutNull = DerOf("30[06[2A864886F70D01010B]]");
    ExpectDetail(Known(TestCertificate(made).innerAlgorithm(rsaWithoutNull).outerAlgorithm(rsaWithoutNull).build(ProfileIssuer())),
                 CertificateRole::endEntity, "4.1.1.2: the signature algorithm lacks its parameter NULL");
    const auto rsaKey = [](std::string_view algorithm) {
        return DerOf("30[" + std::string(algorithm) + " 03[00 30[02[00" + std::string(512, 'F') + "] 02[010001]]]]");
    };
    ExpectDetail(Known(TestCertificate(made).publicKeyInfo(rsaKey("30[06[2A864886F70D010101] 0500]")).build(ProfileIssuer())),
                 CertificateRole::endEntity, "");
    ExpectDetail(Known(TestCertificate(made).publicKeyInfo(rsaKey("30[06[2A864886F70D010101]]")).build(ProfileIssuer())),
                 CertificateRole::endEntity, "4.1.2.7: the algorithm of the key lacks its parameter NULL");
    ExpectDetail(Known(TestCertificate(made).publicKeyInfo(rsaKey("30[06[2A864886F70D01010A]]")).build(ProfileIssuer())),
                 CertificateRole::endEntity, "");

    ExpectDetail(Known(TestCertificate(made).version(1).build(ProfileIssuer())), CertificateRole::endEntity,
                 "4.2.1.1: no authority key identifier");
    ExpectDetail(
        Known(TestCertificate(made).version(1).extensionsDer(DerOf("A3[30[30[06[2A03] 04[0500]]]]")).build(ProfileIssuer())),
        CertificateRole::endEntity, "4.1.2.1: extensions without version 3");
    ExpectDetail(Known(TestCertificate(made).extensionsDer(DerOf("81[0001]")).build(ProfileIssuer())), CertificateRole::endEntity,
                 "4.1.2.8: unique identifiers");
    ExpectDetail(Known(TestCertificate(made).extensionsDer(DerOf("82[0001]")).build(ProfileIssuer())), CertificateRole::endEntity,
                 "4.1.2.8: unique identifiers");
}

TEST(Profile, AnAuthorityNamesTheKeyOfItsIssuer)
{
    const KnownCertificate issuer = Known(TestCertificate(ProfileIssuer()).authority().build(ProfileIssuer()));
    ExpectDetail(issuer, CertificateRole::ca, "");

    // Issued by itself, but with another key: the key has to be named.
    const TestIssuer otherKey = {.name = ProfileIssuer().name, .key = TestKey(2)};
    ExpectDetail(Known(TestCertificate(ProfileIssuer()).authority().build(otherKey)), CertificateRole::ca,
                 "4.2.1.1: no authority key identifier");

    const Bytes otherIdentifier = TestAuthorityKeyIdentifier(*TestKey(2));
    ExpectDetail(Known(TestCertificate(ProfileIssuer()).authority().extension(otherIdentifier).build(ProfileIssuer())),
                 CertificateRole::ca, "4.2.1.1: the authority key identifier is not the key identifier of the issuer");

    const auto subjectOf = [](const ICryptoKeyPair& key) {
        return Known(TestCertificate("CN=Subject", TestKey(3)).extension(TestAuthorityKeyIdentifier(key)).build(ProfileIssuer()));
    };
    EXPECT_TRUE(CheckProfile(subjectOf(*ProfileIssuer().key), CertificateRole::endEntity, &issuer).passed());
    EXPECT_EQ(CheckProfile(subjectOf(*TestKey(2)), CertificateRole::endEntity, &issuer).detail,
              "RFC 5280, 4.2.1.1: the authority key identifier is not the key identifier of the issuer");
}
