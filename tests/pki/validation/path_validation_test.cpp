#include "pki/validation/validation_work.h"
#include "tests/pki/validation/test_world.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ccrypto {
namespace {

using World = TestWorld;
using Cert = TestCertificate;

class PathCases : public ::testing::TestWithParam<WorldCase> {};

TEST_P(PathCases, GiveTheirReason)
{
    World world;
    GetParam().make(world);
    const PathVerdict verdict = world.validate();
    EXPECT_EQ(Summary(verdict), GetParam().summary) << verdict.detail.view();
    EXPECT_EQ(verdict.reason == Reason::none, verdict.detail.isEmpty());
}

std::string NameOfCase(const ::testing::TestParamInfo<WorldCase>& instance)
{
    return WordsToName(instance.param.name);
}

constexpr const char* policyA = "1.3.6.1.4.1.55555.1.1";
constexpr const char* policyB = "1.3.6.1.4.1.55555.1.2";
constexpr const char* anyPolicyOid = "2.5.29.32.0";
constexpr const char* serverAuthOid = "1.3.6.1.5.5.7.3.1";
constexpr const char* clientAuthOid = "1.3.6.1.5.5.7.3.2";

void Chain(World& world)
{
    world.anchor("Root").authority("Sub", "Root").subject("Leaf", "Sub");
}

/// Root, Sub and Leaf with what a case adds to each.
void ChainOf(World& world, const World::ChangeCertificate& root, const World::ChangeCertificate& sub,
             const World::ChangeCertificate& leaf)
{
    world.anchor("Root", root).authority("Sub", "Root", sub).subject("Leaf", "Sub", leaf);
}

void Unchanged(Cert&) {}

void NamesKeyOfRoot(Cert& certificate)
{
    certificate.extension(TestAuthorityKeyIdentifier(*World::Who("Root").key));
}

void NamesKeyOfSub(Cert& certificate)
{
    certificate.extension(TestAuthorityKeyIdentifier(*World::Who("Sub").key));
}

void FlipLast(Bytes& der)
{
    der.back() ^= 1;
}

INSTANTIATE_TEST_SUITE_P(
    Signatures, PathCases,
    ::testing::Values(WorldCase{"three certificates", Chain, "VALID"},
                      WorldCase{"issued by the anchor", [](World& w) { w.anchor("Root").subject("Leaf", "Root"); }, "VALID"},
                      WorldCase{"the subject is an anchor",
                                [](World& w) {
                                    w.anchor("Root");
                                    w.subjectDer = w.anchors.front();
                                },
                                "VALID"},
                      WorldCase{"an end entity is an anchor",
                                [](World& w) {
                                    w.subject("Leaf", "Root");
                                    w.anchors.push_back(w.subjectDer);
                                },
                                "VALID"},
                      WorldCase{"an intermediate is the anchor",
                                [](World& w) {
                                    w.anchors.push_back(World::Certificate("Sub", "Root", true));
                                    w.subject("Leaf", "Sub");
                                },
                                "VALID"},
                      WorldCase{"the signature of the subject",
                                [](World& w) {
                                    Chain(w);
                                    FlipLast(w.subjectDer);
                                },
                                "bad-signature 0"},
                      WorldCase{"the signature of the intermediate",
                                [](World& w) {
                                    Chain(w);
                                    FlipLast(w.others.front());
                                },
                                "bad-signature 1"},
                      WorldCase{"the signature of the anchor does not count",
                                [](World& w) {
                                    Chain(w);
                                    FlipLast(w.anchors.front());
                                },
                                "VALID"},
                      WorldCase{"another key of the same name",
                                [](World& w) { w.anchor("Root").authority("Sub/2", "Root").subject("Leaf", "Sub"); },
                                "bad-signature 0"},
                      WorldCase{"SHA-1",
                                [](World& w) {
                                    TestIssuer sub = World::Who("Sub");
                                    sub.hash = algorithm::sha1;
                                    w.anchor("Root").authority("Sub", "Root");
                                    w.subjectDer = Cert(World::Who("Leaf")).build(sub);
                                },
                                "weak-algorithm 0"},
                      WorldCase{"SHA-1 where it is allowed",
                                [](World& w) {
                                    TestIssuer sub = World::Who("Sub");
                                    sub.hash = algorithm::sha1;
                                    w.anchor("Root").authority("Sub", "Root");
                                    w.subjectDer = Cert(World::Who("Leaf")).build(sub);
                                    w.options.allowWeak = true;
                                },
                                "VALID"},
                      WorldCase{"SHA-1 of the anchor does not count",
                                [](World& w) {
                                    TestIssuer root = World::Who("Root");
                                    root.hash = algorithm::sha1;
                                    w.anchors.push_back(Cert(root).authority().build(root));
                                    w.subject("Leaf", "Root");
                                },
                                "VALID"},
                      WorldCase{"MD5 where weak ones are allowed",
                                [](World& w) {
                                    TestIssuer root = World::Who("Root");
                                    root.key = TestRsaKey();
                                    w.anchors.push_back(Cert(root).authority().build(root));
                                    root.hash = algorithm::md5;
                                    w.subjectDer = Cert(World::Who("Leaf")).build(root);
                                    w.options.allowWeak = true;
                                },
                                "weak-algorithm 0"},
                      WorldCase{"an unknown algorithm",
                                [](World& w) {
                                    const Bytes unknown = Tlv(der::sequence, OidTlv("1.3.6.1.4.1.55555.9"));
                                    w.anchor("Root").subject("Leaf", "Root",
                                                             [&](Cert& c) { c.innerAlgorithm(unknown).outerAlgorithm(unknown); });
                                },
                                "unsupported-algorithm 0"},
                      WorldCase{"algorithms that differ",
                                [](World& w) {
                                    w.anchor("Root").subject("Leaf", "Root", [](Cert& c) {
                                        c.innerAlgorithm(Tlv(der::sequence, OidTlv("1.2.840.10045.4.3.3")));
                                    });
                                },
                                "malformed 0"}),
    NameOfCase);

INSTANTIATE_TEST_SUITE_P(
    Validity, PathCases,
    ::testing::Values(
        WorldCase{
            "the first second",
            [](World& w) { ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.validity("20261123120000Z", "20270101000000Z"); }); },
            "VALID"},
        WorldCase{
            "a second too early",
            [](World& w) { ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.validity("20261123120001Z", "20270101000000Z"); }); },
            "not-yet-valid 0"},
        WorldCase{
            "the last second",
            [](World& w) { ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.validity("20260101000000Z", "20261123120000Z"); }); },
            "VALID"},
        WorldCase{
            "a second too late",
            [](World& w) { ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.validity("20260101000000Z", "20261123115959Z"); }); },
            "expired 0"},
        WorldCase{"an intermediate",
                  [](World& w) {
                      ChainOf(
                          w, Unchanged, [](Cert& c) { c.validity("20260101000000Z", "20261123115959Z"); }, Unchanged);
                  },
                  "expired 1"},
        WorldCase{"an intermediate too early",
                  [](World& w) {
                      ChainOf(
                          w, Unchanged, [](Cert& c) { c.validity("20261123120001Z", "20280101000000Z"); }, Unchanged);
                  },
                  "not-yet-valid 1"},
        WorldCase{"the anchor",
                  [](World& w) {
                      ChainOf(
                          w, [](Cert& c) { c.validity("20260101000000Z", "20261123115959Z"); }, Unchanged, Unchanged);
                  },
                  "expired 2"},
        WorldCase{
            "years of the last century",
            [](World& w) { ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.validity("19500101000000Z", "20500101000000Z"); }); },
            "VALID"},
        WorldCase{"a part of a second too late",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.validity("20260101000000Z", "20261123120000Z"); });
                      w.options.at = TestMoment("20261123120000.5Z");
                  },
                  "expired 0"}),
    NameOfCase);

