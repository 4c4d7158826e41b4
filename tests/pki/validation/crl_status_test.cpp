#include "tests/pki/validation/status_cases.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace ccrypto {
namespace {

using W = TestWorld;
using L = TestCrl;

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
        WorldCase{"an extension twice",
                  [](W& w) {
                      w.list("Sub", [](L& l) {
                          l.extension(TestAuthorityKeyIdentifier(*W::Who("Sub").key));
                          l.extension(TestAuthorityKeyIdentifier(*W::Who("Sub").key));
                      });
                  },
                  "status-unknown 0 ?"},
        WorldCase{"an authority revoked, and good with another certificate",
                  [](W& w) {
                      w.authority("Sub", "Root", [](TestCertificate& c) { c.serial(6); });
                      w.list("Root", [](L& l) { l.entry(5); }).list("Sub");
                  },
                  "VALID"},
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

/// A signer of the lists of Sub, and a list, where the profile counts.
void UseStrictSigner(W& w, bool namesItsKey)
{
    const auto names = [](const char* issuer) {
        return [=](TestCertificate& c) { c.extension(TestAuthorityKeyIdentifier(*W::Who(issuer).key)); };
    };
    w.others.clear();
    w.authority("Sub", "Root", names("Root")).subject("Leaf", "Sub", names("Sub"));
    w.authority("Sub/lists", "Root", namesItsKey ? names("Root") : TestWorld::ChangeCertificate()).list("Sub/lists");
    w.options.strict = true;
}

/// A certificate that Sub made for itself to sign lists, which Sub revokes with the subject, and its own list of the next day.
void SpeakForItself(W& w)
{
    w.plain("Sub/lists", "Sub", [](TestCertificate& c) { c.serial(8).extension(TestKeyUsage(0x02)); })
        .list("Sub", [](L& l) { l.entry(7).entry(8); })
        .list("Sub/lists", [](L& l) { l.thisUpdate("20260102000000Z"); });
}

/// A signer of the lists of Sub whose own certificate is signed with SHA-1, and a list.
void AddWeakSigner(W& w)
{
    TestIssuer root = W::Who("Root");
    root.hash = algorithm::sha1;
    w.others.push_back(TestCertificate(W::Who("Sub/lists")).extension(TestKeyUsage(0x02)).build(root));
    w.list("Sub/lists");
}

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
        WorldCase{"the same, whose status nobody knows, where that of the subject is asked for",
                  [](W& w) {
                      w.lists.clear();
                      w.plain("Sub/lists", "Root", [](TestCertificate& c) { c.extension(TestKeyUsage(0x02)); }).list("Sub/lists");
                      w.options.status = ValidationOptions::Status::leaf;
                  },
                  "VALID"},
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
        WorldCase{"another anchor with the name of the issuer", [](W& w) { w.anchor("Sub/lists").list("Sub/lists"); },
                  "status-unknown 0 ?"},
        WorldCase{"the same of another anchor, which certified the issuer, too",
                  [](W& w) {
                      w.anchor("Root2")
                          .authority("Sub", "Root2")
                          .plain("Sub/lists", "Root2", [](TestCertificate& c) { c.extension(TestKeyUsage(0x02)); })
                          .list("Sub/lists")
                          .list("Root2");
                  },
                  "VALID"},
        WorldCase{"revoked below one of two anchors",
                  [](W& w) {
                      w.anchor("Root2")
                          .authority("Sub", "Root2")
                          .plain("Sub/lists", "Root", [](TestCertificate& c) { c.extension(TestKeyUsage(0x02)); })
                          .list("Sub/lists", [](L& l) { l.entry(7); });
                      w.options.status = ValidationOptions::Status::none;
                  },
                  "revoked 0"},
        WorldCase{"against the profile", [](W& w) { UseStrictSigner(w, false); }, "status-unknown 0 ?"},
        WorldCase{"as the profile wants it", [](W& w) { UseStrictSigner(w, true); }, "VALID"},
        WorldCase{"an issuer in doubt, and one without cRLSign that is not",
                  [](W& w) {
                      const Bytes point = Tlv(der::Context(0), Tlv(der::Context(0), TestUri("http://a/")));
                      w.lists.clear();
                      w.plain("Sub", "Root", [&](TestCertificate& c) {
                           c.serial(6).extension(TestBasicConstraints(true)).extension(TestKeyUsage(0x04));
                           c.extension(TestExtension("2.5.29.31", Tlv(der::sequence, Tlv(der::sequence, point))));
                       }).list("Root", [&](L& l) { l.extension(TestIssuingDistributionPoint(point)); });
                      w.list("Sub");
                  },
                  "status-unknown 0 ?"},
        WorldCase{"the same, signed with SHA-1", [](W& w) { AddWeakSigner(w); }, "status-unknown 0 ?"},
        WorldCase{"the same, signed with SHA-1 where it is allowed",
                  [](W& w) {
                      AddWeakSigner(w);
                      w.options.allowWeak = true;
                  },
                  "VALID"},
        WorldCase{"one whose own list has nothing against it",
                  [](W& w) {
                      w.plain("Sub/lists", "Sub", [](TestCertificate& c) { c.extension(TestKeyUsage(0x02)); }).list("Sub/lists");
                  },
                  "VALID"},
        WorldCase{"one that takes back its own revocation", [](W& w) { SpeakForItself(w); }, "revoked 0"},
        WorldCase{"one that takes back its own revocation, which is on a delta",
                  [](W& w) {
                      w.plain("Sub/lists", "Sub", [](TestCertificate& c) { c.serial(8).extension(TestKeyUsage(0x02)); })
                          .list("Sub", [](L& l) { l.entry(7); })
                          .list("Sub", [](L& l) { l.number(3).delta(1).entry(8); })
                          .list("Sub/lists", [](L& l) { l.thisUpdate("20260102000000Z"); });
                  },
                  "revoked 0"},
        WorldCase{"one revoked by its own list",
                  [](W& w) {
                      w.plain("Sub/lists", "Sub", [](TestCertificate& c) {
                           c.serial(8).extension(TestKeyUsage(0x02));
                       }).list("Sub/lists", [](L& l) { l.entry(8); });
                  },
                  "status-unknown 0 ?"}),
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

    // What adds nothing is not verified. A delta is named with its base.
    world.list("Sub", [](L& l) { l.thisUpdate("20250601000000Z").number(6); });
    EXPECT_EQ(world.validate().work.signatures, 4U);
    world.list("Sub", [](L& l) { l.number(8).delta(7); });
    EXPECT_EQ(world.validate().path.front().status.detail, "CRL 8 of CRL 7");

    world.list("Sub", [](L& l) { l.thisUpdate("20260601000000Z").entry(7, 1, "20261102080000Z"); });
    EXPECT_EQ(world.validate().detail, "keyCompromise since 2026-11-02 08:00:00Z");
}

