#include "tests/pki/validation/status_cases.h"

namespace ccrypto {

TestWorld StatusWorld()
{
    TestWorld world;
    world.anchor("Root");
    world.authority("Sub", "Root", [](TestCertificate& c) { c.serial(5); });
    world.subject("Leaf", "Sub", [](TestCertificate& c) { c.serial(7); });
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

} // namespace ccrypto
