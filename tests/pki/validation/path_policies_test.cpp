#include "tests/pki/validation/path_cases.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>
#include <vector>

namespace ccrypto {
namespace {

constexpr const char* policyA = "1.3.6.1.4.1.55555.1.1";
constexpr const char* policyB = "1.3.6.1.4.1.55555.1.2";
constexpr const char* anyPolicyOid = "2.5.29.32.0";

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
        WorldCase{"required two later, counted on the way",
                  [](World& w) {
                      w.anchor("Root")
                          .authority("A", "Root", With(Policies({policyA}), TestPolicyConstraints(2, {})))
                          .authority("B", "A")
                          .subject("Leaf", "B");
                  },
                  "policy 0"},
        WorldCase{"required by an anchor that is the subject",
                  [](World& w) {
                      w.anchor("Root", [](Cert& c) { c.extension(TestPolicyConstraints(0, {})); });
                      w.subjectDer = w.anchors.front();
                  },
                  "VALID"},
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

TEST(PathValidation, GivesThePoliciesOfTheUser)
{
    World world;
    ChainOf(world, Unchanged, Policies({policyA, policyB}), Policies({policyB, policyA}));
    world.options.policies = {Oid::FromDotted(policyB)};
    const PathVerdict verdict = world.validate();
    ASSERT_EQ(verdict.policies.size(), 1U);
    EXPECT_EQ(verdict.policies.front(), Oid::FromDotted(policyB));

    world.options.status = ValidationOptions::Status::chain;
    EXPECT_TRUE(world.validate().policies.empty());
}

} // namespace
} // namespace ccrypto