TEST(PathStatus, OfAListTooOldIsThatOfTheNewest)
{
    TestWorld world = StatusWorld();
    world.list("Sub", [](L& l) { l.number(2).thisUpdate("20260102000000Z").nextUpdate("20260201000000Z"); });
    world.list("Sub", [](L& l) { l.number(1).nextUpdate("20260301000000Z"); });
    EXPECT_EQ(world.validate().detail, "CRL 2 is too old");
}

/// The status of each signer of lists is on a list that the next one signs.
TEST(PathStatus, AsksFourSignersOfListsDeep)
{
    for (const std::uint32_t depth : {4U, 5U}) {
        TestWorld world = StatusWorld();
        const auto signer = [&](const std::string& name, const std::string& issuer) {
            world.plain(name + "/lists", issuer, [](TestCertificate& c) { c.extension(TestKeyUsage(0x02)); }).list(name + "/lists");
        };
        world.lists.clear();
        signer("Root", "Root");
        std::string name = "Sub";
        for (std::uint32_t number = 1; number <= depth; number++) {
            const std::string next = "Signer" + std::to_string(number);
            world.authority(next, "Root", [](TestCertificate& c) { c.serial(5); });
            signer(name, next);
            name = next;
        }
        world.list(name);
        EXPECT_EQ(Summary(world.validate()), depth == 4 ? "VALID" : "status-unknown 0 ?");
    }
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