void NoConstraints(Cert& c)
{
    c.extensionsDer(Tlv(der::Context(3), Tlv(der::sequence, TestKeyUsage(0x06))));
}

INSTANTIATE_TEST_SUITE_P(
    Authorities, PathCases,
    ::testing::Values(
        WorldCase{"no basic constraints", [](World& w) { ChainOf(w, Unchanged, NoConstraints, Unchanged); }, "not-a-ca 1"},
        WorldCase{"no basic constraints of the anchor", [](World& w) { ChainOf(w, NoConstraints, Unchanged, Unchanged); }, "VALID"},
        WorldCase{"version 1",
                  [](World& w) {
                      ChainOf(
                          w, Unchanged, [](Cert& c) { c.version(1); }, Unchanged);
                  },
                  "not-a-ca 1"},
        WorldCase{"version 1 of the anchor",
                  [](World& w) {
                      ChainOf(
                          w, [](Cert& c) { c.version(1); }, Unchanged, Unchanged);
                  },
                  "VALID"},
        WorldCase{"version 1 of the subject", [](World& w) { ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.version(1); }); },
                  "VALID"},
        WorldCase{"cA false",
                  [](World& w) {
                      w.anchor("Root")
                          .plain("Sub", "Root", [](Cert& c) { c.extension(TestBasicConstraints(false)); })
                          .subject("Leaf", "Sub");
                  },
                  "not-a-ca 1"},
        WorldCase{"cA false of the anchor",
                  [](World& w) {
                      w.anchors.push_back(
                          World::Certificate("Root", "Root", false, [](Cert& c) { c.extension(TestBasicConstraints(false)); }));
                      w.subject("Leaf", "Root");
                  },
                  "not-a-ca 1"},
        WorldCase{"a subject that is an authority", [](World& w) { w.anchor("Root").subjectAuthority("Sub", "Root"); }, "VALID"},
        WorldCase{"no keyCertSign",
                  [](World& w) {
                      w.anchor("Root")
                          .plain("Sub", "Root",
                                 [](Cert& c) { c.extension(TestBasicConstraints(true)).extension(TestKeyUsage(0x82)); })
                          .subject("Leaf", "Sub");
                  },
                  "key-usage 1"},
        WorldCase{"no keyCertSign, not critical",
                  [](World& w) {
                      w.anchor("Root")
                          .plain("Sub", "Root",
                                 [](Cert& c) { c.extension(TestBasicConstraints(true)).extension(TestKeyUsage(0x02, false)); })
                          .subject("Leaf", "Sub");
                  },
                  "key-usage 1"},
        WorldCase{"no key usage",
                  [](World& w) {
                      w.anchor("Root")
                          .plain("Sub", "Root", [](Cert& c) { c.extension(TestBasicConstraints(true)); })
                          .subject("Leaf", "Sub");
                  },
                  "VALID"}),
    NameOfCase);

