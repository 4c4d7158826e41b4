#include "core/text/utf8.h"
#include "tests/tools/cryptotool/der_text.h"
#include "tests/tools/cryptotool/memory_console.h"
#include "tools/text/safe_text.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace ccrypto;

namespace {

TEST(CryptotoolShow, OneElementIsFoundByItsOffset)
{
    const std::string der = Bytes("300f"
                                  "0603550403"
                                  "0c03416461"
                                  "a203020107");
    const std::string openEnded = Bytes("3080"
                                        "a0800201050000"
                                        "020106"
                                        "0000");
    const struct {
        std::string input;
        std::vector<std::string> words;
        std::string output; ///< empty where it is refused
        const char* error;
    } cases[] = {
        {der, {"--at", "7", "--as", "template"}, "UTF8String = \"Ada\"\n", ""},
        {der, {"--at", "0x7", "--as", "der"}, Bytes("0c03416461"), ""},
        {der, {"--at", "0", "--as", "der"}, der, ""},
        {der,
         {"--at=12"},
         " offset  header   length  form  element\n     12       2        3  cons  CONTEXT_SPECIFIC[2]\n"
         "     14       2        1  prim    INTEGER 7\n",
         ""},
        {der,
         {"--at=12", "--depth=1"},
         " offset  header   length  form  element\n     12       2        3  cons  CONTEXT_SPECIFIC[2]\n",
         ""},
        {openEnded, {"--at", "2", "--as", "der"}, Bytes("a0800201050000"), ""},
        {openEnded, {"--at", "9", "--as", "der"}, Bytes("020106"), ""},
        {der.substr(0, 10),
         {"--at", "7", "--lenient"},
         " offset  header   length  form  element\n      7       2        3  prim  UTF8String \"A\" (cut short: 1 of 3 bytes)\n",
         "warning: A length exceeds what remains of the data"},
        {der, {"--at", "5"}, "", "no element starts at offset 5; the nearest is the UTF8String at 7\n"},
        {der, {"--at", "1"}, "", "no element starts at offset 1; the nearest is the SEQUENCE at 0\n"},
        {der, {"--at", "0xffffffff"}, "", "the nearest is the INTEGER at 14\n"},
        {openEnded, {"--at", "7"}, "", "the nearest is the INTEGER at 9\n"},
        {der, {"--at", "4294967296"}, "", "--at must be an offset like 60 or 0x3c, not 4294967296"},
        {der, {"--at", "0x"}, "", "--at must be an offset"},
        {der, {"--at", "7x"}, "", "--at must be an offset"},
        {Pem("AgEF\n") + Pem("AgEG\n"), {"--at", "0"}, "", "--at requires one block, and it has 2\n"},
        {der, {"--as", "der", "--depth", "1"}, "", "--depth and --as der are mutually exclusive"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(testing::PrintToString(test.words));
        std::vector<std::string> words = {"asn1", "show", "-"};
        words.insert(words.end(), test.words.begin(), test.words.end());
        const ToolResult shown = RunTool(words, test.input);
        EXPECT_EQ(shown.output, test.output);
        EXPECT_NE(shown.error.find(test.error), std::string::npos) << shown.error;
        EXPECT_EQ(shown.code == exitDone, !test.output.empty());
    }
}

TEST(CryptotoolShow, WarnsOfDataThatIsNotDer)
{
    const std::string openEnded = Bytes("30800201050000");
    const std::string warning = "warning: it is not DER; encoded again, it gives other octets\n";
    const struct {
        std::string input;
        std::vector<std::string> words;
        std::string error;
    } cases[] = {
        {openEnded, {}, "cryptotool: -: " + warning},
        {openEnded, {"--as", "json"}, "cryptotool: -: " + warning},
        {openEnded, {"--as", "der"}, ""},
        {openEnded, {"--at", "2"}, ""},
        {Bytes("020105"), {}, ""},
        {Bytes("02010500"), {"--as", "template"}, "cryptotool: -: " + warning},
        {Pem("AgEF\n") + Pem("AgEFAA==\n"), {}, "PEM block 2 (X): it is not DER"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(testing::PrintToString(test.words));
        std::vector<std::string> words = {"asn1", "show", "-"};
        words.insert(words.end(), test.words.begin(), test.words.end());
        const ToolResult shown = RunTool(words, test.input);
        EXPECT_EQ(shown.code, exitDone);
        EXPECT_EQ(shown.error.empty(), test.error.empty()) << shown.error;
        EXPECT_NE(shown.error.find(test.error), std::string::npos) << shown.error;
    }
}

TEST(CryptotoolShow, HostileTextIsEscapedAndComesBack)
{
    std::vector<std::string> texts = {"\"'\\\\#00<>&--]]>", "\xff\xfe", "\xed\xa0\x80", "\xc0\x80", "include /etc/passwd"};
    for (const std::uint32_t codePoint :
         {0x00U, 0x07U, 0x0AU, 0x1BU, 0x7FU, 0x85U, 0x9BU, 0x200EU, 0x2028U, 0x202EU, 0x2066U, 0xFEFFU, 0xE0001U}) {
        element text(ElementType::utf8Text);
        text.append("a");
        EncodeUtf8(codePoint, text);
        text.append("b");
        texts.emplace_back(text.view());
    }
    for (const std::string& text : texts) {
        for (const std::uint8_t tag : {std::uint8_t{0x0C}, std::uint8_t{0x13}, std::uint8_t{0x80}, std::uint8_t{0x04}}) {
            const std::string der = std::string{static_cast<char>(tag), static_cast<char>(text.size())} + text;
            for (const char* form : {"outline", "template", "json", "xml"}) {
                SCOPED_TRACE(Hex(der) + form);
                const ToolResult shown = RunTool({"asn1", "show", "--as", form, "-"}, der);
                ASSERT_EQ(shown.code, exitDone) << shown.error;
                std::string lines = shown.output;
                std::erase(lines, '\n');
                EXPECT_TRUE(IsSafeText(lines)) << lines;
                if (std::string(form) != "outline") {
                    EXPECT_EQ(Hex(RunTool({"asn1", "build", "-"}, shown.output).output), Hex(der)) << shown.output;
                }
            }
            const std::string value = RunTool({"asn1", "get", "=", "-"}, der).output;
            EXPECT_TRUE(IsSafeText(value.substr(0, value.find('\n'))) && std::ranges::count(value, '\n') == 1) << value;
        }
    }
}

TEST(CryptotoolShow, DepthCutsTheOutlineAndKeepsTheTreeWhole)
{
    const std::string der = Bytes("300c300a04053003020105020106");
    EXPECT_EQ(std::ranges::count(RunTool({"asn1", "show", "--depth", "2", "-"}, der).output, '\n'), 3);
    for (const char* form : {"template", "json", "xml"}) {
        for (const char* levels : {"1", "2", "3", "4", "99"}) {
            SCOPED_TRACE(std::string(form) + levels);
            const std::string shown = RunTool({"asn1", "show", "--inside", "--as", form, "--depth", levels, "-"}, der).output;
            EXPECT_EQ(shown.find("INTEGER") == std::string::npos, std::string(levels) < "3");
            EXPECT_EQ(Hex(RunTool({"asn1", "build", "-"}, shown).output), Hex(der)) << shown;
        }
    }
}

} // namespace
