#include "pki/validation/validation_work.h"
#include "tests/pki/ocsp/test_ocsp.h"
#include "tests/pki/validation/test_world.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

namespace ccrypto {
namespace {

class StatusCases : public ::testing::TestWithParam<WorldCase> {};

/// Root, Sub with the serial number 5 and Leaf with 7, and the list of Root. Every status is required.
TestWorld StatusWorld(const TestWorld::ChangeCertificate& leaf = {})
{
    TestWorld world;
    world.anchor("Root");
    world.authority("Sub", "Root", [](TestCertificate& c) { c.serial(5); });
    world.subject("Leaf", "Sub", [&](TestCertificate& c) {
        c.serial(7);
        if (leaf)
            leaf(c);
    });
    world.list("Root");
    world.options.status = ValidationOptions::Status::chain;
    return world;
}

TEST_P(StatusCases, FollowTheLists)
{
    TestWorld world = StatusWorld();
    GetParam().make(world);
    const PathVerdict verdict = world.validate();
    EXPECT_EQ(Summary(verdict), GetParam().summary) << verdict.detail.view();
}

std::string NameOfStatusCase(const ::testing::TestParamInfo<WorldCase>& instance)
{
    return WordsToName(instance.param.name);
}

using W = TestWorld;
using L = TestCrl;

void AddOcsp(W& world, const TestOcspResponse& response, const char* signer)
{
    const Bytes der = response.build(W::Who(signer));
    auto loaded = std::make_shared<CCryptoOCSP::COCSPResponse>();
    ASSERT_TRUE(loaded->LoadResponse(element(der.data(), static_cast<std::uint32_t>(der.size()))));
    world.sources.responses.push_back(std::move(loaded));
}

TestOcspResponse OcspOfLeaf()
{
    TestOcspResponse response(W::Who("Sub"));
    response.certId.serial = {7};
    response.thisUpdate = response.producedAt = TestOcspTime("20261120000000Z");
    response.nextUpdate = TestOcspTime("20261201000000Z");
    return response;
}

Bytes RevokedStatus()
{
    return Tlv(der::Context(1), TestOcspTime("20261101000000Z"));
}

/// Revoked for a reason by a response that holds no longer.
TestOcspResponse OldOcspOfLeaf(std::uint8_t reason)
{
    TestOcspResponse response = OcspOfLeaf();
    response.status = Tlv(der::Context(1), {TestOcspTime("20261101000000Z"), {0xA0, 3, 10, 1, reason}});
    response.nextUpdate = TestOcspTime("20261121000000Z");
    return response;
}

/// Revoked at that time by a response that does not hold yet.
void AddLaterOcsp(W& world, const char* revoked)
{
    TestOcspResponse response = OcspOfLeaf();
    response.status = Tlv(der::Context(1), TestOcspTime(revoked));
    response.thisUpdate = response.producedAt = TestOcspTime("20261130000000Z");
    AddOcsp(world, response, "Sub");
}

INSTANTIATE_TEST_SUITE_P(
    Basic, StatusCases,
    ::testing::Values(
        WorldCase{"good", [](W& w) { w.list("Sub"); }, "VALID"},
        WorldCase{"revoked", [](W& w) { w.list("Sub", [](L& l) { l.entry(3).entry(7, 1).entry(9); }); }, "revoked 0"},
        WorldCase{"revoked by the second list of one moment", [](W& w) { w.list("Sub").list("Sub", [](L& l) { l.entry(7); }); },
                  "revoked 0"},
        WorldCase{"revoked by the first list of one moment", [](W& w) { w.list("Sub", [](L& l) { l.entry(7); }).list("Sub"); },
                  "revoked 0"},
        WorldCase{"an authority revoked",
                  [](W& w) { w.list("Root", [](L& l) { l.thisUpdate("20260601000000Z").entry(5); }).list("Sub"); }, "revoked 1"},
        WorldCase{"no list", [](W&) {}, "status-unknown 0 ?"},
        WorldCase{"no list of the root",
                  [](W& w) {
                      w.lists.clear();
                      w.list("Sub");
                  },
                  "status-unknown 1 ?"},
        WorldCase{"of the subject alone",
                  [](W& w) {
                      w.lists.clear();
                      w.list("Sub");
                      w.options.status = ValidationOptions::Status::leaf;
                  },
                  "VALID"},
        WorldCase{"of the subject alone, but an authority revoked",
                  [](W& w) {
                      w.lists.clear();
                      w.list("Sub").list("Root", [](L& l) { l.entry(5); });
                      w.options.status = ValidationOptions::Status::leaf;
                  },
                  "revoked 1"},
        WorldCase{"of none, but revoked",
                  [](W& w) {
                      w.list("Sub", [](L& l) { l.entry(7); });
                      w.options.status = ValidationOptions::Status::none;
                  },
                  "revoked 0"},
        WorldCase{"of none", [](W& w) { w.options.status = ValidationOptions::Status::none; }, "VALID"},
        WorldCase{"nothing given", [](W& w) { w.lists.clear(); }, "status-unknown 1 ?"},
        WorldCase{"signed by another key", [](W& w) { w.list("Sub/2"); }, "status-unknown 0 ?"},
        WorldCase{"a bad signature",
                  [](W& w) {
                      w.list("Sub");
                      w.lists.back().back() ^= 1;
                  },
                  "status-unknown 0 ?"},
        WorldCase{"another issuer", [](W& w) { w.authority("Other", "Root").list("Other", [](L& l) { l.entry(7); }); },
                  "status-unknown 0 ?"},
        WorldCase{"an unknown critical extension",
                  [](W& w) { w.list("Sub", [](L& l) {
                                 l.extension(TestExtension("1.3.6.1.4.1.55555.8", {5, 0}, true));
                             }); },
                  "status-unknown 0 ?"},
        WorldCase{"an unknown extension",
                  [](W& w) { w.list("Sub", [](L& l) {
                                 l.extension(TestExtension("1.3.6.1.4.1.55555.8", {5, 0}));
                             }); }, "VALID"},
        WorldCase{"an unknown critical extension of another entry",
                  [](W& w) {
                      w.list("Sub", [](L& l) {
                          l.entry(8, {}, "20260101000000Z", {TestExtension("1.3.6.1.4.1.55555.8", {5, 0}, true)});
                      });
                  },
                  "status-unknown 0 ?"},
        WorldCase{"SHA-1",
                  [](W& w) {
                      TestIssuer sub = W::Who("Sub");
                      sub.hash = algorithm::sha1;
                      w.lists.push_back(TestCrl().build(sub));
                  },
                  "status-unknown 0 ?"},
        WorldCase{"SHA-1 where it is allowed",
                  [](W& w) {
                      TestIssuer sub = W::Who("Sub");
                      sub.hash = algorithm::sha1;
                      w.lists.push_back(TestCrl().build(sub));
                      w.options.allowWeak = true;
                  },
                  "VALID"},
        WorldCase{"version 1", [](W& w) { w.list("Sub", [](L& l) { l.version(1); }); }, "VALID"},
        WorldCase{"an issuer without cRLSign",
                  [](W& w) {
                      w.others.clear();
                      w.plain("Sub", "Root", [](TestCertificate& c) {
                           c.serial(5).extension(TestBasicConstraints(true)).extension(TestKeyUsage(0x04));
                       }).list("Sub");
                  },
                  "status-unknown 0 ?"}),
    NameOfStatusCase);

INSTANTIATE_TEST_SUITE_P(
    Times, StatusCases,
    ::testing::Values(
        WorldCase{"the last second of the skew", [](W& w) { w.list("Sub", [](L& l) { l.nextUpdate("20261123115500Z"); }); },
                  "VALID"},
        WorldCase{"too old", [](W& w) { w.list("Sub", [](L& l) { l.nextUpdate("20261123115459Z"); }); }, "status-stale 0 ?"},
        WorldCase{"the first second of the skew", [](W& w) { w.list("Sub", [](L& l) { l.thisUpdate("20261123120500Z"); }); },
                  "VALID"},
        WorldCase{"too early", [](W& w) { w.list("Sub", [](L& l) { l.thisUpdate("20261123120501Z"); }); }, "status-unknown 0 ?"},
        WorldCase{"a day without next update",
                  [](W& w) { w.list("Sub", [](L& l) { l.thisUpdate("20261122120000Z").nextUpdate(""); }); }, "VALID"},
        WorldCase{"two days without next update",
                  [](W& w) { w.list("Sub", [](L& l) { l.thisUpdate("20261121120000Z").nextUpdate(""); }); }, "status-stale 0 ?"},
        WorldCase{"two days that are allowed",
                  [](W& w) {
                      w.list("Sub", [](L& l) { l.thisUpdate("20261121120000Z").nextUpdate(""); });
                      w.options.maxAgeSeconds = 2 * 86400;
                  },
                  "VALID"},
        WorldCase{"revoked without next update", [](W& w) { w.list("Sub", [](L& l) { l.nextUpdate("").entry(7); }); }, "revoked 0"},
        WorldCase{"revoked long ago", [](W& w) { w.list("Sub", [](L& l) { l.nextUpdate("20260201000000Z").entry(7, 1); }); },
                  "revoked 0"},
        WorldCase{"put on hold long ago", [](W& w) { w.list("Sub", [](L& l) { l.nextUpdate("20260201000000Z").entry(7, 6); }); },
                  "status-stale 0 ?"},
        WorldCase{"put on hold", [](W& w) { w.list("Sub", [](L& l) { l.entry(7, 6); }); }, "revoked 0"},
        WorldCase{"put on hold, released by a newer list",
                  [](W& w) {
                      w.list("Sub", [](L& l) { l.entry(7, 6); }).list("Sub", [](L& l) {
                          l.thisUpdate("20260601000000Z").number(2);
                      });
                  },
                  "VALID"},
        WorldCase{"revoked by a newer list",
                  [](W& w) { w.list("Sub").list("Sub", [](L& l) { l.thisUpdate("20260601000000Z").number(2).entry(7); }); },
                  "revoked 0"},
        WorldCase{
            "revoked, as a later list says",
            [](W& w) { w.list("Sub").list("Sub", [](L& l) { l.thisUpdate("20261201000000Z").entry(7, 1, "20261123120000Z"); }); },
            "revoked 0"},
        WorldCase{
            "not yet revoked, as a later list says",
            [](W& w) { w.list("Sub").list("Sub", [](L& l) { l.thisUpdate("20261201000000Z").entry(7, 1, "20261123120001Z"); }); },
            "VALID"},
        WorldCase{"to be revoked, as a list of this time says",
                  [](W& w) { w.list("Sub", [](L& l) { l.entry(7, 1, "20261201000000Z"); }); }, "revoked 0"}),
    NameOfStatusCase);

INSTANTIATE_TEST_SUITE_P(
    Signers, StatusCases,
    ::testing::Values(
        WorldCase{"a certificate for lists alone",
                  [](W& w) {
                      w.plain("Sub/lists", "Root", [](TestCertificate& c) { c.extension(TestKeyUsage(0x02)); }).list("Sub/lists");
                  },
                  "VALID"},
        WorldCase{"the same, revoked",
                  [](W& w) {
                      w.plain("Sub/lists", "Root", [](TestCertificate& c) { c.serial(6).extension(TestKeyUsage(0x02)); })
                          .list("Sub/lists")
                          .list("Root", [](L& l) { l.thisUpdate("20260601000000Z").entry(6); });
                  },
                  "status-unknown 0 ?"},
        WorldCase{"the same, expired",
                  [](W& w) {
                      w.plain("Sub/lists", "Root", [](TestCertificate& c) {
                           c.validity("20200101000000Z", "20210101000000Z").extension(TestKeyUsage(0x02));
                       }).list("Sub/lists");
                  },
                  "status-unknown 0 ?"},
        WorldCase{"the same without cRLSign",
                  [](W& w) {
                      w.plain("Sub/lists", "Root", [](TestCertificate& c) { c.extension(TestKeyUsage(0x80)); }).list("Sub/lists");
                  },
                  "status-unknown 0 ?"},
        WorldCase{"the same of another anchor",
                  [](W& w) {
                      w.anchor("Root2")
                          .plain("Sub/lists", "Root2", [](TestCertificate& c) { c.extension(TestKeyUsage(0x02)); })
                          .list("Sub/lists")
                          .list("Root2");
                  },
                  "status-unknown 0 ?"},
        WorldCase{"one whose own list has nothing against it",
                  [](W& w) {
                      w.plain("Sub/lists", "Sub", [](TestCertificate& c) { c.extension(TestKeyUsage(0x02)); }).list("Sub/lists");
                  },
                  "VALID"},
        WorldCase{"one revoked by its own list",
                  [](W& w) {
                      w.plain("Sub/lists", "Sub", [](TestCertificate& c) {
                           c.serial(8).extension(TestKeyUsage(0x02));
                       }).list("Sub/lists", [](L& l) { l.entry(8); });
                  },
                  "status-unknown 0 ?"}),
    NameOfStatusCase);

Bytes PointName(std::string_view uri)
{
    return Tlv(der::Context(0), Tlv(der::Context(0), TestUri(uri)));
}

Bytes Flag(std::uint8_t number)
{
    return Tlv(der::Context(number, false), Bytes{0xFF});
}

/// \param fields of one DistributionPoint.
Bytes PointExtension(const Bytes& fields)
{
    return TestExtension("2.5.29.31", Tlv(der::sequence, Tlv(der::sequence, fields)));
}

/// The subject again, with a distribution point of these fields.
void Point(W& w, const Bytes& fields)
{
    w.subject("Leaf", "Sub", [&](TestCertificate& c) { c.serial(7).extension(PointExtension(fields)); });
}

W::ChangeList Scope(const Bytes& fields, std::optional<std::uint64_t> revoked = {})
{
    return [=](L& l) {
        l.extension(TestIssuingDistributionPoint(fields));
        if (revoked)
            l.entry(*revoked, 1);
    };
}

Bytes Reasons(std::uint8_t unused, const Bytes& bits)
{
    return Tlv(der::Context(3, false), Joined({{unused}, bits}));
}

Bytes RelativeName(std::string_view commonName)
{
    const Bytes attribute = Tlv(der::sequence, {OidTlv("2.5.4.3"), Tlv(der::utf8String, TextBytes(commonName))});
    return Tlv(der::Context(0), Tlv(der::Context(1), attribute));
}

INSTANTIATE_TEST_SUITE_P(
    Scopes, StatusCases,
    ::testing::Values(
        WorldCase{"of end entities", [](W& w) { w.list("Sub", Scope(Flag(1))); }, "VALID"},
        WorldCase{"of authorities", [](W& w) { w.list("Sub", Scope(Flag(2))); }, "status-unknown 0 ?"},
        WorldCase{"of attribute certificates", [](W& w) { w.list("Sub", Scope(Flag(5))); }, "status-unknown 0 ?"},
        WorldCase{"of end entities, for an authority",
                  [](W& w) {
                      w.lists.clear();
                      w.list("Root", Scope(Flag(1))).list("Sub");
                  },
                  "status-unknown 1 ?"},
        WorldCase{"of authorities, for an authority",
                  [](W& w) {
                      w.lists.clear();
                      w.list("Root", Scope(Flag(2))).list("Sub");
                  },
                  "VALID"},
        WorldCase{"the point of the certificate",
                  [](W& w) {
                      Point(w, PointName("http://a/"));
                      w.list("Sub", Scope(PointName("http://a/")));
                  },
                  "VALID"},
        WorldCase{"the point of the certificate, revoked",
                  [](W& w) {
                      Point(w, PointName("http://a/"));
                      w.list("Sub", Scope(PointName("http://a/"), 7));
                  },
                  "revoked 0"},
        WorldCase{"another point",
                  [](W& w) {
                      Point(w, PointName("http://a/"));
                      w.list("Sub", Scope(PointName("http://b/")));
                  },
                  "status-unknown 0 ?"},
        WorldCase{"a point where the certificate has none", [](W& w) { w.list("Sub", Scope(PointName("http://a/"))); },
                  "status-unknown 0 ?"},
        WorldCase{
            "the name of the issuer where the certificate has none",
            [](W& w) { w.list("Sub", Scope(Tlv(der::Context(0), Tlv(der::Context(0), TestDirectoryName("C=FI,O=Test,CN=Sub"))))); },
            "VALID"},
        WorldCase{"a list of everything for a point",
                  [](W& w) {
                      Point(w, PointName("http://a/"));
                      w.list("Sub");
                  },
                  "VALID"},
        WorldCase{"a relative name",
                  [](W& w) {
                      Point(w, RelativeName("lists"));
                      w.list("Sub", Scope(RelativeName("LISTS")));
                  },
                  "VALID"},
        WorldCase{"a relative and a whole name",
                  [](W& w) {
                      Point(w, RelativeName("lists"));
                      w.list("Sub",
                             Scope(Tlv(der::Context(0), Tlv(der::Context(0), TestDirectoryName("C=FI,O=Test,CN=Sub,CN=lists")))));
                  },
                  "VALID"},
        WorldCase{"another relative name",
                  [](W& w) {
                      Point(w, RelativeName("lists"));
                      w.list("Sub", Scope(RelativeName("other")));
                  },
                  "status-unknown 0 ?"},
        WorldCase{"some reasons", [](W& w) { w.list("Sub", Scope(Reasons(5, {0x60}))); }, "status-unknown 0 ?"},
        WorldCase{"some reasons and the others",
                  [](W& w) {
                      w.list("Sub", Scope(Reasons(5, {0x60}))).list("Sub", Scope(Reasons(7, {0x1F, 0x80})));
                  },
                  "VALID"},
        WorldCase{"some reasons and the others but one",
                  [](W& w) { w.list("Sub", Scope(Reasons(5, {0x60}))).list("Sub", Scope(Reasons(0, {0x1F}))); },
                  "status-unknown 0 ?"},
        WorldCase{"revoked for one of some reasons", [](W& w) { w.list("Sub", Scope(Reasons(5, {0x60}), 7)); }, "revoked 0"}),
    NameOfStatusCase);

Bytes ByOtherIssuer(const char* name)
{
    return Tlv(der::Context(2), TestDirectoryName("C=FI,O=Test,CN=" + std::string(name)));
}

/// An entry of an indirect list.
W::ChangeList Indirect(std::uint64_t serial, const char* issuer, bool isIndirect = true)
{
    return [=](L& l) {
        if (isIndirect)
            l.extension(TestIssuingDistributionPoint(Flag(4)));
        const Bytes names = Tlv(der::sequence, TestDirectoryName("C=FI,O=Test,CN=" + std::string(issuer)));
        l.entry(serial, 1, "20260101000000Z", {TestExtension("2.5.29.29", names, true)});
    };
}

INSTANTIATE_TEST_SUITE_P(Indirect, StatusCases,
                         ::testing::Values(WorldCase{"good",
                                                     [](W& w) {
                                                         Point(w, ByOtherIssuer("Lists"));
                                                         w.authority("Lists", "Root").list("Lists", Scope(Flag(4)));
                                                     },
                                                     "VALID"},
                                           WorldCase{"revoked",
                                                     [](W& w) {
                                                         Point(w, ByOtherIssuer("Lists"));
                                                         w.authority("Lists", "Root").list("Lists", Indirect(7, "Sub"));
                                                     },
                                                     "revoked 0"},
                                           WorldCase{"the serial number of another issuer",
                                                     [](W& w) {
                                                         Point(w, ByOtherIssuer("Lists"));
                                                         w.authority("Lists", "Root").list("Lists", Indirect(7, "Other"));
                                                     },
                                                     "VALID"},
                                           WorldCase{"the serial number of the list's own",
                                                     [](W& w) {
                                                         Point(w, ByOtherIssuer("Lists"));
                                                         w.authority("Lists", "Root").list("Lists", Scope(Flag(4), 7));
                                                     },
                                                     "VALID"},
                                           WorldCase{"an entry after one that names the issuer",
                                                     [](W& w) {
                                                         Point(w, ByOtherIssuer("Lists"));
                                                         w.authority("Lists", "Root").list("Lists", [](L& l) {
                                                             Indirect(3, "Sub")(l);
                                                             l.entry(7);
                                                         });
                                                     },
                                                     "revoked 0"},
                                           WorldCase{"a list that does not say that it is indirect",
                                                     [](W& w) {
                                                         Point(w, ByOtherIssuer("Lists"));
                                                         w.authority("Lists", "Root").list("Lists", Indirect(3, "Sub", false));
                                                     },
                                                     "status-unknown 0 ?"},
                                           WorldCase{"an issuer of lists that the certificate does not name",
                                                     [](W& w) { w.authority("Lists", "Root").list("Lists", Indirect(7, "Sub")); },
                                                     "status-unknown 0 ?"},
                                           WorldCase{"an issuer of lists that nobody certified",
                                                     [](W& w) {
                                                         Point(w, ByOtherIssuer("Lists"));
                                                         w.authority("Lists", "Lists").list("Lists", Scope(Flag(4)));
                                                     },
                                                     "status-unknown 0 ?"}),
                         NameOfStatusCase);

INSTANTIATE_TEST_SUITE_P(
    Deltas, StatusCases,
    ::testing::Values(
        WorldCase{"no base", [](W& w) { w.list("Sub", [](L& l) { l.number(3).delta(1); }); }, "status-unknown 0 ?"},
        WorldCase{"nothing changed", [](W& w) { w.list("Sub").list("Sub", [](L& l) { l.number(3).delta(1); }); }, "VALID"},
        WorldCase{"revoked since", [](W& w) { w.list("Sub").list("Sub", [](L& l) { l.number(3).delta(1).entry(7); }); },
                  "revoked 0"},
        WorldCase{"revoked before",
                  [](W& w) { w.list("Sub", [](L& l) { l.entry(7, 1); }).list("Sub", [](L& l) { l.number(3).delta(1); }); },
                  "revoked 0"},
        WorldCase{
            "released since",
            [](W& w) { w.list("Sub", [](L& l) { l.entry(7, 6); }).list("Sub", [](L& l) { l.number(3).delta(1).entry(7, 8); }); },
            "VALID"},
        WorldCase{"of a later base", [](W& w) { w.list("Sub").list("Sub", [](L& l) { l.number(3).delta(2).entry(7); }); }, "VALID"},
        WorldCase{"not newer than the base",
                  [](W& w) { w.list("Sub", [](L& l) { l.number(3); }).list("Sub", [](L& l) { l.number(3).delta(1).entry(7); }); },
                  "VALID"},
        WorldCase{"of another scope",
                  [](W& w) {
                      w.list("Sub").list(
                          "Sub", [](L& l) { l.number(3).delta(1).entry(7).extension(TestIssuingDistributionPoint(Flag(1))); });
                  },
                  "VALID"},
        WorldCase{"signed by another key", [](W& w) { w.list("Sub").list("Sub/2", [](L& l) { l.number(3).delta(1).entry(7); }); },
                  "VALID"},
        WorldCase{"a base that is too old with a delta of this time",
                  [](W& w) {
                      w.list("Sub", [](L& l) { l.nextUpdate("20260201000000Z"); }).list("Sub", [](L& l) { l.number(3).delta(1); });
                  },
                  "VALID"},
        WorldCase{"the newer of two",
                  [](W& w) {
                      w.list("Sub").list("Sub", [](L& l) { l.number(3).delta(1).entry(7, 6); }).list("Sub", [](L& l) {
                          l.number(4).delta(1).entry(7, 8);
                      });
                  },
                  "VALID"}),
    NameOfStatusCase);

INSTANTIATE_TEST_SUITE_P(
    Responses, StatusCases,
    ::testing::Values(WorldCase{"good", [](W& w) { AddOcsp(w, OcspOfLeaf(), "Sub"); }, "VALID"},
                      WorldCase{"revoked",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.status = RevokedStatus();
                                    AddOcsp(w, r, "Sub");
                                },
                                "revoked 0"},
                      WorldCase{"revoked, though a list says good",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.status = RevokedStatus();
                                    AddOcsp(w, r, "Sub");
                                    w.list("Sub");
                                },
                                "revoked 0"},
                      WorldCase{"good, though a list says revoked",
                                [](W& w) {
                                    AddOcsp(w, OcspOfLeaf(), "Sub");
                                    w.list("Sub", [](L& l) { l.entry(7); });
                                },
                                "revoked 0"},
                      WorldCase{"unknown",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.status = {0x82, 0};
                                    AddOcsp(w, r, "Sub");
                                },
                                "status-unknown 0 ?"},
                      WorldCase{"unknown, though a list says good",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.status = {0x82, 0};
                                    AddOcsp(w, r, "Sub");
                                    w.list("Sub");
                                },
                                "VALID"},
                      WorldCase{"too old",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.nextUpdate = TestOcspTime("20261121000000Z");
                                    AddOcsp(w, r, "Sub");
                                },
                                "status-stale 0 ?"},
                      WorldCase{"revoked long ago, though a list says good",
                                [](W& w) {
                                    AddOcsp(w, OldOcspOfLeaf(1), "Sub");
                                    w.list("Sub");
                                },
                                "revoked 0"},
                      WorldCase{"put on hold long ago", [](W& w) { AddOcsp(w, OldOcspOfLeaf(6), "Sub"); }, "status-stale 0 ?"},
                      WorldCase{"put on hold long ago, though a list says good",
                                [](W& w) {
                                    AddOcsp(w, OldOcspOfLeaf(6), "Sub");
                                    w.list("Sub");
                                },
                                "VALID"},
                      WorldCase{"revoked, as a later one says", [](W& w) { AddLaterOcsp(w, "20261123120000Z"); }, "revoked 0"},
                      WorldCase{"not yet revoked, as a later one says",
                                [](W& w) {
                                    AddLaterOcsp(w, "20261123120001Z");
                                    w.list("Sub");
                                },
                                "VALID"},
                      WorldCase{"any age and skew",
                                [](W& w) {
                                    w.options.clockSkewSeconds = INT64_MAX;
                                    w.options.maxAgeSeconds = INT64_MAX;
                                    w.list("Sub", [](L& l) { l.nextUpdate(""); });
                                },
                                "VALID"},
                      WorldCase{"after many of other certificates",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.certId.serial = {8};
                                    AddOcsp(w, r, "Sub");
                                    w.sources.responses.resize(ValidationWork::maxSignatures, w.sources.responses.front());
                                    AddOcsp(w, OcspOfLeaf(), "Sub");
                                },
                                "VALID"},
                      WorldCase{"of another certificate",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.certId.serial = {8};
                                    AddOcsp(w, r, "Sub");
                                },
                                "status-unknown 0 ?"},
                      WorldCase{"signed by another key", [](W& w) { AddOcsp(w, OcspOfLeaf(), "Sub/2"); }, "status-unknown 0 ?"},
                      WorldCase{"signed by a responder among the candidates",
                                [](W& w) {
                                    w.plain("Responder", "Sub",
                                            [](TestCertificate& c) { c.extension(TestExtendedKeyUsage({ocspSigningOid})); });
                                    AddOcsp(w, OcspOfLeaf(), "Responder");
                                },
                                "VALID"}),
    NameOfStatusCase);