/// An authority with a path length.
World::ChangeCertificate PathLength(std::uint32_t length)
{
    return [length](Cert& c) {
        c = Cert(c);
        c.extensionsDer(Tlv(der::Context(3), Tlv(der::sequence, {TestBasicConstraints(true, length), TestKeyUsage(0x06)})));
    };
}

INSTANTIATE_TEST_SUITE_P(
    PathLengths, PathCases,
    ::testing::Values(
        WorldCase{"0 before the subject",
                  [](World& w) { w.anchor("Root").authority("A", "Root", PathLength(0)).subject("Leaf", "A"); }, "VALID"},
        WorldCase{"0 before an authority as subject",
                  [](World& w) { w.anchor("Root").authority("A", "Root", PathLength(0)).subjectAuthority("B", "A"); }, "VALID"},
        WorldCase{"0 before another",
                  [](World& w) { w.anchor("Root").authority("A", "Root", PathLength(0)).authority("B", "A").subject("Leaf", "B"); },
                  "path-length 1"},
        WorldCase{
            "0 before one that issued itself",
            [](World& w) { w.anchor("Root").authority("A", "Root", PathLength(0)).authority("A/2", "A").subject("Leaf", "A/2"); },
            "VALID"},
        WorldCase{
            "1 before two",
            [](World& w) {
                w.anchor("Root").authority("A", "Root", PathLength(1)).authority("B", "A").authority("C", "B").subject("Leaf", "C");
            },
            "path-length 1"},
        WorldCase{"a longer one below does not widen",
                  [](World& w) {
                      w.anchor("Root")
                          .authority("A", "Root", PathLength(1))
                          .authority("B", "A", PathLength(5))
                          .authority("C", "B")
                          .subject("Leaf", "C");
                  },
                  "path-length 1"},
        WorldCase{"of the anchor", [](World& w) { w.anchor("Root", PathLength(0)).authority("A", "Root").subject("Leaf", "A"); },
                  "path-length 1"},
        WorldCase{"of the anchor, enough",
                  [](World& w) { w.anchor("Root", PathLength(1)).authority("A", "Root").subject("Leaf", "A"); }, "VALID"},
        WorldCase{"asked for",
                  [](World& w) {
                      Chain(w);
                      w.options.maxDepth = 0;
                  },
                  "path-length 1"},
        WorldCase{"asked for, enough",
                  [](World& w) {
                      Chain(w);
                      w.options.maxDepth = 1;
                  },
                  "VALID"}),
    NameOfCase);

Bytes Unknown(bool critical)
{
    return TestExtension("1.3.6.1.4.1.55555.7", Bytes{0x05, 0x00}, critical);
}

