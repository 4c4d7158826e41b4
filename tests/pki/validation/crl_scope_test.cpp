#include "tests/pki/validation/status_cases.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ccrypto {
namespace {

using W = TestWorld;
using L = TestCrl;

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

/// The reasons of a distribution point.
Bytes PointReasons(std::uint8_t unused, const Bytes& bits)
{
    return Tlv(der::Context(1, false), Joined({{unused}, bits}));
}

Bytes WholeName(const std::string& commonName)
{
    return Tlv(der::Context(0), Tlv(der::Context(0), TestDirectoryName("C=FI,O=Test,CN=" + commonName)));
}

Bytes RelativeName(std::string_view commonName)
{
    const Bytes attribute = Tlv(der::sequence, {OidTlv("2.5.4.3"), Tlv(der::utf8String, TextBytes(commonName))});
    return Tlv(der::Context(0), Tlv(der::Context(1), attribute));
}

INSTANTIATE_TEST_SUITE_P(
    Scopes, StatusCases,
    ::testing::Values(WorldCase{"of end entities", [](W& w) { w.list("Sub", Scope(Flag(1))); }, "VALID"},
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
                      WorldCase{"a name of another kind",
                                [](W& w) {
                                    Point(w, PointName("http://a/"));
                                    w.list("Sub", Scope(Tlv(der::Context(0), Tlv(der::Context(0), TestDns("http://a/")))));
                                },
                                "status-unknown 0 ?"},
                      WorldCase{"two points, each for some reasons",
                                [](W& w) {
                                    const Bytes points = Joined(
                                        {Tlv(der::sequence, Joined({PointName("http://a/"), PointReasons(5, {0x60})})),
                                         Tlv(der::sequence, Joined({PointName("http://b/"), PointReasons(7, {0x1F, 0x80})}))});
                                    w.subject("Leaf", "Sub", [&](TestCertificate& c) {
                                        c.serial(7).extension(TestExtension("2.5.29.31", Tlv(der::sequence, points)));
                                    });
                                    w.list("Sub", Scope(PointName("http://a/"))).list("Sub", Scope(PointName("http://b/")));
                                },
                                "VALID"},
                      WorldCase{"a point where the certificate has none",
                                [](W& w) { w.list("Sub", Scope(PointName("http://a/"))); }, "status-unknown 0 ?"},
                      WorldCase{"the name of the issuer where the certificate has none",
                                [](W& w) { w.list("Sub", Scope(WholeName("Sub"))); }, "VALID"},
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
                                    w.list("Sub", Scope(WholeName("Sub,CN=lists")));
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
                      WorldCase{"revoked for one of some reasons", [](W& w) { w.list("Sub", Scope(Reasons(5, {0x60}), 7)); },
                                "revoked 0"},
                      WorldCase{"a point of some reasons",
                                [](W& w) {
                                    Point(w, Joined({PointName("http://a/"), PointReasons(5, {0x60})}));
                                    w.list("Sub", Scope(PointName("http://a/")));
                                },
                                "status-unknown 0 ?"}),
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

INSTANTIATE_TEST_SUITE_P(
    Indirect, StatusCases,
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
                      WorldCase{"a list for the name of the issuer of lists",
                                [](W& w) {
                                    Point(w, ByOtherIssuer("Lists"));
                                    w.authority("Lists", "Root").list("Lists", Scope(Joined({WholeName("Lists"), Flag(4)})));
                                },
                                "VALID"},
                      WorldCase{"a name relative to the issuer of lists",
                                [](W& w) {
                                    Point(w, Joined({RelativeName("new"), ByOtherIssuer("Lists")}));
                                    w.authority("Lists", "Root").list("Lists", Scope(Joined({RelativeName("new"), Flag(4)})));
                                },
                                "VALID"},
                      WorldCase{"an issuer of lists that the certificate does not name",
                                [](W& w) { w.authority("Lists", "Root").list("Lists", Indirect(7, "Sub")); }, "status-unknown 0 ?"},
                      WorldCase{"signed by the issuer of the certificate in the name of another",
                                [](W& w) {
                                    Point(w, ByOtherIssuer("Lists"));
                                    w.lists.push_back(TestCrl()
                                                          .extension(TestIssuingDistributionPoint(Flag(4)))
                                                          .build({.name = W::Who("Lists").name, .key = W::Who("Sub").key}));
                                },
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
        WorldCase{"revoked since, by a number of more octets",
                  [](W& w) { w.list("Sub", [](L& l) { l.number(2); }).list("Sub", [](L& l) { l.number(256).delta(1).entry(7); }); },
                  "revoked 0"},
        WorldCase{"released and revoked since",
                  [](W& w) { w.list("Sub").list("Sub", [](L& l) { l.number(3).delta(1).entry(7, 8).entry(7, 1); }); }, "revoked 0"},
        WorldCase{"released by one that is too old",
                  [](W& w) {
                      w.list("Sub", [](L& l) { l.entry(7, 6); }).list("Sub", [](L& l) {
                          l.nextUpdate("20260301000000Z").number(3).delta(1).entry(7, 8);
                      });
                  },
                  "revoked 0"},
        WorldCase{
            "revoked by one that is too old",
            [](W& w) { w.list("Sub").list("Sub", [](L& l) { l.nextUpdate("20260301000000Z").number(3).delta(1).entry(7, 1); }); },
            "revoked 0"},
        WorldCase{
            "put on hold by one that is too old",
            [](W& w) { w.list("Sub").list("Sub", [](L& l) { l.nextUpdate("20260301000000Z").number(3).delta(1).entry(7, 6); }); },
            "VALID"},
        WorldCase{"a base of a later time with a delta of this",
                  [](W& w) {
                      w.list("Sub", [](L& l) { l.thisUpdate("20261201000000Z"); }).list("Sub", [](L& l) { l.number(3).delta(1); });
                  },
                  "status-unknown 0 ?"},
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
        WorldCase{"of another authority key",
                  [](W& w) {
                      w.list("Sub").list("Sub", [](L& l) {
                          l.number(3).delta(1).entry(7).extension(TestAuthorityKeyIdentifier(*W::Who("Sub").key));
                      });
                  },
                  "VALID"},
        WorldCase{"not yet revoked, as a later one says",
                  [](W& w) {
                      w.list("Sub").list(
                          "Sub", [](L& l) { l.thisUpdate("20261201000000Z").number(3).delta(1).entry(7, 1, "20261123120001Z"); });
                  },
                  "VALID"},
        WorldCase{"a base and a delta that are too old",
                  [](W& w) {
                      w.list("Sub", [](L& l) { l.nextUpdate("20260201000000Z"); }).list("Sub", [](L& l) {
                          l.nextUpdate("20260301000000Z").number(3).delta(1);
                      });
                  },
                  "status-stale 0 ?"},
        WorldCase{"the newer of two, given first",
                  [](W& w) {
                      w.list("Sub").list("Sub", [](L& l) { l.number(4).delta(1).entry(7, 6); }).list("Sub", [](L& l) {
                          l.number(3).delta(1).entry(7, 8);
                      });
                  },
                  "revoked 0"},
        WorldCase{"the newer of two",
                  [](W& w) {
                      w.list("Sub").list("Sub", [](L& l) { l.number(3).delta(1).entry(7, 6); }).list("Sub", [](L& l) {
                          l.number(4).delta(1).entry(7, 8);
                      });
                  },
                  "VALID"}),
    NameOfStatusCase);

} // namespace
} // namespace ccrypto
