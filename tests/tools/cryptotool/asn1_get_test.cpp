#include "tests/tools/cryptotool/der_text.h"
#include "tests/tools/cryptotool/memory_console.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

TEST(CryptotoolGet, WalksPathsAndNamesTheStepThatFails)
{
    const std::string der = Bytes("300a020105300306017f0400");
    const struct {
        const char* path;
        const char* form;
        std::string output; ///< empty where it is refused
        const char* error;
    } cases[] = {
        {"{{", "value", "5\n", ""},
        {"{,{{", "value", "2.47\n", ""},
        {"{,{{", "bytes", "\x7f", ""},
        {"{,", "der", Bytes("300306017f"), ""},
        {"{,", "bytes", Bytes("06017f"), ""},
        {"{|INTEGER = 5|,", "template", "SEQUENCE {\n    OBJECT_IDENTIFIER = \"3.7\"\n}\n", ""},
        {"{|INTEGER = 6|,", "value", "", "cryptotool: -: step 2 of the path, \"|INTEGER = 6|\", leads nowhere\n"},
        {"{,,,", "value", "", "cryptotool: -: step 4 of the path, \",\", leads nowhere\n"},
        {"x", "value", "", "cryptotool: -: step 1 of the path, \"x\", leads nowhere\n"},
        {"|", "value", "", "cryptotool: -: step 1 of the path, \"|\", leads nowhere\n"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(std::string(test.path) + " " + test.form);
        const ToolResult got = RunTool({"asn1", "get", "--as", test.form, test.path, "-"}, der);
        EXPECT_EQ(got.output, test.output);
        EXPECT_EQ(got.error, test.error);
        EXPECT_EQ(got.code, test.output.empty() ? exitRefused : exitDone);
    }
}

} // namespace