TEST(PathStatus, SaysWhatItKnowsOfEachStep)
{
    TestWorld world = StatusWorld();
    world.list("Sub", [](L& l) { l.number(7).nextUpdate("20261201000000Z"); });
    const PathVerdict verdict = world.validate();
    ASSERT_EQ(verdict.path.size(), 3U);
    const StatusInformation& leaf = verdict.path.front().status;
    EXPECT_EQ(leaf.status, CertificateStatus::good);
    EXPECT_EQ(leaf.source, StatusInformation::Source::crl);
    EXPECT_EQ(leaf.detail, "CRL 7");
    EXPECT_EQ(leaf.nextUpdate, TestMoment("20261201000000Z"));
    EXPECT_EQ(verdict.path.back().status.status, CertificateStatus::anchor);
    EXPECT_EQ(verdict.work.steps, 3U);
    EXPECT_EQ(verdict.work.signatures, 4U);

    world.list("Sub", [](L& l) { l.thisUpdate("20260601000000Z").entry(7, 1, "20261102080000Z"); });
    EXPECT_EQ(world.validate().detail, "keyCompromise since 2026-11-02 08:00:00Z");
}

/// A list of which a bit is flipped makes nothing valid that is not: neither a good certificate nor a revoked one.
TEST(PathStatus, IsNotGoodWithABitFlipped)
{
    for (const bool isRevoked : {false, true}) {
        TestWorld world = StatusWorld();
        world.list("Sub", [&](L& l) { l.entry(isRevoked ? 7 : 8, 1); });
        Bytes& der = world.lists.back();
        for (std::size_t position = 0; position < der.size(); position += 5) {
            const auto bit = static_cast<std::uint8_t>(1U << position / 5 % 8);
            der[position] ^= bit;
            if (CCrypto_X509_CRL().LoadCRL(element(der.data(), static_cast<std::uint32_t>(der.size())))) {
                EXPECT_NE(world.validate().verdict, Verdict::valid) << position;
            }
            der[position] ^= bit;
        }
        EXPECT_EQ(Summary(world.validate()), isRevoked ? "revoked 0" : "VALID");
    }
}

} // namespace
} // namespace ccrypto
