#include "tests/pki/validation/path_cases.h"

namespace ccrypto {

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

void Chain(World& world)
{
    world.anchor("Root").authority("Sub", "Root").subject("Leaf", "Sub");
}

void ChainOf(World& world, const World::ChangeCertificate& root, const World::ChangeCertificate& sub,
             const World::ChangeCertificate& leaf)
{
    world.anchor("Root", root).authority("Sub", "Root", sub).subject("Leaf", "Sub", leaf);
}

void Unchanged(Cert&) {}

void FlipLast(Bytes& der)
{
    der.back() ^= 1;
}

} // namespace ccrypto
