#include "tests/pki/validation/path_cases.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

namespace ccrypto {
namespace {

INSTANTIATE_TEST_SUITE_P(
    Signatures, PathCases,
    ::testing::Values(
        WorldCase{"three certificates", Chain, "VALID"},
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
                  [](World& w) { w.anchor("Root").authority("Sub/2", "Root").subject("Leaf", "Sub"); }, "bad-signature 0"},
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
        WorldCase{"RSA of 1024 bits",
                  [](World& w) {
                      w.anchor("Root").subject("Leaf", "Root",
                                               [](Cert& c) { c.publicKeyInfo(BytesOf(TestRsaKey(1024)->publicKeyInfo())); });
                  },
                  "weak-algorithm 0"},
        WorldCase{"RSA of 1024 bits between, where it is allowed",
                  [](World& w) {
                      const TestIssuer sub = {.name = World::Who("Sub").name, .key = TestRsaKey(1024)};
                      w.anchor("Root").authority("Sub", "Root",
                                                 [&](Cert& c) { c.publicKeyInfo(BytesOf(sub.key->publicKeyInfo())); });
                      w.subjectDer = Cert(World::Who("Leaf")).build(sub);
                      w.options.allowWeak = true;
                  },
                  "VALID"},
        WorldCase{"DSA of 1024 bits",
                  [](World& w) {
                      w.anchor("Root").subject("Leaf", "Root",
                                               [](Cert& c) { c.publicKeyInfo(BytesOf(TestDsaKey()->publicKeyInfo())); });
                  },
                  "weak-algorithm 0"},
        WorldCase{"octets that are not DER",
                  [](World& w) {
                      Chain(w);
                      w.subjectDer = Joined({{0x30, 0x80}, Bytes(w.subjectDer.begin() + 4, w.subjectDer.end()), {0, 0}});
                  },
                  "not-der 0"},
        WorldCase{"an unknown algorithm",
                  [](World& w) {
                      const Bytes unknown = Tlv(der::sequence, OidTlv("1.3.6.1.4.1.55555.9"));
                      w.anchor("Root").subject("Leaf", "Root", [&](Cert& c) { c.innerAlgorithm(unknown).outerAlgorithm(unknown); });
                  },
                  "unsupported-algorithm 0"},
        WorldCase{"algorithms that differ",
                  [](World& w) {
                      w.anchor("Root").subject(
                          "Leaf", "Root", [](Cert& c) { c.innerAlgorithm(Tlv(der::sequence, OidTlv("1.2.840.10045.4.3.3"))); });
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
        WorldCase{"no time",
                  [](World& w) {
                      Chain(w);
                      w.options.at = CCryptoDateTime();
                  },
                  "malformed 0"},
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
