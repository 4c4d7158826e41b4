#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/der_text.h"
#include "tests/tools/cryptotool/memory_console.h"
#include "tests/tools/cryptotool/small_files.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

TEST(CryptotoolBuild, ValuesBecomeWhatTheTemplateAsksFor)
{
    const TemporaryDirectory folder;
    const std::string raw = folder / u8"raw";
    const std::string tree = folder / u8"tree";
    PutFile(raw, std::string("\0\xff", 2));
    PutFile(tree, Pem("AgEF\n") + Pem("BQA=\n"));
    const struct {
        const char* pattern;
        std::string value;
        const char* der; ///< empty where it is refused
    } cases[] = {
        {"INTEGER = v", "5", "020105"},
        {"INTEGER = v", "-129", "0202ff7f"},
        {"INTEGER = v", "128", "02020080"},
        {"INTEGER { v }", "0", "020100"},
        {"INTEGER = v", "#0005", "02020005"},
        {"INTEGER = v", "five", ""},
        {"INTEGER = v", "", ""},
        {"ENUMERATED = v", "2", "0a0102"},
        {"BOOLEAN = v", "TRUE", "0101ff"},
        {"BOOLEAN = v", "FALSE", "010100"},
        {"BOOLEAN = v", "5", ""},
        {"PrintableString = v", "5", "130135"},
        {"UTF8String = v", "ä", "0c02c3a4"},
        {"UTF8String = v", "text:#1", "0c022331"},
        {"UTF8String = v", "a=b", "0c03613d62"},
        {"BMPString = v", "aä", "1e04006100e4"},
        {"OBJECT_IDENTIFIER = v", "2.5.4.3", "0603550403"},
        {"OBJECT_IDENTIFIER = v", "common", ""},
        {"OCTET_STRING = v", "#00FF", "040200ff"},
        {"OCTET_STRING = v", "#0", ""},
        {"OCTET_STRING = v", "@" + raw, "040200ff"},
        {"OCTET_STRING = v", "der:@" + tree, "04050201050500"},
        {"BIT_STRING[0] { v }", "der:@" + tree, "0306000201050500"},
        {"SEQUENCE { v, NULL, v }", "der:@" + tree, "300c020105050005000201050500"},
        {"CONTEXT_SPECIFIC[v, EXPLICIT] { NULL }", "3", "a3020500"},
        {"CONTEXT_SPECIFIC[v] { NULL }", "-3", ""},
        {"SEQUENCE { v }", "@" + raw + "none", ""},
        {"SEQUENCE { v }", "der:@" + raw, ""},
        {"SEQUENCE { w(OPTIONAL) }", "1", ""},
        {"{\"INTEGER = v\": null}", "5", "020105"},
        {"<INTEGER xmlns=\"urn:x-asn1:template\" value=\"v\"/>", "5", "020105"},
        {"{\"ordinary\": \"v\"}", "5", ""},
        {"SEQUENCE { v", "5", ""},
        {"UTF8String = v", "text:\xFF", ""},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.pattern + (" " + test.value));
        const ToolResult built = RunTool({"asn1", "build", "-", "v=" + test.value}, test.pattern);
        EXPECT_EQ(Hex(built.output), test.der) << built.error;
        EXPECT_EQ(built.code, *test.der != 0 ? exitDone : exitRefused);
        EXPECT_EQ(built.error.empty(), *test.der != 0) << built.error;
    }
    const ToolResult left = RunTool({"asn1", "build", "-"}, "SEQUENCE { INTEGER = a, b(OPTIONAL), SET (OPTIONAL) { c }, d, d }");
    EXPECT_EQ(left.code, exitDone);
    EXPECT_EQ(left.error, "cryptotool: -: warning: no value given for a, d\n");
    EXPECT_EQ(RunTool({"asn1", "build", "--quiet", "-"}, "INTEGER = a, NULL").error, "");
    EXPECT_EQ(RunTool({"asn1", "build", "-"}, "SEQUENC { INTEGER = 5 }").error,
              "cryptotool: -: the template describes no elements; SEQUENC is a name without a value, not a type\n");
    const std::pair<const char*, const char*> strings[] = {
        {"OCTET_STRING { SEQUENCE { NULL } }", "OCTET_STRING"},
        {"SEQUENCE { BIT_STRING[0] { NULL } }", "BIT_STRING"},
        {"UTF8String[CONSTRUCTED] = #0500", "UTF8String"},
        {"OCTET_STRING[PRIMITIVE] { SEQUENCE { NULL } }", nullptr},
        {"OCTET_STRING[EXCLUDE] { SEQUENCE { NULL } }", nullptr},
        {"EXTERNAL { INTEGER = 5 }, CONTEXT_SPECIFIC[0] { SET[CONSTRUCTED] = #0500 }", nullptr},
    };
    for (const auto& [pattern, type] : strings) {
        SCOPED_TRACE(pattern);
        const std::string warning = type == nullptr
                                        ? std::string()
                                        : std::string("cryptotool: -: warning: ") + type +
                                              " is constructed, which DER forbids; with PRIMITIVE in its brackets it is not\n";
        EXPECT_EQ(RunTool({"asn1", "build", "-"}, pattern).error, warning);
    }
}

TEST(CryptotoolBuild, SaysWhyThereAreNoElements)
{
    const std::pair<const char*, const char*> cases[] = {
        {"{\"SEQUENC\": [{\"INTEGER\": 5}]}", "it describes no ASN.1: no member has the name of a type, such as SEQUENCE\n"},
        {"<INTEGER>5</INTEGER>", "it describes no ASN.1: elements need the namespace urn:x-asn1:template\n"},
    };
    for (const auto& [pattern, reason] : cases) {
        const ToolResult built = RunTool({"asn1", "build", "-"}, pattern);
        EXPECT_EQ(built.code, exitRefused);
        EXPECT_TRUE(built.error.ends_with(std::string("cryptotool: -: ") + reason)) << built.error;
    }
}

} // namespace
