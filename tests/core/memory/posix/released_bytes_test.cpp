#include "core/memory/byte_vector.h"
#include "core/memory/wiped.h"
#include "core/text/element.h"
#include "core/text/string.h"
#include "tests/support/posix/released_blocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

using namespace ccrypto;

namespace {

constexpr std::string_view secret = "the secret that no block of the heap may keep";

struct ReleaseCase {
    const char* name;
    void (*work)();
};

constexpr ReleaseCase releaseCases[] = {
    {"an element that goes", [] { const element bytes(secret); }},
    {"an element that grows",
     [] {
         element bytes(secret);
         bytes.reserve(100000);
         bytes.clear();
     }},
    {"an element that is assigned to",
     [] {
         element bytes(secret);
         bytes = element(std::string(1000, 'x'));
     }},
    {"a string", [] { const CCryptoString text(secret); }},
    {"a byte vector that goes", [] { const CCryptoByteVector bytes(secret.data(), secret.size()); }},
    {"a byte vector that grows",
     [] {
         CCryptoByteVector bytes(secret.data(), secret.size());
         bytes.append(secret.data(), secret.size());
     }},
    {"a wiped array",
     [] {
         WipedArray<char> characters(secret.size());
         std::ranges::copy(secret, characters.begin());
     }},
};

} // namespace

TEST(ReleasedBytes, HoldNoSecret)
{
    if (!ReleasedBlocks::canWatch())
        GTEST_SKIP() << "no sanitizer shows released memory";
    const std::vector<std::string> begin = {std::string(secret.substr(0, 10))};
    for (const ReleaseCase& each : releaseCases) {
        const ReleasedBlocks blocks(begin);
        each.work();
        EXPECT_GT(blocks.released(), 0U) << each.name;
        EXPECT_EQ(blocks.kept(), 0U) << each.name;
    }
    // That the test would see one: wiping can be turned off.
    element::WipeReleasedBuffers(false);
    const ReleasedBlocks blocks(begin);
    {
        const element bytes(secret);
    }
    element::WipeReleasedBuffers(true);
    EXPECT_EQ(blocks.kept(), 1U);
}
