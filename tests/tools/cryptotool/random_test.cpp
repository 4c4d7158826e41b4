#include "tests/tools/cryptotool/memory_console.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace ccrypto;

namespace {

TEST(CryptotoolRandom, GivesAsMuchAsAskedFor)
{
    const struct {
        const char* count;
        std::size_t bytes;
    } cases[] = {{"0", 0}, {"1", 1}, {"47", 47}, {"48", 48}, {"49152", 49152}, {"49153", 49153}, {"3k", 3072}, {"2M", 2097152}};
    for (const auto& test : cases) {
        SCOPED_TRACE(test.count);
        const std::string first = RunTool({"random", test.count}).output;
        EXPECT_EQ(first.size(), test.bytes);
        if (test.bytes >= 47) {
            EXPECT_NE(RunTool({"random", test.count}).output, first);
        }
        EXPECT_EQ(RunTool({"random", "--hex", test.count}).output.size(), 2 * test.bytes + 1);
        const std::string base64 = RunTool({"random", "--base64", test.count}).output;
        EXPECT_EQ(std::ranges::count(base64, '\n'), static_cast<std::ptrdiff_t>((test.bytes + 47) / 48));
        EXPECT_EQ(base64.size(), (test.bytes + 47) / 48 + (test.bytes + 2) / 3 * 4);
    }
    // Every value of a byte, about equally often.
    const std::string bytes = RunTool({"random", "64k"}).output;
    for (int value = 0; value < 256; ++value) {
        const auto count = std::ranges::count(bytes, static_cast<char>(value));
        EXPECT_GT(count, 100) << value;
        EXPECT_LT(count, 450) << value;
    }
}

TEST(CryptotoolRandom, RefusesWhatIsNoCountAndATerminal)
{
    const std::vector<std::vector<std::string>> cases = {
        {}, {""}, {"-1"}, {"k"}, {"1K"}, {"1kk"}, {"9223372036854775808"}, {"8796093022208M"}, {"1", "--hex", "--base64"},
    };
    for (std::vector<std::string> words : cases) {
        SCOPED_TRACE(testing::PrintToString(words));
        words.insert(words.begin(), "random");
        const ToolResult result = RunTool(words);
        EXPECT_EQ(result.code, exitUsage);
        EXPECT_EQ(result.output, "");
        EXPECT_TRUE(result.error.ends_with("(see cryptotool random --help)\n")) << result.error;
    }
    const ToolResult shown = RunTool({"random", "1"}, "", true);
    EXPECT_EQ(shown.code, exitRefused);
    EXPECT_TRUE(shown.error.starts_with("cryptotool: -: binary data")) << shown.error;
    EXPECT_EQ(RunTool({"random", "1", "--hex"}, "", true).code, exitDone);
}

} // namespace