INSTANTIATE_TEST_SUITE_P(
    Extensions, PathCases,
    ::testing::Values(
        WorldCase{"unknown", [](World& w) { ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(Unknown(false)); }); },
                  "VALID"},
        WorldCase{"unknown and critical",
                  [](World& w) { ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(Unknown(true)); }); },
                  "critical-extension 0"},
        WorldCase{"unknown and critical between",
                  [](World& w) {
                      ChainOf(
                          w, Unchanged, [](Cert& c) { c.extension(Unknown(true)); }, Unchanged);
                  },
                  "critical-extension 1"},
        WorldCase{"unknown and critical of the anchor",
                  [](World& w) {
                      ChainOf(
                          w, [](Cert& c) { c.extension(Unknown(true)); }, Unchanged, Unchanged);
                  },
                  "critical-extension 2"},
        WorldCase{"twice",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged,
                              [](Cert& c) { c.extension(TestKeyUsage(0x80)).extension(TestKeyUsage(0x80)); });
                  },
                  "malformed 0"},
        WorldCase{"malformed between",
                  [](World& w) {
                      ChainOf(
                          w, Unchanged,
                          [](Cert& c) {
                              c.extension(TestExtension("2.5.29.30", {0x30, 0x01}));
                          },
                          Unchanged);
                  },
                  "malformed 1"},
        WorldCase{"a purpose",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestExtendedKeyUsage({serverAuthOid})); });
                      w.options.extendedKeyUsages = {oids::serverAuth};
                  },
                  "VALID"},
        WorldCase{"another purpose",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestExtendedKeyUsage({clientAuthOid})); });
                      w.options.extendedKeyUsages = {oids::serverAuth};
                  },
                  "extended-key-usage 0"},
        WorldCase{"one of two purposes",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestExtendedKeyUsage({serverAuthOid})); });
                      w.options.extendedKeyUsages = {oids::serverAuth, oids::clientAuth};
                  },
                  "extended-key-usage 0"},
        WorldCase{"any purpose",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestExtendedKeyUsage({"2.5.29.37.0"})); });
                      w.options.extendedKeyUsages = {oids::serverAuth};
                  },
                  "VALID"},
        WorldCase{"another purpose between",
                  [](World& w) {
                      ChainOf(
                          w, Unchanged, [](Cert& c) { c.extension(TestExtendedKeyUsage({clientAuthOid})); }, Unchanged);
                      w.options.extendedKeyUsages = {oids::serverAuth};
                  },
                  "extended-key-usage 1"},
        WorldCase{"another purpose that nobody asks about",
                  [](World& w) {
                      ChainOf(
                          w, Unchanged, [](Cert& c) { c.extension(TestExtendedKeyUsage({clientAuthOid})); }, Unchanged);
                  },
                  "VALID"},
        WorldCase{"a key usage",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestKeyUsage(0xC0)); });
                      w.options.keyUsage = 3;
                  },
                  "VALID"},
        WorldCase{"half of a key usage",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestKeyUsage(0x80)); });
                      w.options.keyUsage = 3;
                  },
                  "key-usage 0"},
        WorldCase{"no key usage to miss",
                  [](World& w) {
                      Chain(w);
                      w.options.keyUsage = 3;
                  },
                  "VALID"},
        WorldCase{"a host",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestAlternativeNames({TestDns("a.example")})); });
                      w.options.host = "a.example";
                  },
                  "VALID"},
        WorldCase{"another host",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestAlternativeNames({TestDns("a.example")})); });
                      w.options.host = "b.example";
                  },
                  "name 0"},
        WorldCase{"another address",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) {
                          c.extension(TestAlternativeNames({TestIp({192, 0, 2, 1})}));
                      });
                      w.options.ipAddress = "192.0.2.2";
                  },
                  "name 0"},
        WorldCase{"another mailbox",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged,
                              [](Cert& c) { c.extension(TestAlternativeNames({TestEmail("a@a.example")})); });
                      w.options.email = "b@a.example";
                  },
                  "name 0"},
        WorldCase{"the profile",
                  [](World& w) {
                      Chain(w);
                      w.options.strict = true;
                  },
                  "profile 1"},
        WorldCase{"the profile, kept",
                  [](World& w) {
                      ChainOf(w, Unchanged, NamesKeyOfRoot, NamesKeyOfSub);
                      w.options.strict = true;
                  },
                  "VALID"},
        WorldCase{"the profile: the key identifier of another",
                  [](World& w) {
                      ChainOf(w, Unchanged, NamesKeyOfRoot, NamesKeyOfRoot);
                      w.options.strict = true;
                  },
                  "profile 0"},
        WorldCase{"the profile of an anchor",
                  [](World& w) {
                      ChainOf(
                          w, [](Cert& c) { c.serial(0); }, NamesKeyOfRoot, NamesKeyOfSub);
                      w.options.strict = true;
                  },
                  "profile 2"},
        WorldCase{"the profile of an anchor that is asked for",
                  [](World& w) {
                      w.subject("Leaf", "Sub", NamesKeyOfSub);
                      w.anchors.push_back(w.subjectDer);
                      w.options.strict = true;
                  },
                  "VALID"}),
    NameOfCase);

