#include "pki/validation/name_constraints.h"
#include "tests/pki/validation/test_names.h"
#include "tests/pki/x509/der_text.h"

#include <gtest/gtest.h>

#include <string>

using namespace ccrypto;

namespace {

/// One name under one set of constraints.
struct NameCase {
    std::string_view name;
    std::string_view base;
    bool isWithin;    ///< whether the name is allowed where the base is permitted
    bool mayBeWithin; ///< whether it is refused where the base is excluded
};

ComparableName SubjectOf(std::string_view text)
{
    return ComparableName::Read(TestName(text)).value();
}

Reason ReasonUnder(const NameConstraints& constraints, std::string_view name)
{
    NameConstraintState state;
    NameWork work;
    EXPECT_TRUE(state.add(constraints).passed());
    return state.check(ComparableName(), TestGeneralNames({name}), work).reason;
}

/// Where names are compared as a whole, what is within may be within.
NameCase Within(std::string_view name, std::string_view base)
{
    return {name, base, true, true};
}

NameCase Outside(std::string_view name, std::string_view base)
{
    return {name, base, false, false};
}

/// A name that is refused under any constraint of its form.
NameCase Unreadable(std::string_view name, std::string_view base)
{
    return {name, base, false, true};
}

} // namespace

TEST(NameConstraints, OfEachForm)
{
    const NameCase cases[] = {
        Within("dns:example.com", "dns:example.com"),
        Within("dns:a.b.EXAMPLE.com", "dns:Example.COM"),
        Within("dns:a.example.com", "dns:"),
        Within("dns:a.example.com.", "dns:example.com"),
        Within("dns:a.example.com", "dns:example.com."),
        Outside("dns:badexample.com", "dns:example.com"),
        Outside("dns:example.com", "dns:a.example.com"),
        Outside("dns:example.org", "dns:example.com"),
        Within("dns:a.example.com", "dns:.example.com"),
        {"dns:example.com", "dns:.example.com", false, true},
        Within("dns:*.example.com", "dns:example.com"),
        Within("dns:*.example.com", "dns:.example.com"),
        Within("dns:*.a.example.com", "dns:example.com"),
        {"dns:*.example.com", "dns:a.example.com", false, true},
        Outside("dns:*.example.com", "dns:b.a.example.com"),
        {"dns:*.com", "dns:example.com", false, true},
        {"dns:*.com", "dns:com", true, true},
        Unreadable("dns:a*.example.com", "dns:example.com"),
        Unreadable("dns:*.*.example.com", "dns:example.com"),
        Unreadable("dns:*", "dns:example.com"),
        Unreadable("dns:", "dns:example.com"),
        Unreadable("dns:.example.com", "dns:example.com"),
        Unreadable("dns:a..example.com", "dns:example.com"),
        Unreadable("dns:a.example.com..", "dns:example.com"),
        Unreadable("dns:a b.example.com", "dns:example.com"),
        Unreadable({"dns:evil.org\0.example.com", 25}, "dns:example.com"),
        Unreadable({"dns:evil.org\0.example.com", 25}, "dns:example.org"),
        Within("dns:a_b.example.com", "dns:example.com"),

        Within("email:Me@Example.com", "email:Me@example.COM"),
        Outside("email:me@example.com", "email:Me@example.com"),
        Outside("email:me@example.org", "email:me@example.com"),
        Within("email:me@example.com", "email:example.com"),
        Outside("email:me@a.example.com", "email:example.com"),
        Within("email:me@a.example.com", "email:.example.com"),
        Outside("email:me@example.com", "email:.example.com"),
        Outside("email:me@badexample.com", "email:.example.com"),
        Within("email:me@example.com", "email:"),
        Within("email:\"Me\"@example.com", "email:Me@example.com"),
        Within("email:\"M\\e\"@example.com", "email:Me@example.com"),
        Outside("email:\"a@example.com\"@example.org", "email:example.com"),
        Unreadable("email:a@example.com@example.org", "email:example.com"),
        Unreadable("email:example.com", "email:example.com"),
        Unreadable("email:@example.com", "email:example.com"),
        Unreadable("email:me@", "email:example.com"),
        Unreadable("email:me@[192.0.2.1]", "email:example.com"),
        Unreadable({"email:me@example.com\0.org", 24}, "email:example.com"),
        Unreadable("email:\"me@example.com", "email:example.com"),
        Unreadable("email:\"me\"x@example.com", "email:example.com"),
        Unreadable("email:\"m\te\"@example.com", "email:example.com"),
        Unreadable("email:\"me\\\"@example.com", "email:example.com"),
        Unreadable("email:Me <me@example.com>", "email:example.com"),

        Within("uri:http://Example.com/path", "uri:example.com"),
        Outside("uri:http://a.example.com/", "uri:example.com"),
        Within("uri:http://a.example.com/", "uri:.example.com"),
        Outside("uri:http://example.com/", "uri:.example.com"),
        Within("uri:ftp://example.org@example.com:21/x", "uri:example.com"),
        Outside("uri:http://example.org?@example.com/", "uri:example.com"),
        Outside("uri:http://example.org#@example.com/", "uri:example.com"),
        Within("uri:http://a%40b:c@example.com/", "uri:example.com"),
        Unreadable("uri:http://a@example.org@example.com/", "uri:example.com"),
        Unreadable("uri:http://example.org\\@example.com/", "uri:example.com"),
        Unreadable("uri:http://example.org\t@example.com/", "uri:example.com"),
        Unreadable("uri:http://localhost/", "uri:example.com"),
        Within("uri:http://example.com", "uri:example.com"),
        Within("uri:http://example.com./", "uri:example.com"),
        Within("uri:http://example.com/", "uri:"),
        Unreadable("uri:http://192.0.2.1/", "uri:example.com"),
        Unreadable("uri:http://127.1/", "uri:"),
        Unreadable("uri:http://[2001:db8::1]/", "uri:example.com"),
        Unreadable("uri:urn:example.com", "uri:example.com"),
        Unreadable("uri:mailto:me@example.com", "uri:example.com"),
        Unreadable("uri:http:///example.com", "uri:example.com"),
        Unreadable("uri://example.com", "uri:example.com"),
        Unreadable("uri:http://example.com:80x/", "uri:example.com"),
        Unreadable("uri:http://example.org\\.example.com/", "uri:.example.com"),
        Unreadable("uri:http://example%2Ecom/", "uri:example.com"),
        Unreadable("uri:", "uri:example.com"),

        Within("ip:C0000201", "ip:C0000200FFFFFF00"),
        Outside("ip:C0000301", "ip:C0000200FFFFFF00"),
        Within("ip:C0000301", "ip:C0000200FFFFFE00"),
        Within("ip:C0000201", "ip:C00002FFFFFFFF00"),
        Within("ip:C0000201", "ip:C0000201FFFFFFFF"),
        Outside("ip:C0000202", "ip:C0000201FFFFFFFF"),
        Within("ip:C0000201", "ip:0000000000000000"),
        Outside("ip:20010DB8000000000000000000000001", "ip:0000000000000000"),
        Within("ip:20010DB8000000000000000000000001", "ip:20010DB8000000000000000000000000FFFFFFFF000000000000000000000000"),
        Outside("ip:20010DB9000000000000000000000001", "ip:20010DB8000000000000000000000000FFFFFFFF000000000000000000000000"),
        Outside("ip:20010DB8", "ip:20010DB8000000000000000000000000FFFFFFFF000000000000000000000000"),
        Unreadable("ip:C00002", "ip:C0000200FFFFFF00"),
        Unreadable("ip:C0000200FFFFFF00", "ip:C0000200FFFFFF00"),
        Unreadable("ip:", "ip:0000000000000000"),

        Within("dir:C=FI,O=Example,CN=Me", "dir:C=FI,O=Example"),
        Within("dir:C=FI,O=EXAMPLE,CN=Me", "dir:C=FI,O=example"),
        Within("dir:C=FI,O=Example", "dir:C=FI,O=Example"),
        Within("dir:C=FI", "dir:"),
        Outside("dir:O=Example,C=FI", "dir:C=FI"),
        Outside("dir:C=FI", "dir:C=FI,O=Example"),
        Outside("dir:C=SE,O=Example", "dir:C=FI,O=Example"),
    };
    for (const NameCase& test : cases) {
        const std::string shown = std::string(test.name) + " under " + std::string(test.base);
        EXPECT_EQ(ReasonUnder({TestGeneralNames({test.base}), {}}, test.name) == Reason::none, test.isWithin) << shown;
        EXPECT_EQ(ReasonUnder({{}, TestGeneralNames({test.base})}, test.name) == Reason::none, !test.mayBeWithin) << shown;
    }
}

