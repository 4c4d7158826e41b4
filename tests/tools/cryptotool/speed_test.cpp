#include "tests/tools/cryptotool/memory_console.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace ccrypto;

namespace {

TEST(CryptotoolSpeed, MeasuresWhatIsNamedInEveryVariant)
{
    const ToolResult table = RunTool({"speed", "MD-5", "sha1"});
    EXPECT_EQ(table.code, exitDone) << table.error;
    EXPECT_TRUE(table.output.starts_with("algorithm "));
    EXPECT_NE(table.output.find("\nMD5 "), std::string::npos);
    EXPECT_NE(table.output.find("\nSHA-1                     portable"), std::string::npos) << table.output;
    EXPECT_EQ(table.output.find("SHA-256"), std::string::npos);
    // One variant of each is in use.
    EXPECT_EQ(std::ranges::count(table.output, '*'), 2);

    const ToolResult json = RunTool({"speed", "--json", "md4", "rsa2048", "x448"});
    EXPECT_TRUE(json.output.starts_with("{\"speed\":[\n{\"algorithm\":\"MD4\",\"variant\":\"portable\",\"used\":true,"
                                        "\"bytesPerSecond\":{\"16\":"))
        << json.output;
    for (const char* const part :
         {"{\"algorithm\":\"RSA-2048 sign\",", "{\"algorithm\":\"RSA-2048 verify\",",
          "{\"algorithm\":\"X448 agree\",\"variant\":\"portable\",\"used\":true", ",\"operationsPerSecond\":"})
        EXPECT_NE(json.output.find(part), std::string::npos) << part;
}

TEST(CryptotoolSpeed, RefusesWhatItDoesNotKnow)
{
    const std::vector<std::vector<std::string>> cases = {
        {"speed", "sha256", "sha257"},
        {"speed", "--", "-"},
        {"speed", "--seconds", "0"},
        {"speed", "--seconds", "61"},
    };
    for (const std::vector<std::string>& words : cases) {
        const ToolResult result = RunTool(words);
        EXPECT_EQ(result.code, exitUsage);
        EXPECT_TRUE(result.error.ends_with("(see cryptotool speed --help)\n")) << result.error;
    }
}

} // namespace