INSTANTIATE_TEST_SUITE_P(
    NameConstraints, PathCases,
    ::testing::Values(
        WorldCase{"permitted",
                  [](World& w) {
                      ChainOf(
                          w, Unchanged, [](Cert& c) { c.extension(TestNameConstraints({TestDns("example")}, {})); },
                          [](Cert& c) { c.extension(TestAlternativeNames({TestDns("a.example")})); });
                  },
                  "VALID"},
        WorldCase{"not permitted",
                  [](World& w) {
                      ChainOf(
                          w, Unchanged, [](Cert& c) { c.extension(TestNameConstraints({TestDns("example")}, {})); },
                          [](Cert& c) { c.extension(TestAlternativeNames({TestDns("a.test")})); });
                  },
                  "name-constraints 0"},
        WorldCase{"excluded by the anchor",
                  [](World& w) {
                      ChainOf(
                          w, [](Cert& c) { c.extension(TestNameConstraints({}, {TestDns("example")})); }, Unchanged,
                          [](Cert& c) { c.extension(TestAlternativeNames({TestDns("a.example")})); });
                  },
                  "name-constraints 0"},
        WorldCase{"an intermediate",
                  [](World& w) {
                      w.anchor("Root")
                          .authority("A", "Root",
                                     [](Cert& c) { c.extension(TestNameConstraints({}, {TestDirectoryName("C=FI,O=Test,CN=B")})); })
                          .authority("B", "A")
                          .subject("Leaf", "B");
                  },
                  "name-constraints 1"},
        WorldCase{"one that issued itself is exempt",
                  [](World& w) {
                      w.anchor("Root")
                          .authority("A", "Root",
                                     [](Cert& c) { c.extension(TestNameConstraints({}, {TestDirectoryName("C=FI,O=Test,CN=A")})); })
                          .authority("A/2", "A")
                          .subject("Leaf", "A/2");
                  },
                  "VALID"},
        WorldCase{"a subject that issued itself is not",
                  [](World& w) {
                      w.anchor("Root")
                          .authority("A", "Root",
                                     [](Cert& c) { c.extension(TestNameConstraints({}, {TestDirectoryName("C=FI,O=Test,CN=A")})); })
                          .subjectAuthority("A/2", "A");
                  },
                  "name-constraints 0"},
        WorldCase{"of the subject itself",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) {
                          c.extension(TestNameConstraints({}, {TestDns("example")}))
                              .extension(TestAlternativeNames({TestDns("a.example")}));
                      });
                  },
                  "VALID"}),
    NameOfCase);

World::ChangeCertificate Policies(std::initializer_list<const char*> policies)
{
    std::vector<const char*> oidsOfCase = policies;
    return [oidsOfCase](Cert& c) {
        Bytes list;
        for (const char* oid : oidsOfCase)
            list = Joined({list, Tlv(der::sequence, OidTlv(oid))});
        c.extension(TestExtension("2.5.29.32", Tlv(der::sequence, list)));
    };
}

World::ChangeCertificate With(World::ChangeCertificate first, Bytes extension)
{
    return [first = std::move(first), extension = std::move(extension)](Cert& c) {
        first(c);
        c.extension(extension);
    };
}

