#include "tests/tools/cryptotool/der_text.h"
#include "tests/tools/cryptotool/memory_console.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace ccrypto;

namespace {

TEST(CryptotoolOutline, SaysWhereEverythingIs)
{
    EXPECT_EQ(RunTool({"asn1", "show", "-"}, Bytes("3080"
                                                   "0603550403"
                                                   "030304f0f0"
                                                   "a20504"
                                                   "03020105"
                                                   "0000"
                                                   "ffff"))
                  .output,
              " offset  header   length  form  element\n"
              "      0       2      inf  cons  SEQUENCE\n"
              "      2       2        3  prim    OBJECT_IDENTIFIER 2.5.4.3 commonName (CN)\n"
              "      7       2        3  prim    BIT_STRING #f0f0 (4 unused bits)\n"
              "     12       2        5  cons    CONTEXT_SPECIFIC[2]\n"
              "     14       2        3  prim      OCTET_STRING #020105\n"
              "     19       2        0  prim    END_OF_CONTENTS\n"
              "     21       0        2  -     NOT_DECODED #ffff\n");
    EXPECT_EQ(
        RunTool({"asn1", "show", "--json", "--inside", "-"}, Bytes("a205040302010506017f")).output,
        "{\"blocks\":[\n"
        "{\"label\":null,\"elements\":[\n"
        "{\"offset\":0,\"headerLength\":2,\"length\":5,\"depth\":0,\"type\":\"CONTEXT_SPECIFIC\",\"class\":\"context-specific\","
        "\"tag\":2,\"constructed\":true},\n"
        "{\"offset\":2,\"headerLength\":2,\"length\":3,\"depth\":1,\"type\":\"OCTET_STRING\",\"class\":\"universal\",\"tag\":4,"
        "\"constructed\":false},\n"
        "{\"offset\":4,\"headerLength\":2,\"length\":1,\"depth\":2,\"type\":\"INTEGER\",\"class\":\"universal\",\"tag\":2,"
        "\"constructed\":false,\"value\":\"5\"},\n"
        "{\"offset\":7,\"headerLength\":2,\"length\":1,\"depth\":0,\"type\":\"OBJECT_IDENTIFIER\",\"class\":\"universal\",\"tag\":"
        "6,"
        "\"constructed\":false,\"oid\":\"2.47\",\"name\":null}\n"
        "]}\n"
        "]}\n");
}

TEST(CryptotoolOutline, TimesAreReadable)
{
    const struct {
        std::uint8_t tag;
        const char* value;
        const char* shown; ///< empty where there is no such time
    } cases[] = {
        {0x17, "261123123818Z", "2026-11-23 12:38:18 UTC"},
        {0x17, "491231235959Z", "2049-12-31 23:59:59 UTC"},
        {0x17, "500101000000Z", "1950-01-01 00:00:00 UTC"},
        {0x17, "2611231238Z", "2026-11-23 12:38:00 UTC"},
        {0x17, "261123123818+0230", "2026-11-23 12:38:18 UTC+02:30"},
        {0x17, "26112312", ""},
        {0x17, "261123123818", "2026-11-23 12:38:18 local time"},
        {0x17, "270229000000Z", ""},
        {0x17, "261323000000Z", ""},
        {0x17, "261123240000Z", ""},
        {0x17, "261123126000Z", ""},
        {0x17, "261123123861Z", ""},
        {0x17, "261123123818.5Z", ""},
        {0x17, "261123123818Zx", ""},
        {0x17, "261123123818+2400", ""},
        {0x17, "261123123818*0200", ""},
        {0x17, "2611231a3818Z", ""},
        {0x18, "20240229000000Z", "2024-02-29 00:00:00 UTC"},
        {0x18, "2024022911", "2024-02-29 11:00:00 local time"},
        {0x18, "202402291130-05", "2024-02-29 11:30:00 UTC-05:00"},
        {0x18, "20240229113000.125Z", "2024-02-29 11:30:00.125 UTC"},
        {0x18, "20240229113000,5", "2024-02-29 11:30:00.5 local time"},
        {0x18, "20240229113000.Z", ""},
        {0x18, "240229000000Z", ""},
        {0x13, "20240229000000Z", ""},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.value);
        const std::string value(test.value);
        const std::string der = std::string{static_cast<char>(test.tag), static_cast<char>(value.size())} + value;
        const std::string meaning = *test.shown != 0 ? " (" + std::string(test.shown) + ")\n" : "\n";
        const std::string line = RunTool({"asn1", "show", "-"}, der).output;
        EXPECT_TRUE(line.ends_with("\"" + value + "\"" + meaning)) << line;
        const std::string json = RunTool({"asn1", "show", "--json", "-"}, der).output;
        EXPECT_EQ(json.find("\"time\":\"") != std::string::npos, *test.shown != 0) << json;
    }
    EXPECT_NE(RunTool({"asn1", "show", "--json", "-"}, "\x17\x0d"
                                                       "261123123818Z")
                  .output.find(",\"time\":\"2026-11-23T12:38:18Z\"}"),
              std::string::npos);
}

