#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/der_text.h"
#include "tests/tools/cryptotool/memory_console.h"
#include "tests/tools/cryptotool/small_files.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

TEST(CryptotoolMatch, SaysNamesOrTheStepThatFailed)
{
    const TemporaryDirectory folder;
    const std::string pattern = folder / u8"pattern";
    PutFile(pattern, "SEQUENCE { INTEGER = number, tree, OCTET_STRING = empty, SET { list } }");
    const std::string der = Bytes("3010020105300306017f0400310405000500");
    const ToolResult text = RunTool({"asn1", "match", pattern, "-"}, der);
    EXPECT_EQ(text.output, "number = 5\n"
                           "tree = SEQUENCE {\n"
                           "    OBJECT_IDENTIFIER = \"3.7\"\n"
                           "}\n"
                           "empty = (empty)\n"
                           "list = {\n"
                           "    NULL,\n"
                           "    NULL\n"
                           "}\n");
    EXPECT_EQ(text.code, exitDone);
    const ToolResult failed = RunTool({"asn1", "match", pattern, "-"}, Bytes("30020500"));
    EXPECT_EQ(failed.error, "cryptotool: -: no match: INTEGER: the data holds NULL\n");
    EXPECT_EQ(failed.output, "");
    EXPECT_EQ(failed.code, exitRefused);
    const ToolResult both =
        RunTool({"asn1", "match", "--json", pattern, "-"}, Pem("MAIFAA==\n", "A", "A") + Pem("MBACAQUwAwYBfwQAMQQFAAUA\n"));
    EXPECT_EQ(both.output,
              "{\"blocks\":[\n"
              "{\"label\":\"A\",\"matched\":false,\"failedStep\":\"INTEGER: the data holds NULL\"},\n"
              "{\"label\":\"X\",\"matched\":true,\"bindings\":[\n"
              "{\"name\":\"number\",\"kind\":\"value\",\"text\":\"5\",\"hex\":\"05\"},\n"
              "{\"name\":\"tree\",\"kind\":\"elements\",\"text\":\"SEQUENCE {\\n    OBJECT_IDENTIFIER = \\\"3.7\\\"\\n}\","
              "\"hex\":\"300306017f\"},\n"
              "{\"name\":\"empty\",\"kind\":\"empty\"},\n"
              "{\"name\":\"list\",\"kind\":\"elements\",\"text\":\"NULL,\\nNULL\",\"hex\":\"05000500\"}\n"
              "]}\n"
              "]}\n");
    EXPECT_EQ(both.error, "cryptotool: -: PEM block 1 (A): no match: INTEGER: the data holds NULL\n");
    EXPECT_EQ(both.code, exitRefused);
}

} // namespace