INSTANTIATE_TEST_SUITE_P(
    CertificatePolicies, PathCases,
    ::testing::Values(
        WorldCase{"none asked for and none there", Chain, "VALID"},
        WorldCase{"none there and one required",
                  [](World& w) {
                      Chain(w);
                      w.options.explicitPolicy = true;
                  },
                  "policy 1"},
        WorldCase{"one all the way",
                  [](World& w) {
                      ChainOf(w, Unchanged, Policies({policyA}), Policies({policyA}));
                      w.options.explicitPolicy = true;
                  },
                  "VALID"},
        WorldCase{"one that is not the user's",
                  [](World& w) {
                      ChainOf(w, Unchanged, Policies({policyA}), Policies({policyA}));
                      w.options.explicitPolicy = true;
                      w.options.policies = {Oid::FromDotted(policyB)};
                  },
                  "policy 0"},
        WorldCase{"one that is not the user's, not required",
                  [](World& w) {
                      ChainOf(w, Unchanged, Policies({policyA}), Policies({policyA}));
                      w.options.policies = {Oid::FromDotted(policyB)};
                  },
                  "VALID"},
        WorldCase{"required by an intermediate",
                  [](World& w) { ChainOf(w, Unchanged, With(Policies({policyA}), TestPolicyConstraints(0, {})), Unchanged); },
                  "policy 0"},
        WorldCase{"required one later",
                  [](World& w) { ChainOf(w, Unchanged, With(Policies({policyA}), TestPolicyConstraints(1, {})), Unchanged); },
                  "policy 0"},
        WorldCase{"required two later",
                  [](World& w) { ChainOf(w, Unchanged, With(Policies({policyA}), TestPolicyConstraints(2, {})), Unchanged); },
                  "VALID"},
        WorldCase{"required by the subject",
                  [](World& w) { ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestPolicyConstraints(0, {})); }); },
                  "policy 0"},
        WorldCase{"required one later by the subject",
                  [](World& w) { ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestPolicyConstraints(1, {})); }); },
                  "VALID"},
        WorldCase{"required by the anchor",
                  [](World& w) {
                      ChainOf(
                          w, [](Cert& c) { c.extension(TestPolicyConstraints(0, {})); }, Unchanged, Unchanged);
                  },
                  "policy 1"},
        WorldCase{"one that issued itself does not count",
                  [](World& w) {
                      w.anchor("Root")
                          .authority("A", "Root", With(Policies({policyA}), TestPolicyConstraints(2, {})))
                          .authority("A/2", "A", Policies({policyA}))
                          .subject("Leaf", "A/2");
                  },
                  "VALID"},
        WorldCase{"any",
                  [](World& w) {
                      ChainOf(w, Unchanged, Policies({anyPolicyOid}), Policies({policyA}));
                      w.options.explicitPolicy = true;
                      w.options.policies = {Oid::FromDotted(policyA)};
                  },
                  "VALID"},
        WorldCase{"any inhibited by the caller",
                  [](World& w) {
                      ChainOf(w, Unchanged, Policies({anyPolicyOid}), Policies({policyA}));
                      w.options.explicitPolicy = true;
                      w.options.inhibitAnyPolicy = true;
                  },
                  "policy 1"},
        WorldCase{"any inhibited one later",
                  [](World& w) {
                      ChainOf(w, Unchanged, With(Policies({policyA}), TestInhibitAnyPolicy(0)), Policies({anyPolicyOid}));
                      w.options.explicitPolicy = true;
                  },
                  "policy 0"},
        WorldCase{"any inhibited two later",
                  [](World& w) {
                      ChainOf(w, Unchanged, With(Policies({policyA}), TestInhibitAnyPolicy(1)), Policies({anyPolicyOid}));
                      w.options.explicitPolicy = true;
                  },
                  "VALID"},
        WorldCase{"any inhibited for a subject that issued itself",
                  [](World& w) {
                      w.anchor("Root")
                          .authority("A", "Root", With(Policies({policyA}), TestInhibitAnyPolicy(0)))
                          .subjectAuthority("A/2", "A", Policies({anyPolicyOid}));
                      w.options.explicitPolicy = true;
                  },
                  "policy 0"},
        WorldCase{"any inhibited but for one that issued itself",
                  [](World& w) {
                      w.anchor("Root")
                          .authority("A", "Root", With(Policies({policyA}), TestInhibitAnyPolicy(0)))
                          .authority("A/2", "A", Policies({anyPolicyOid}))
                          .subject("Leaf", "A/2", Policies({policyA}));
                      w.options.explicitPolicy = true;
                  },
                  "VALID"},
        WorldCase{
            "mapped",
            [](World& w) {
                ChainOf(w, Unchanged, With(Policies({policyA}), TestPolicyMappings({{policyA, policyB}})), Policies({policyB}));
                w.options.explicitPolicy = true;
                w.options.policies = {Oid::FromDotted(policyA)};
            },
            "VALID"},
        WorldCase{
            "mapped away",
            [](World& w) {
                ChainOf(w, Unchanged, With(Policies({policyA}), TestPolicyMappings({{policyA, policyB}})), Policies({policyA}));
                w.options.explicitPolicy = true;
            },
            "policy 0"},
        WorldCase{
            "mapping inhibited by the caller",
            [](World& w) {
                ChainOf(w, Unchanged, With(Policies({policyA}), TestPolicyMappings({{policyA, policyB}})), Policies({policyB}));
                w.options.explicitPolicy = true;
                w.options.inhibitMapping = true;
            },
            "policy 0"},
        WorldCase{"mapping inhibited by the anchor",
                  [](World& w) {
                      ChainOf(
                          w, [](Cert& c) { c.extension(TestPolicyConstraints({}, 0)); },
                          With(Policies({policyA}), TestPolicyMappings({{policyA, policyB}})), Policies({policyB}));
                      w.options.explicitPolicy = true;
                  },
                  "policy 0"},
        WorldCase{"from any",
                  [](World& w) {
                      ChainOf(w, Unchanged, With(Policies({policyA}), TestPolicyMappings({{anyPolicyOid, policyB}})),
                              Policies({policyB}));
                  },
                  "policy 1"},
        WorldCase{"to any",
                  [](World& w) {
                      ChainOf(w, Unchanged, With(Policies({policyA}), TestPolicyMappings({{policyA, anyPolicyOid}})),
                              Policies({policyB}));
                  },
                  "policy 1"},
        WorldCase{"those of the anchor",
                  [](World& w) {
                      ChainOf(w, Policies({policyB}), Policies({policyA}), Policies({policyA}));
                      w.options.explicitPolicy = true;
                  },
                  "policy 1"}),
    NameOfCase);