TEST(NameConstraints, LeaveOtherFormsAlone)
{
    constexpr std::string_view bases[] = {"dns:example.com",
                                          "email:example.com",
                                          "uri:example.com",
                                          "ip:C0000201FFFFFFFF",
                                          "dir:C=FI",
                                          "other:x",
                                          "x400:x",
                                          "edi:x",
                                          "id:x"};
    constexpr std::string_view names[] = {"dns:a",   "email:b@c", "uri:http://d/", "ip:7F000001", "dir:C=SE",
                                          "other:x", "x400:x",    "edi:x",         "id:x"};
    for (std::size_t base = 0; base < std::size(bases); ++base)
        for (std::size_t name = 0; name < std::size(names); ++name) {
            const Reason expected = base == name ? Reason::nameConstraints : Reason::none;
            EXPECT_EQ(ReasonUnder({TestGeneralNames({bases[base]}), {}}, names[name]), expected)
                << bases[base] << " " << names[name];
        }
    // What is not compared is refused when it is excluded, too, however different it looks.
    EXPECT_EQ(ReasonUnder({{}, TestGeneralNames({"other:x"})}, "other:y"), Reason::nameConstraints);
}

TEST(NameConstraints, OfSeveralCertificatesHoldTogether)
{
    NameConstraintState state;
    NameWork work;
    const auto check = [&](const NameConstraintState& constraints, std::string_view name) {
        return constraints.check(ComparableName(), TestGeneralNames({"dns:x.example.com", name}), work);
    };
    ASSERT_TRUE(
        state.add({TestGeneralNames({"dns:example.com", "dns:example.org"}), TestGeneralNames({"dns:no.example.com"})}).passed());
    EXPECT_TRUE(check(state, "dns:example.org").passed());
    EXPECT_TRUE(check(state, "email:a@b").passed());
    const CCryptoString detail = check(state, "dns:b.no.example.com").detail;
    EXPECT_EQ(detail, "dNSName b.no.example.com is excluded");
    EXPECT_EQ(check(state, "dns:a\tb").detail, "dNSName a?b cannot be compared with constraints");

    NameConstraintState below = state;
    ASSERT_TRUE(below.add({TestGeneralNames({"dns:com"}), TestGeneralNames({"email:b"})}).passed());
    EXPECT_EQ(check(below, "dns:example.org").detail, "dNSName example.org is not permitted");
    EXPECT_FALSE(check(below, "dns:other.com").passed());
    EXPECT_FALSE(check(below, "dns:no.example.com").passed());
    EXPECT_FALSE(check(below, "email:a@b").passed());
    EXPECT_TRUE(check(below, "dns:a.example.com").passed());
    EXPECT_TRUE(check(state, "dns:example.org").passed()) << "the path that branched has its own";
}

