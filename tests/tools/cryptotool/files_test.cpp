#include "deflate/deflate_stream.h"
#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/memory_console.h"
#include "tests/tools/cryptotool/small_files.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

std::vector<std::string> NamesIn(const TemporaryDirectory& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

const std::string number = "\x02\x01\x05";

TEST(CryptotoolOutput, AFileAppearsWholeOrNotAtAll)
{
    const TemporaryDirectory folder;
    const std::string out = folder / u8"päivä";
    const std::vector<std::string> build = {"asn1", "build", "-", "-o", out};
    EXPECT_EQ(RunTool(build, "INTEGER = 5").code, exitDone);
    EXPECT_EQ(GetFile(out), number);

    EXPECT_EQ(RunTool(build, "OBJECT_IDENTIFIER = \"x\"").code, exitRefused);
    std::string packed = RunTool({"gzip", "-"}, std::string(1000000, 'a')).output;
    packed[packed.size() - 8] ^= 1;
    EXPECT_EQ(RunTool({"gunzip", "-o", out}, packed).code, exitRefused);
    EXPECT_EQ(GetFile(out), number);

    EXPECT_EQ(RunTool({"gunzip", "-o", out}, RunTool({"gzip"}, "other").output).code, exitDone);
    EXPECT_EQ(GetFile(out), "other");
    EXPECT_EQ(NamesIn(folder).size(), 1U);

    for (const std::string& refused : {folder / u8"", folder / u8"missing/out"}) {
        const ToolResult result = RunTool({"asn1", "build", "-", "-o", refused}, "INTEGER = 5");
        EXPECT_EQ(result.code, exitRefused);
        EXPECT_TRUE(result.error.starts_with("cryptotool: " + refused + ": ")) << result.error;
    }
}

TEST(CryptotoolOutput, BinaryDataDoesNotGoToATerminal)
{
    const std::string packed = RunTool({"gzip"}, "plain text\n").output;
    const std::string packedBytes = RunTool({"gzip"}, "\x1b[31m").output;
    const std::string packedLongControl = RunTool({"gzip"}, "\xC2\x9B[31m").output;
    const std::string packedWords = RunTool({"gzip"}, "p\xC3\xA4iv\xC3\xA4\xC2\xA0\n").output;
    const struct {
        std::vector<std::string> words;
        std::string input;
        bool refused;
    } cases[] = {
        {{"asn1", "build", "-"}, "INTEGER = 5", true},
        {{"asn1", "build", "--pem", "X", "-"}, "INTEGER = 5", false},
        {{"asn1", "get", "--as", "der", "", "-"}, number, true},
        {{"asn1", "get", "", "-"}, number, false},
        {{"asn1", "show", "--as", "der", "-"}, number, true},
        {{"gzip"}, "x", true},
        {{"gunzip"}, packed, false},
        {{"gunzip"}, packedBytes, true},
        {{"gunzip"}, packedLongControl, true},
        {{"gunzip"}, packedWords, false},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.words[0] + " " + test.input);
        const ToolResult result = RunTool(test.words, test.input, true);
        EXPECT_EQ(result.code, test.refused ? exitRefused : exitDone);
        EXPECT_EQ(result.output.empty(), test.refused);
        EXPECT_EQ(result.error.starts_with("cryptotool: -: binary data"), test.refused) << result.error;
    }
}

TEST(CryptotoolGzip, EveryLevelComesBack)
{
    std::string data;
    for (int row = 0; row < 20000; ++row)
        data += "row " + std::to_string(row * 7919 % 1000) + ";";
    std::string smallest = data;
    for (const char* level : {"-1", "-2", "-3", "-4", "-5", "-6", "-7", "-8", "-9"}) {
        SCOPED_TRACE(level);
        const std::string packed = RunTool({"gzip", level}, data).output;
        EXPECT_EQ(RunTool({"gunzip"}, packed + packed).output, data + data);
        EXPECT_LT(packed.size(), data.size() / 2);
        if (packed.size() < smallest.size())
            smallest = packed;
    }
    EXPECT_EQ(RunTool({"gzip", "-9"}, data).output.size(), smallest.size());
    EXPECT_EQ(RunTool({"gzip"}, data).output, RunTool({"gzip", "-6"}, data).output);
}

TEST(CryptotoolGzip, LimitsAreTheCallers)
{
    std::string data;
    data.resize(17000000, 'a');
    const std::string packed = RunTool({"gzip", "-1"}, data).output;
    const struct {
        std::vector<std::string> words;
        const char* reason; ///< empty where it is unpacked
    } cases[] = {
        {{"gunzip"}, "; --max-ratio changes the limit\n"},
        {{"gunzip", "--max-ratio", "2000"}, ""},
        {{"gunzip", "--max-ratio=0"}, ""},
        {{"gunzip", "--max-ratio=0", "--max-output=16999999"}, "; --max-output changes the limit\n"},
        {{"gunzip", "--max-ratio=0", "--max-output=17000000"}, ""},
        {{"gunzip", "--max-ratio=0", "--max-output=0"}, ""},
    };
    for (const auto& test : cases) {
        const ToolResult result = RunTool(test.words, packed);
        SCOPED_TRACE(result.error);
        EXPECT_EQ(result.code, *test.reason != 0 ? exitRefused : exitDone);
        EXPECT_NE(result.error.find(test.reason), std::string::npos);
    }
    // What was unpacked before the damage was found is there, however little it is.
    const std::string text = RunTool({"gzip"}, "some text\n").output;
    const ToolResult cut = RunTool({"gunzip"}, text.substr(0, text.size() - 8));
    EXPECT_EQ(cut.output, "some text\n");
    EXPECT_EQ(cut.code, exitRefused);
    for (const std::string& broken : {std::string(), std::string("text"), packed.substr(0, packed.size() - 1), packed + "x"})
        EXPECT_EQ(RunTool({"gunzip", "--max-ratio=0"}, broken).code, exitRefused) << broken.size();
}

} // namespace