INSTANTIATE_TEST_SUITE_P(
    Building, PathCases,
    ::testing::Values(
        WorldCase{"no anchor", [](World& w) { w.authority("Sub", "Root").subject("Leaf", "Sub"); }, "no-path 1"},
        WorldCase{"no issuer", [](World& w) { w.anchor("Root").subject("Leaf", "Sub"); }, "no-path 0"},
        WorldCase{"an expired intermediate beside a good one",
                  [](World& w) {
                      w.anchor("Root")
                          .authority("Sub", "Root", [](Cert& c) { c.validity("20200101000000Z", "20210101000000Z"); })
                          .authority("Sub", "Root")
                          .subject("Leaf", "Sub");
                  },
                  "VALID"},
        WorldCase{"an intermediate that only rules refuse beside a good one",
                  [](World& w) {
                      w.anchor("Root")
                          .authority("Sub", "Root",
                                     [](Cert& c) { c.extension(TestNameConstraints({TestDirectoryName("C=SE")}, {})); })
                          .authority("Sub", "Root")
                          .subject("Leaf", "Sub");
                  },
                  "VALID"},
        WorldCase{"another key beside the right one",
                  [](World& w) {
                      w.anchor("Root")
                          .authority("Sub/2", "Root")
                          .authority("Sub/3", "Root")
                          .authority("Sub", "Root")
                          .subject("Leaf", "Sub");
                  },
                  "VALID"},
        WorldCase{"a bad signature beside a good one",
                  [](World& w) {
                      w.anchor("Root")
                          .authority("Sub", "Root")
                          .authority("Sub", "Root", [](Cert& c) { c.serial(2); })
                          .subject("Leaf", "Sub");
                      FlipLast(w.others.front());
                  },
                  "VALID"},
        WorldCase{"a cross-signed authority",
                  [](World& w) {
                      w.anchor("New").authority("Old", "New").authority("Sub", "Old").subject("Leaf", "Sub");
                      w.others.push_back(World::Certificate("Old", "Old", true));
                  },
                  "VALID"},
        WorldCase{"two that signed each other", [](World& w) { w.authority("A", "B").authority("B", "A").subject("Leaf", "A"); },
                  "no-path 2"},
        WorldCase{
            "two that signed each other below an anchor",
            [](World& w) { w.anchor("Root").authority("A", "B").authority("B", "A").authority("B", "Root").subject("Leaf", "A"); },
            "VALID"},
        WorldCase{"an authority that signed itself", [](World& w) { w.authority("A", "A").subject("Leaf", "A"); }, "no-path 1"},
        WorldCase{"the last key identifier is a hint only",
                  [](World& w) {
                      const TestKeyPtr other = TestKey(900);
                      w.anchor("Root").authority("Sub", "Root").subject("Leaf", "Sub", [&](Cert& c) {
                          c.extension(TestAuthorityKeyIdentifier(*other));
                      });
                  },
                  "VALID"},
        WorldCase{"names in another case",
                  [](World& w) {
                      w.anchor("Root");
                      TestIssuer root = World::Who("Root");
                      root.name = TestName("C=FI,O=TEST,CN=rOOT");
                      w.subjectDer = Cert(World::Who("Leaf")).build(root);
                  },
                  "VALID"},
        WorldCase{"names in another order",
                  [](World& w) {
                      w.anchor("Root");
                      TestIssuer root = World::Who("Root");
                      root.name = TestName("C=FI,CN=Root,O=Test");
                      w.subjectDer = Cert(World::Who("Leaf")).build(root);
                  },
                  "no-path 0"},
        WorldCase{"the path that came furthest speaks",
                  [](World& w) {
                      w.anchor("Root")
                          .authority("Sub", "Gone")
                          .authority("Sub", "Root", [](Cert& c) { c.validity("20200101000000Z", "20210101000000Z"); })
                          .subject("Leaf", "Sub");
                  },
                  "expired 1"}),
    NameOfCase);

TEST(PathValidation, CountsItsWork)
{
    World world;
    Chain(world);
    PathVerdict verdict = world.validate();
    EXPECT_EQ(verdict.work.steps, 3U);
    EXPECT_EQ(verdict.work.signatures, 2U);
    ASSERT_EQ(verdict.path.size(), 3U);
    EXPECT_EQ(verdict.path[0].status.status, CertificateStatus::notChecked);
    EXPECT_EQ(verdict.path[2].status.status, CertificateStatus::anchor);

    for (const char* const other : {"Sub/2", "Sub/3"})
        world.authority(other, "Root", [](Cert& c) { c.extension(TestKeyUsage(0x06)); });
    EXPECT_EQ(Summary(world.validate()), "VALID");
}

std::string Layer(std::uint32_t number, char half)
{
    return "L" + std::to_string(number) + (half == 'b' ? "/b" : "");
}