TEST(NameConstraints, BasesAreOfTheirForm)
{
    constexpr std::string_view malformed[] = {
        "ip:C0000200",
        "ip:C0000200FF00FF00",
        "ip:C0000200FFFFFF",
        "ip:",
        "ip:C0000200FFFFFF01",
        "dns:*.example.com",
        "dns:a b",
        "dns:a..b",
        "dns:.",
        "dns:..a",
        "email:@example.com",
        "email:a@b@c",
        "email:a@",
        "email:*",
        "uri:http://example/",
        "uri:example.com:80",
        "uri:.",
    };
    for (const std::string_view base : malformed) {
        EXPECT_EQ(NameConstraintState().add({TestGeneralNames({base}), {}}).reason, Reason::malformed) << base;
        EXPECT_EQ(NameConstraintState().add({{}, TestGeneralNames({base})}).reason, Reason::malformed) << base;
    }
}

TEST(NameConstraints, HoldForTheSubject)
{
    NameConstraintState state;
    NameWork work;
    ASSERT_TRUE(state.add({TestGeneralNames({"dir:C=FI", "email:example.com"}), TestGeneralNames({"dir:C=FI,O=Bad"})}).passed());
    struct SubjectCase {
        const char* subject;
        std::vector<Bytes> names;
        const char* detail;
    };
    const SubjectCase cases[] = {
        {"C=FI,CN=Me", {}, ""},
        {"C=SE,CN=Me", {}, "the subject is not permitted"},
        {"C=FI,O=Bad,CN=Me", {}, "the subject is excluded"},
        {"", {}, ""},
        {"", {TestDirectoryName("C=SE")}, "directoryName C=SE is not permitted"},
        {"C=FI,E=me@example.com", {}, ""},
        {"C=FI,E=me@example.org", {}, "rfc822Name me@example.org is not permitted"},
        {"C=FI,E=me@example.org", {TestDns("a")}, "rfc822Name me@example.org is not permitted"},
        {"C=FI,E=me@example.org", {TestEmail("me@example.com")}, ""},
        {"C=FI,E=me", {}, "rfc822Name me cannot be compared with constraints"},
        {"C=FI", {TestEmail("me@example.org")}, "rfc822Name me@example.org is not permitted"},
    };
    const TestIssuer issuer = {.name = TestName("CN=Issuer"), .key = TestKey(1)};
    for (const SubjectCase& test : cases) {
        TestCertificate made(test.subject, TestKey(2));
        if (!test.names.empty())
            made.extension(TestAlternativeNames({test.names.front()}));
        KnownCertificate certificate;
        certificate.certificate = LoadCertificate(made.build(issuer));
        ASSERT_TRUE(certificate.certificate);
        certificate.subject = SubjectOf(test.subject);
        certificate.extensions = ReadAllExtensions(certificate.certificate->extensions(), ExtensionOwner::certificate);
        EXPECT_EQ(state.check(certificate, work).detail, test.detail) << test.subject;
        EXPECT_TRUE(NameConstraintState().check(certificate, work).passed());
    }
}