TEST(CryptotoolOutline, AddressesOfExtensionsAreReadable)
{
    const struct {
        const char* extension; ///< the last octet of 2.5.29
        const char* value;
        const char* shown; ///< empty where it is no address
    } cases[] = {
        {"11", "0a000001", "10.0.0.1"},
        {"12", "ffffffff", "255.255.255.255"},
        {"11", "0a0000", ""},
        {"11", "0a000000ff000000", ""},
        {"0e", "0a000001", ""},
        {"1e", "0a000001", ""},
        {"1e", "0a000000ff000000", "10.0.0.0/8"},
        {"1e", "0a000000ff800000", "10.0.0.0/9"},
        {"1e", "0a00000000000000", "10.0.0.0/0"},
        {"1e", "0a000000ffffffff", "10.0.0.0/32"},
        {"1e", "0a000000ff00ff00", "10.0.0.0/255.0.255.0"},
        {"1e", "0a000000fd000000", "10.0.0.0/253.0.0.0"},
        {"1e", "20010db8000000000000000000000000ffffffff000000000000000000000000", "2001:db8::/32"},
        // RFC 5952, 4 and 5
        {"11", "20010db8000000000000000000020001", "2001:db8::2:1"},
        {"11", "20010db8000000010001000100010001", "2001:db8:0:1:1:1:1:1"},
        {"11", "20010000000000010000000000000001", "2001:0:0:1::1"},
        {"11", "20010db8000000000001000000000001", "2001:db8::1:0:0:1"},
        {"11", "00000000000000000000000000000000", "::"},
        {"11", "00000000000000000000000000000001", "::1"},
        {"11", "fe800000000000000000000000000000", "fe80::"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(std::string(test.extension) + " " + test.value);
        const std::string value = Bytes(test.value);
        const auto wrapped = [](std::uint8_t tag, const std::string& inner) {
            return std::string{static_cast<char>(tag), static_cast<char>(inner.size())} + inner;
        };
        const std::string der =
            wrapped(0x30, Bytes("0603551d" + std::string(test.extension)) + wrapped(0x04, wrapped(0x30, wrapped(0x87, value))));
        const std::string lines = RunTool({"asn1", "show", "--inside", "-"}, der).output;
        const std::string json = RunTool({"asn1", "show", "--inside", "--json", "-"}, der).output;
        EXPECT_EQ(lines.find(" (" + std::string(test.shown) + ")\n") != std::string::npos, *test.shown != 0) << lines;
        EXPECT_EQ(json.find(",\"address\":\"" + std::string(test.shown) + "\"}") != std::string::npos, *test.shown != 0) << json;
        EXPECT_EQ(json.find("\"address\"") != std::string::npos, *test.shown != 0) << json;
    }
    // Outside of an extension the tag means nothing.
    EXPECT_TRUE(RunTool({"asn1", "show", "-"}, Bytes("87040a000001")).output.ends_with(" #0a000001\n"));
}

TEST(CryptotoolOutline, OfCutDataSaysWhatIsThere)
{
    const std::string whole = Bytes("3015"
                                    "300c0603550403"
                                    "0c054164612121"
                                    "a2050403020105");
    const std::vector<std::string> show = {"asn1", "show", "--lenient", "-"};
    const std::string expected = RunTool(show, whole).output;
    for (std::size_t length = 2; length < whole.size(); ++length) {
        SCOPED_TRACE(length);
        const std::string cut = whole.substr(0, length);
        EXPECT_EQ(RunTool({"asn1", "show", "-"}, cut).code, exitRefused);
        EXPECT_EQ(RunTool({"asn1", "show", "--lenient", "--as", "json", "-"}, cut).code, exitRefused);
        const ToolResult shown = RunTool(show, cut);
        EXPECT_EQ(shown.code, exitDone);
        EXPECT_TRUE(shown.error.starts_with("cryptotool: -: warning: ")) << shown.error;
        // Each line is the one of the whole data, but for what was cut off; of the last element not even the header need be whole.
        std::istringstream lines(shown.output);
        std::istringstream expectedLines(expected);
        std::size_t cuts = 0;
        for (std::string line, right; std::getline(lines, line);) {
            std::getline(expectedLines, right);
            const bool isCut = line.find(" (cut short: ") != std::string::npos;
            cuts += isCut ? 1 : 0;
            const std::size_t same = lines.peek() == EOF ? 7 : isCut ? right.size() : std::string::npos;
            EXPECT_EQ(line.substr(0, same), right.substr(0, same));
        }
        EXPECT_GE(cuts, 1U) << shown.output;
    }
    // What is left of a time may look like another one.
    const ToolResult time = RunTool(show, Bytes("180f") + "20261123123818");
    EXPECT_NE(time.output.find("20261123123818"), std::string::npos) << time.output;
    EXPECT_EQ(time.output.find("(2026"), std::string::npos) << time.output;
    const ToolResult last = RunTool(show, whole.substr(0, whole.size() - 2));
    EXPECT_NE(last.output.find("OCTET_STRING #02 (cut short: 1 of 3 bytes)\n"), std::string::npos) << last.output;
    EXPECT_NE(RunTool({"asn1", "show", "--lenient", "--json", "-"}, whole.substr(0, 4)).output.find("\"length\":12,\"depth\":1"),
              std::string::npos);
}

TEST(CryptotoolOutline, ValuesReadAsPeopleWriteThem)
{
    const struct {
        const char* der;
        const char* value;
    } cases[] = {
        {"0101ff", "BOOLEAN TRUE"},
        {"0202ff7f", "INTEGER -129"},
        {"02087fffffffffffffff", "INTEGER 9223372036854775807"},
        {"020200c8", "INTEGER 200"},
        {"0209008000000000000000", "INTEGER 9223372036854775808"},
        {"0209010000000000000000", "INTEGER #010000000000000000"},
        {"0202007f", "INTEGER #007f"},
        {"0a0103", "ENUMERATED 3"},
        {"0a020080", "ENUMERATED 128"},
        {"0500", "NULL"},
        {"06022a80", "OBJECT_IDENTIFIER #2a80"},
        {"0603883701", "OBJECT_IDENTIFIER 2.999.1"},
        {"06028837", "OBJECT_IDENTIFIER 2.999"},
        {"0602813f", "OBJECT_IDENTIFIER 2.111"},
        {"060178", "OBJECT_IDENTIFIER 2.40"},
        {"06028088", "OBJECT_IDENTIFIER #8088"},
        {"0c0570c3a4 22 5c", "UTF8String \"pä\\\"\\\\\""},
        {"0c0541 1b c29b ff", "UTF8String \"A\\x1b\\xc2\\x9b\\xff\""},
        {"0c05 41 e280ae 42", "UTF8String \"A\\xe2\\x80\\xaeB\""},
        {"1e0620ac d83d dd8b", "BMPString \"€🖋\""},
        {"1e0141", "BMPString #41"},
        {"1c04000000e4", "UniversalString \"ä\""},
        {"1c0400110000", "UniversalString #00110000"},
        {"1402e441", "TeletexString \"äA\""},
        {"8103612e62", "CONTEXT_SPECIFIC[1] \"a.b\""},
        {"810400010203", "CONTEXT_SPECIFIC[1] #00010203"},
        {"030100", "BIT_STRING #"},
        {"0400", "OCTET_STRING"},
        {"0421000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f20",
         "OCTET_STRING #000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f... (33 bytes)"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.value);
        std::string hex(test.der);
        std::erase(hex, ' ');
        const std::string line = RunTool({"asn1", "show", "-"}, Bytes(hex)).output;
        const std::string wanted = std::string("prim  ") + test.value + "\n";
        EXPECT_TRUE(line.ends_with(wanted)) << line;
    }
}

/// Values that would steer a terminal, change what a line looks like, or break a string of one of the languages.

} // namespace
