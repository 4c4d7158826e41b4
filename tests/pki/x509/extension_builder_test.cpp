#include "pki/x509/extension_builder.h"
#include "tests/pki/keys/test_keys.h"
#include "tests/pki/x509/test_authority.h"

#include <functional>

using namespace ccrypto;

namespace {

Bytes DerOfExtension(const ExtensionPtr& extension)
{
    return extension != nullptr ? BytesOf(extension->BuildDer()) : Bytes();
}

GeneralName NameOfKind(GeneralName::Kind kind, std::string_view text)
{
    return {.kind = kind, .value = ElementOf(TextBytes(text))};
}

CCryptoDateTime TimeOfYear(std::int32_t year)
{
    platform::CalendarTime fields;
    fields.year = year;
    fields.month = 2;
    fields.day = 3;
    return CCryptoDateTime(fields, true);
}

KeyUsage Usage(std::uint16_t bits)
{
    return {.bits = bits};
}

DistributionPointName FullName(std::string_view uri)
{
    return {.fullName = {NameOfKind(GeneralName::Kind::uri, uri)}, .relativeName = {}};
}

const Oid testPolicy = Oid::FromDotted("2.16.840.1.101.3.2.1.48.1");
constexpr std::string_view testPolicyText = "2.16.840.1.101.3.2.1.48.1";

Bytes Uri(std::string_view text)
{
    return Tlv(der::Context(0), Tlv(der::Context(0), TestUri(text)));
}

Bytes PolicyWith(const Bytes& qualifiers)
{
    return TestExtension("2.5.29.32", Tlv(der::sequence, Tlv(der::sequence, {OidTlv(testPolicyText), qualifiers})));
}

Bytes Location(std::uint8_t method, std::string_view uri)
{
    return Tlv(der::sequence, {OidTlv("1.3.6.1.5.5.7.48." + std::to_string(method)), TestUri(uri)});
}

const Bytes truth = {0xFF};

} // namespace