TEST(NameConstraints, WorkIsBounded)
{
    const GeneralName name = TestGeneralName("dns:a");
    const GeneralName base = TestGeneralName("dns:b");
    NameConstraintState state;
    EXPECT_EQ(state.add({GeneralNames(2000, base), GeneralNames(2097, base)}).reason, Reason::limit);
    ASSERT_TRUE(state.add({{}, GeneralNames(4096, base)}).passed());

    NameWork work;
    EXPECT_TRUE(state.check({}, GeneralNames(4, name), work).passed());
    EXPECT_EQ(state.check({}, GeneralNames(4097, name), work).reason, Reason::limit);
    // Names of another form take next to nothing.
    EXPECT_TRUE(state.check({}, GeneralNames(4096, TestGeneralName("email:a@b")), work).passed());

    // Each check takes one of the names, one of the subject, and the comparisons.
    NameWork three(3 * (4096 + 2));
    for (int check = 0; check < 3; ++check)
        EXPECT_TRUE(state.check({}, {name}, three).passed());
    EXPECT_EQ(state.check({}, {name}, three).reason, Reason::limit);

    // Names that are only read are work, too.
    NameWork five(5);
    EXPECT_EQ(state.check({}, GeneralNames(5, TestGeneralName("email:a@b")), five).reason, Reason::limit);

    // Long names are more work than short ones.
    NameConstraintState longNames;
    ASSERT_TRUE(longNames.add({{}, TestGeneralNames({"dir:CN=" + std::string(6400, 'a')})}).passed());
    NameWork hundred(100);
    EXPECT_EQ(longNames.check(SubjectOf("CN=a"), {}, hundred).reason, Reason::limit);
}
