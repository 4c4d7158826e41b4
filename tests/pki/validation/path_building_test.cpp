#include "pki/validation/validation_work.h"
#include "tests/pki/validation/path_cases.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace ccrypto {
namespace {

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
        WorldCase{"a root renewed with its key",
                  [](World& w) {
                      w.anchor("Root");
                      w.subjectDer = World::Certificate("Root", "Root", true, [](Cert& c) { c.serial(2); });
                  },
                  "VALID"},
        WorldCase{"an authority renewed with its key",
                  [](World& w) {
                      w.anchor("Root").authority("Sub", "Root");
                      w.subjectDer = World::Certificate("Sub", "Sub", true, [](Cert& c) { c.serial(2); });
                  },
                  "VALID"},
        WorldCase{"of two paths the one whose fault is nearer to the subject",
                  [](World& w) {
                      const auto isOld = [](Cert& c) { c.validity("20200101000000Z", "20210101000000Z"); };
                      w.anchor("Root").authority("Sub", "Root", isOld);
                      w.authority("Old", "Root", isOld).authority("Sub", "Old").subject("Leaf", "Sub");
                  },
                  "expired 1"},
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
        WorldCase{"through an authority that led in a circle before",
                  [](World& w) {
                      w.anchor("Root").authority("N/2", "Q").authority("N/2", "Root").authority("N", "Q");
                      w.authority("Q", "A").authority("A", "N/2").subject("Leaf", "N");
                  },
                  "VALID"},
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

/// Expired authorities that all certified each other are tried last, to explain the failure, and end at the limit.
TEST(PathValidation, SaysWhatItKnewBeforeTheLimit)
{
    constexpr std::uint32_t count = 7;
    World world;
    for (std::uint32_t subject = 0; subject < count; subject++)
        for (std::uint32_t issuer = 0; issuer < count; issuer++)
            if (subject != issuer)
                world.authority(Layer(subject, 'a'), Layer(issuer, 'a'),
                                [](Cert& c) { c.validity("20200101000000Z", "20210101000000Z"); });
    world.subject("Leaf", "L0");
    PathVerdict verdict = world.validate();
    EXPECT_EQ(verdict.reason, Reason::limit);
    EXPECT_EQ(verdict.work.steps, 1000U);
    EXPECT_NE(verdict.path.back().status.status, CertificateStatus::anchor);

    world.anchor("L0/c");
    verdict = world.validate();
    EXPECT_EQ(Summary(verdict), "bad-signature 0");
    EXPECT_EQ(verdict.work.steps, 1000U);
}

TEST(PathValidation, TriesTheIssuerThatIsNamedFirst)
{
    for (const bool bySerialNumber : {false, true}) {
        World world;
        for (const char* const other : {"Root/2", "Root/3", "Root"})
            world.anchor(other, [&](Cert& c) { c.serialOctets({static_cast<std::uint8_t>(other[4] + 1)}); });
        world.subject("Leaf", "Root", [&](Cert& c) {
            const Bytes names = Tlv(der::Context(1), TestDirectoryName("C=FI,O=Test,CN=Root"));
            const Bytes identifier = Tlv(der::sequence, Joined({names, Tlv(der::Context(2, false), {1})}));
            c.extension(bySerialNumber ? TestExtension("2.5.29.35", identifier)
                                       : TestAuthorityKeyIdentifier(*World::Who("Root").key));
        });
        const PathVerdict verdict = world.validate();
        EXPECT_EQ(Summary(verdict), "VALID");
        EXPECT_EQ(verdict.work.signatures, 1U);
    }
}

TEST(CertificatePool, KeepsACertificateOnce)
{
    const CertificatePtr root = LoadCertificate(World::Certificate("Root", "Root", true));
    CertificatePool pool;
    EXPECT_FALSE(pool.add(root, false)->isAnchor);
    EXPECT_TRUE(pool.add(root, true)->isAnchor);
    EXPECT_TRUE(pool.add(root, false)->isAnchor);
    EXPECT_EQ(pool.size(), 1U);
}

TEST(ValidationWork, EndsAtItsLimits)
{
    ValidationWork work;
    EXPECT_FALSE(work.takeSignatures(201));
    EXPECT_FALSE(work.takeStep());
    work = ValidationWork();
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

} // namespace
} // namespace ccrypto