/// Two authorities of one name in each layer, each signed by both of the layer above: 2^32 paths, and none ends.
World CrossSigned(std::uint32_t layers)
{
    World world;
    for (std::uint32_t layer = 0; layer < layers; layer++)
        for (const char half : {'a', 'b'})
            for (const char issuerHalf : {'a', 'b'})
                world.authority(Layer(layer, half), Layer(layer + 1, issuerHalf));
    world.subject("Leaf", "L0");
    return world;
}

TEST(PathValidation, DoesNotTryEveryWayThroughCrossSignedAuthorities)
{
    World world = CrossSigned(32);
    PathVerdict verdict = world.validate();
    EXPECT_EQ(Summary(verdict), "no-path 32");
    EXPECT_EQ(verdict.work.signatures, 0U);
    EXPECT_LT(verdict.work.steps, 300U);

    // An anchor that has the name at the top, and another key.
    world.anchor("L32/c");
    verdict = world.validate();
    EXPECT_EQ(Summary(verdict), "bad-signature 32");
    EXPECT_LE(verdict.work.signatures, 4U);

    // The whole web is certified, but not by the rules.
    world.anchor("L32", [](Cert& c) { c.extension(TestNameConstraints({TestDirectoryName("C=SE")}, {})); });
    verdict = world.validate();
    EXPECT_EQ(verdict.reason, Reason::limit);
    EXPECT_LE(verdict.work.steps, 1000U);
    EXPECT_LE(verdict.work.signatures, 200U);
}

TEST(PathValidation, GoesSixtyFourCertificatesDeep)
{
    for (const std::uint32_t between : {62U, 63U}) {
        World world;
        world.anchor("D0");
        for (std::uint32_t number = 1; number <= between; number++)
            world.authority("D" + std::to_string(number), "D" + std::to_string(number - 1));
        world.subject("Leaf", "D" + std::to_string(between));
        const PathVerdict verdict = world.validate();
        EXPECT_EQ(Summary(verdict), between == 62 ? "VALID" : "limit 63") << verdict.path.size();
    }
}

/// Many certificates with one name and four keys, none of which signed the subject, are tried before the right one.
TEST(PathValidation, ChecksASignatureOnceForEachKey)
{
    World world;
    for (std::uint32_t number = 0; number < 40; number++) {
        TestIssuer other = World::Who("Root");
        other.key = TestKey(1000 + number % 4);
        world.anchors.push_back(Cert(other).serial(number + 10).extension(TestBasicConstraints(true)).build(other));
    }
    world.anchor("Root").subject("Leaf", "Root");
    const PathVerdict verdict = world.validate();
    EXPECT_EQ(Summary(verdict), "VALID");
    EXPECT_EQ(verdict.work.signatures, 5U);
}

TEST(ValidationWork, EndsAtItsLimits)
{
    ValidationWork work;
    for (std::uint32_t step = 0; step < 1'000; step++)
        EXPECT_TRUE(work.takeStep());
    EXPECT_TRUE(work.takeSignatures(200));
    EXPECT_TRUE(work.takeScopeChecks(1'000'000));
    EXPECT_FALSE(work.isExceeded());
    for (const auto& takeOne :
         {+[](ValidationWork& of) { return of.takeStep(); }, +[](ValidationWork& of) { return of.takeSignatures(1); },
          +[](ValidationWork& of) { return of.takeScopeChecks(1); }}) {
        ValidationWork spent = work;
        EXPECT_FALSE(takeOne(spent));
        EXPECT_TRUE(spent.isExceeded());
    }
}

TEST(PathValidation, GivesThePoliciesOfTheUser)
{
    World world;
    ChainOf(world, Unchanged, Policies({policyA, policyB}), Policies({policyB, policyA}));
    world.options.policies = {Oid::FromDotted(policyB)};
    const PathVerdict verdict = world.validate();
    ASSERT_EQ(verdict.policies.size(), 1U);
    EXPECT_EQ(verdict.policies.front(), Oid::FromDotted(policyB));
}

/// Whatever bit is flipped, the path is not valid; where the certificate does not even load there is nothing to validate.
TEST(PathValidation, IsNotValidWithABitFlipped)
{
    World world;
    world.anchor("Root").authority("Sub", "Root").subject("Leaf", "Sub", [](Cert& c) { c.extension(TestKeyUsage(0x80)); });
    for (Bytes* const der : {&world.subjectDer, &world.others.front()}) {
        for (std::size_t position = 0; position < der->size(); position += 5) {
            const auto bit = static_cast<std::uint8_t>(1U << position / 5 % 8);
            (*der)[position] ^= bit;
            if (LoadCertificate(*der) != nullptr) {
                EXPECT_NE(world.validate().verdict, Verdict::valid) << position;
            }
            (*der)[position] ^= bit;
        }
    }
    EXPECT_EQ(Summary(world.validate()), "VALID");
}

} // namespace
} // namespace ccrypto