// What is expected is made by hand: the encodings of RFC 5280.
TEST(ExtensionBuilder, WritesWhatIsRead)
{
    using Kind = GeneralName::Kind;
    const Bytes keyIdentifier(20, 7);
    const Bytes keyIdentifierString = Tlv(der::octetString, keyIdentifier);
    const Bytes upn = Tlv(der::Context(0), {OidTlv("1.3.6.1.4.1.311.20.2.3"),
                                            Tlv(der::Context(0), Tlv(der::utf8String, TextBytes("m\xC3\xA4@example.com")))});
    const std::string notice = R"(read "},SET{ this)";
    const Bytes cps = Tlv(der::sequence, {OidTlv("1.3.6.1.5.5.7.2.1"), Tlv(0x16, TextBytes("http://cps/"))});
    const Bytes userNotice =
        Tlv(der::sequence, {OidTlv("1.3.6.1.5.5.7.2.2"), Tlv(der::sequence, Tlv(der::utf8String, TextBytes(notice)))});
    const auto purposes = [](std::initializer_list<const char*> names) {
        std::vector<Oid> oids;
        for (const char* const name : names)
            oids.push_back(PurposeNamed(name));
        return oids;
    };
    const struct {
        const char* name;
        ExtensionPtr built;
        Bytes expected;
    } cases[] = {
        {"no authority", BuildBasicConstraints({}), TestBasicConstraints(false)},
        {"an authority", BuildBasicConstraints({.isCa = true, .pathLength = {}}), TestBasicConstraints(true)},
        {"path length 0, not critical", BuildBasicConstraints({.isCa = true, .pathLength = 0}, false),
         TestBasicConstraints(true, 0, false)},
        {"path length 200", BuildBasicConstraints({.isCa = true, .pathLength = 200}), TestBasicConstraints(true, 200)},
        {"digitalSignature", BuildKeyUsage(Usage(1)), TestKeyUsage(0x80)},
        {"keyCertSign and cRLSign", BuildKeyUsage(Usage(0x60)), TestKeyUsage(0x06)},
        {"encipherOnly", BuildKeyUsage(Usage(0x80)), TestKeyUsage(0x01)},
        {"decipherOnly", BuildKeyUsage(Usage(0x101), false), TestExtension("2.5.29.15", Tlv(der::bitString, {7, 0x80, 0x80}))},
        {"subject key identifier", BuildSubjectKeyIdentifier(ElementOf(keyIdentifier)),
         TestExtension("2.5.29.14", keyIdentifierString)},
        {"of a key", BuildSubjectKeyIdentifier(KeyIdentifierOf(*TestKey(1))), TestSubjectKeyIdentifier(*TestKey(1))},
        {"authority key identifier", BuildAuthorityKeyIdentifier(KeyIdentifierOf(*TestRsaKey())),
         TestAuthorityKeyIdentifier(*TestRsaKey())},
        {"purposes", BuildExtendedKeyUsage(purposes({"serverAuth", "smartCardLogon", "OCSPSigning", "1.2.3.4"}), true),
         TestExtendedKeyUsage({"1.3.6.1.5.5.7.3.1", "1.3.6.1.4.1.311.20.2.2", "1.3.6.1.5.5.7.3.9", "1.2.3.4"}, true)},
        {"all that are listed", BuildExtendedKeyUsage(ListedPurposes()),
         TestExtendedKeyUsage({"1.3.6.1.5.5.7.3.1", "1.3.6.1.5.5.7.3.2", "1.3.6.1.5.5.7.3.3", "1.3.6.1.5.5.7.3.4",
                               "1.3.6.1.4.1.311.20.2.2", "1.3.6.1.4.1.311.2.1.21", "1.3.6.1.4.1.311.2.1.22",
                               "1.3.6.1.4.1.311.10.3.1", "1.3.6.1.4.1.4449.1.2.4.1.1"})},
        {"names",
         BuildSubjectAlternativeName({NameOfKind(Kind::email, "a@b"),
                                      *UserPrincipalName("m\xC3\xA4@example.com"),
                                      NameOfKind(Kind::dns, "*.b"),
                                      {Kind::ipAddress, ElementOf({1, 2, 3, 4})},
                                      {Kind::ipAddress, ElementOf(Bytes(16, 1))},
                                      NameOfKind(Kind::uri, "http://x/"),
                                      {Kind::directory, ElementOf(TestName("CN=q"))}},
                                     true),
         TestAlternativeNames({TestEmail("a@b"), upn, TestDns("*.b"), TestIp({1, 2, 3, 4}), TestIp(Bytes(16, 1)),
                               TestUri("http://x/"), TestDirectoryName("CN=q")},
                              true)},
        {"names that look like structure", BuildSubjectAlternativeName({NameOfKind(Kind::email, R"(x"},SET{email}@b)")}),
         TestAlternativeNames({TestEmail(R"(x"},SET{email}@b)")})},
        {"a policy", BuildCertificatePolicies({{.policy = testPolicy, .practiceStatementUrl = {}, .userNotice = {}}}, true),
         TestPolicies({testPolicyText}, true)},
        {"a policy with both qualifiers",
         BuildCertificatePolicies({{.policy = testPolicy, .practiceStatementUrl = "http://cps/", .userNotice = notice.c_str()}}),
         PolicyWith(Tlv(der::sequence, {cps, userNotice}))},
        {"a policy with a notice",
         BuildCertificatePolicies({{.policy = testPolicy, .practiceStatementUrl = {}, .userNotice = notice.c_str()}}),
         PolicyWith(Tlv(der::sequence, userNotice))},
        {"locations", BuildAuthorityInformationAccess({"http://o/"}, {"http://i/", "http://j/"}),
         TestExtension("1.3.6.1.5.5.7.1.1",
                       Tlv(der::sequence, {Location(1, "http://o/"), Location(2, "http://i/"), Location(2, "http://j/")}))},
        {"a distribution point", BuildCrlDistributionPoints({"http://c/"}), TestDistributionPoint("http://c/")},
        {"three distribution points", BuildCrlDistributionPoints({"http://c/", "ldap://d/", "http://e/"}),
         TestExtension("2.5.29.31", Tlv(der::sequence, {Tlv(der::sequence, Uri("http://c/")), Tlv(der::sequence, Uri("ldap://d/")),
                                                        Tlv(der::sequence, Uri("http://e/"))}))},
        {"number 0", BuildCrlNumber(ElementOf({0, 0})), TestExtension("2.5.29.20", NumberTlv(0))},
        {"number 128", BuildCrlNumber(ElementOf({0, 0x80})), TestExtension("2.5.29.20", NumberTlv(0x80))},
        {"delta of 7", BuildDeltaCrlIndicator(ElementOf({7})), TestExtension("2.5.29.27", NumberTlv(7), true)},
        {"next publish", BuildNextPublish(TimeOfYear(2027)),
         TestExtension("1.3.6.1.4.1.311.21.4", Tlv(der::generalizedTime, TextBytes("20270203000000Z")))},
        {"a point for user certificates",
         BuildIssuingDistributionPoint({.name = {}, .onlyUserCertificates = true, .onlySomeReasons = {}}),
         TestIssuingDistributionPoint(Tlv(der::Context(1, false), truth))},
        {"a point with all fields",
         BuildIssuingDistributionPoint({.name = FullName("http://p/"),
                                        .onlyCaCertificates = true,
                                        .onlySomeReasons = ReasonFlags{0x102},
                                        .isIndirect = true}),
         TestIssuingDistributionPoint(Joined({Uri("http://p/"), Tlv(der::Context(2, false), truth),
                                              Tlv(der::Context(3, false), {7, 0x40, 0x80}), Tlv(der::Context(4, false), truth)}))},
        {"a point for attribute certificates",
         BuildIssuingDistributionPoint({.name = {}, .onlySomeReasons = {}, .onlyAttributeCertificates = true}),
         TestIssuingDistributionPoint(Tlv(der::Context(5, false), truth))},
    };
    for (const auto& test : cases)
        EXPECT_EQ(Hex(DerOfExtension(test.built)), Hex(test.expected)) << test.name;
}

TEST(ExtensionBuilder, RefusesWhatCannotBeWritten)
{
    using Kind = GeneralName::Kind;
    const auto policy = [](const char* url, const std::string& notice, const Oid& oid = testPolicy) {
        return BuildCertificatePolicies({{.policy = oid, .practiceStatementUrl = url, .userNotice = notice.c_str()}});
    };
    std::string longNotice;
    for (int index = 0; index < 200; ++index)
        longNotice += "\xC3\xA4";
    EXPECT_NE(policy("", longNotice), nullptr) << "200 characters";
    const std::function<ExtensionPtr()> cases[] = {
        [] { return BuildBasicConstraints({.isCa = false, .pathLength = 1}); },
        [] { return BuildKeyUsage({}); },
        [] { return BuildSubjectKeyIdentifier({}); },
        [] { return BuildAuthorityKeyIdentifier({}); },
        [] { return BuildExtendedKeyUsage({}); },
        [] {
            return BuildExtendedKeyUsage({PurposeNamed("serverAuth"), Oid()});
        },
        [] { return BuildSubjectAlternativeName({}); },
        [] { return BuildSubjectAlternativeName({NameOfKind(Kind::email, "")}); },
        [] { return BuildSubjectAlternativeName({NameOfKind(Kind::email, "\xC3\xA4@b")}); },
        [] { return BuildSubjectAlternativeName({NameOfKind(Kind::dns, "a b")}); },
        [] { return BuildSubjectAlternativeName({NameOfKind(Kind::dns, std::string_view("a\0b", 3))}); },
        [] { return BuildSubjectAlternativeName({NameOfKind(Kind::uri, "http://x/\n")}); },
        [] {
            return BuildSubjectAlternativeName({NameOfKind(Kind::dns, "a"), NameOfKind(Kind::ipAddress, "12345")});
        },
        [] { return BuildSubjectAlternativeName({NameOfKind(Kind::directory, "CN=x")}); },
        [] { return BuildCertificatePolicies({}); },
        [&] { return policy("", "", Oid()); },
        [&] { return policy("http://x /", ""); },
        [&] { return policy("", "\xFF"); },
        [&] { return policy("", "a\x1B[2J"); },
        [&] { return policy("", longNotice + "a"); },
        [] { return BuildAuthorityInformationAccess({}); },
        [] { return BuildAuthorityInformationAccess({"http://o/"}, {""}); },
        [] { return BuildAuthorityInformationAccess({"\xC3\xA4"}); },
        [] { return BuildCrlDistributionPoints({}); },
        [] {
            return BuildCrlDistributionPoints({"http://c/", ""});
        },
        [] { return BuildCrlNumber({}); },
        [] { return BuildCrlNumber(ElementOf(Bytes(21, 1))); },
        [] { return BuildNextPublish({}); },
        [] { return BuildIssuingDistributionPoint({}); },
        [] {
            return BuildIssuingDistributionPoint(
                {.name = {}, .onlyUserCertificates = true, .onlyCaCertificates = true, .onlySomeReasons = {}});
        },
        [] { return BuildIssuingDistributionPoint({.name = {}, .onlySomeReasons = ReasonFlags{0}}); },
        [] { return BuildIssuingDistributionPoint({.name = DistributionPointName(), .onlySomeReasons = {}}); },
        [] {
            return BuildExtension(Oid(), ElementOf({5, 0}));
        },
    };
    for (std::size_t number = 0; number < std::size(cases); ++number) {
        ForgetFailure();
        EXPECT_EQ(cases[number](), nullptr) << number;
        EXPECT_NE(ReasonOfFailure(), "") << number;
    }
    EXPECT_FALSE(UserPrincipalName("").has_value());
    EXPECT_FALSE(UserPrincipalName("\xFF@x").has_value());
    EXPECT_FALSE(UserPrincipalName(CCryptoString("a\0@x", 4u)).has_value());
}

TEST(ExtensionBuilder, PurposesHaveNames)
{
    EXPECT_EQ(PurposeNamed("timeStamping"), Oid::FromDotted("1.3.6.1.5.5.7.3.8"));
    EXPECT_EQ(PurposeName(Oid::FromDotted("1.3.6.1.5.5.7.3.9")), "OCSPSigning");
    EXPECT_EQ(PurposeName(Oid::FromDotted("1.2.3")), "");
    EXPECT_TRUE(PurposeNamed("").isNone());
    EXPECT_EQ(PurposeNamed("serverauth"), PurposeNamed("serverAuth"));
}
