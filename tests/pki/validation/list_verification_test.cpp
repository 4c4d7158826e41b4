#include "pki/validation/list_verification.h"
#include "tests/pki/validation/test_world.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace ccrypto {
namespace {

using W = TestWorld;
using L = TestCrl;

/// The verdict over the last list. Its issuer is the subject where there is one; else it is looked for, and needs a path to Root.
class ListCases : public ::testing::TestWithParam<WorldCase> {};

TEST_P(ListCases, GiveTheirReason)
{
    W world;
    world.anchor("Root").authority("Sub", "Root");
    GetParam().make(world);
    const CertificatePtr issuer = world.subjectDer.empty() ? nullptr : LoadCertificate(world.subjectDer);
    const CertificatePool pool = world.pool();
    const ListVerdict verdict = VerifyList(world.loadedLists().back(), issuer, pool, issuer == nullptr, world.options);
    EXPECT_EQ(verdict.verdict == Verdict::valid ? "VALID" : ReasonWord(verdict.reason), GetParam().summary)
        << verdict.detail.view();
    EXPECT_EQ(verdict.verdict == Verdict::undecided, verdict.reason == Reason::statusStale);
}

TestIssuer SubWith(algorithm::Id hash, const TestKeyPtr& key = W::Who("Sub").key)
{
    return {.name = W::Who("Sub").name, .key = key, .hash = hash};
}

/// With Sub as `change` makes it.
void ChangeSub(W& w, const W::ChangeCertificate& change)
{
    w.others.clear();
    w.authority("Sub", "Root", change).list("Sub");
}

Bytes Unknown()
{
    return TestExtension("1.3.6.1.4.1.55555.8", {5, 0}, true);
}

/// The list with an indefinite length.
Bytes NotDer(const Bytes& der)
{
    const std::size_t header = der[1] < 0x80 ? 2 : 2 + (der[1] & 0x7FU);
    return Joined({{0x30, 0x80}, Bytes(der.begin() + static_cast<std::ptrdiff_t>(header), der.end()), {0, 0}});
}

INSTANTIATE_TEST_SUITE_P(
    Lists, ListCases,
    ::testing::Values(
        WorldCase{"good", [](W& w) { w.list("Sub"); }, "VALID"},
        WorldCase{"signed by another key", [](W& w) { w.list("Sub/2"); }, "bad-signature"},
        WorldCase{"of an issuer that nobody knows", [](W& w) { w.list("Other"); }, "no-path"},
        WorldCase{"not DER",
                  [](W& w) {
                      w.list("Sub");
                      w.lists.back() = NotDer(w.lists.back());
                  },
                  "not-der"},
        WorldCase{"algorithms that differ",
                  [](W& w) {
                      const TestIssuer sub = W::Who("Sub");
                      w.lists.push_back(TestSigned(L().tbs(sub), sub, TestAlgorithm(SubWith(algorithm::sha384))));
                  },
                  "malformed"},
        WorldCase{"an extension twice", [](W& w) { w.list("Sub", [](L& l) { l.extension(Unknown()).extension(Unknown()); }); },
                  "malformed"},
        WorldCase{"an unknown critical extension", [](W& w) { w.list("Sub", [](L& l) { l.extension(Unknown()); }); },
                  "critical-extension"},
        WorldCase{"an unknown critical extension of an entry",
                  [](W& w) { w.list("Sub", [](L& l) { l.entry(8, {}, "20260101000000Z", {Unknown()}); }); }, "critical-extension"},
        WorldCase{"MD5, where weak ones are allowed",
                  [](W& w) {
                      w.lists.push_back(L().build(SubWith(algorithm::md5, TestRsaKey())));
                      w.options.allowWeak = true;
                  },
                  "weak-algorithm"},
        WorldCase{"SHA-1", [](W& w) { w.lists.push_back(L().build(SubWith(algorithm::sha1))); }, "weak-algorithm"},
        WorldCase{"SHA-1, where it is allowed",
                  [](W& w) {
                      w.lists.push_back(L().build(SubWith(algorithm::sha1)));
                      w.options.allowWeak = true;
                  },
                  "VALID"},
        WorldCase{"of a later time", [](W& w) { w.list("Sub", [](L& l) { l.thisUpdate("20261123120501Z"); }); }, "not-yet-valid"},
        WorldCase{"too old", [](W& w) { w.list("Sub", [](L& l) { l.nextUpdate("20261123115459Z"); }); }, "status-stale"},
        WorldCase{"any age and skew",
                  [](W& w) {
                      w.options.clockSkewSeconds = w.options.maxAgeSeconds = INT64_MAX;
                      w.list("Sub", [](L& l) { l.nextUpdate(""); });
                  },
                  "VALID"},
        WorldCase{"an issuer without cRLSign",
                  [](W& w) {
                      w.others.clear();
                      w.plain("Sub", "Root", [](TestCertificate& c) { c.extension(TestKeyUsage(0x04)); }).list("Sub");
                  },
                  "key-usage"},
        WorldCase{"an issuer that expired since",
                  [](W& w) { ChangeSub(w, [](TestCertificate& c) { c.validity("20250101000000Z", "20260601000000Z"); }); },
                  "expired"},
        WorldCase{"an issuer that expired, before one of another key",
                  [](W& w) {
                      ChangeSub(w, [](TestCertificate& c) { c.validity("20250101000000Z", "20260601000000Z"); });
                      w.authority("Sub/2", "Root");
                  },
                  "expired"},
        WorldCase{"an issuer against the profile",
                  [](W& w) {
                      w.list("Sub");
                      w.options.strict = true;
                  },
                  "profile"},
        WorldCase{"an issuer that is certified with SHA-1",
                  [](W& w) {
                      TestIssuer root = W::Who("Root");
                      root.hash = algorithm::sha1;
                      w.others = {TestCertificate(W::Who("Sub")).authority().build(root)};
                      w.list("Sub");
                  },
                  "weak-algorithm"},
        WorldCase{"an issuer that nobody certified",
                  [](W& w) {
                      w.others.clear();
                      w.authority("Sub", "Gone").list("Sub");
                  },
                  "no-path"},
        WorldCase{"an issuer that is named needs nobody", [](W& w) { w.list("Gone").subject("Gone", "Nobody"); }, "VALID"},
        WorldCase{"an issuer that is named, of another name",
                  [](W& w) {
                      w.list("Sub");
                      w.subjectDer =
                          TestCertificate({.name = TestName("CN=Other"), .key = W::Who("Sub").key}).build(W::Who("Root"));
                  },
                  "no-path"},
        WorldCase{"an issuer that is named, of a weak key",
                  [](W& w) {
                      const TestIssuer weak = SubWith(algorithm::sha256, TestRsaKey(1024));
                      w.lists.push_back(L().build(weak));
                      w.subjectDer = TestCertificate(weak).build(W::Who("Root"));
                  },
                  "weak-algorithm"},
        WorldCase{"an issuer that is named, of another key", [](W& w) { w.list("Sub").subject("Sub/2", "Root"); },
                  "bad-signature"}),
    [](const auto& instance) { return WordsToName(instance.param.name); });

} // namespace
} // namespace ccrypto
