#include "core/text/hex.h"
#include "core/text/utf8.h"
#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/memory_console.h"
#include "tests/tools/cryptotool/small_files.h"
#include "tools/cryptotool/cli/safe_text.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace ccrypto;

namespace {

std::string Bytes(std::string_view hex)
{
    element bytes;
    EXPECT_TRUE(BytesFromHex(hex, bytes));
    return std::string(bytes.view());
}

std::string Hex(std::string_view bytes)
{
    return std::string(HexText({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}).view());
}

std::string Pem(std::string_view body, std::string_view begin = "X", std::string_view end = "X")
{
    return "-----BEGIN " + std::string(begin) + "-----\n" + std::string(body) + "-----END " + std::string(end) + "-----\n";
}

TEST(CryptotoolInput, FindsOutWhatItIs)
{
    const std::string hex = "020105";
    const struct {
        const char* name;
        std::string input;
        std::string der; ///< empty where it is refused
        std::string reason;
    } cases[] = {
        {"DER", Bytes(hex), hex, ""},
        {"base64", "AgEF", hex, ""},
        {"base64 in lines", "\xEF\xBB\xBF  Ag\r\nEF\r\n", hex, ""},
        {"base64 without padding", "AgIBAA", "02020100", ""},
        {"base64 cut", "AgEFA", "", "base64 ends inside a group"},
        {"base64 with too little padding", "AgIBAA=", "", "base64 ends inside a group"},
        {"PEM among text, in blocks", "Bag Attributes\n" + Pem("AgEF\n") + "more\r\n" + Pem("Agw=\r\n", "Y", "Y"), "", "A length"},
        {"two blocks", Pem("AgEF\n") + Pem("AgEG\r\n", "Y", "Y"), "020105020106", ""},
        {"PEM with headers", Pem("A: b\n c\n\nAgEF\n"), hex, ""},
        {"encrypted PEM", Pem("Proc-Type: 4,ENCRYPTED\n\nAgEF\n"), "", "PEM block 1 (X): it is encrypted"},
        {"PEM without its end", "-----BEGIN X-----\nAgEF\n", "", "PEM block 1 (X): its END line is missing"},
        {"PEM in PEM", "-----BEGIN X-----\n" + Pem("AgEF\n"), "", "PEM block 1 (X): its END line is missing"},
        {"PEM that ends as another", Pem("AgEF\n", "X", "Z"), "", "PEM block 1 (X): it ends as Z"},
        {"PEM with a zero byte", Pem(std::string("Ag\0EF\n", 6)), "", "PEM block 1 (X): base64 holds the byte 0x00"},
        {"PEM without a body", Pem(""), "", "PEM block 1 (X): The data holds no element"},
        {"a BEGIN line alone", "-----BEGIN X", "", "the BEGIN line of the PEM block is broken"},
        {"DER that holds PEM", Bytes("042900") + "\n" + Pem("AgEF\n"), "0429000a2d2d", ""},
        {"empty", "", "", "it is empty"},
        {"blanks", " \n", "", "it is empty"},
        {"zero bytes", std::string(9, '\0'), "", "The data holds no element (offset 0)"},
        {"text", "Just some words.\n", "", "(offset 0); it is text, but not PEM, base64 or hexadecimal"},
        {"hexadecimal", "020105", hex, ""},
        {"hexadecimal in lines, in both cases", "\xEF\xBB\xBF 0c 02\n C3A4\r\n", "0c02c3a4", ""},
        {"hexadecimal with colons", "02:01:05", hex, ""},
        {"hexadecimal as of C", "0x02, 0x01,\n0X05,\n", hex, ""},
        {"hexadecimal after one prefix", "0x020105", hex, ""},
        {"an odd digit", "02:01:0", "", "hexadecimal text has an odd number of digits"},

        {"a prefix in the middle", "020x105", "", "it is text, but not"},
        // base64 of hexadecimal digits, that is DER as base64 alone: an OCTET STRING of one byte, an INTEGER
        {"base64 that looks hexadecimal", "BAEA", "040100", ""},
        {"base64 that looks hexadecimal, in lines", "AgE\nA", "020100", ""},
        // DER as both: NULL, and as base64 an element of 28 bytes
        {"DER both ways", "0500", "0500", ""},
        {"DER neither way", "0202AA", "", "A length exceeds what remains of the data (offset 0)"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        const ToolResult shown = RunTool({"asn1", "show", "--as", "template", "-"}, test.input);
        EXPECT_EQ(shown.code, test.der.empty() ? exitRefused : exitDone);
        EXPECT_EQ(shown.output.empty(), test.der.empty());
        if (test.der.empty()) {
            EXPECT_NE(shown.error.find(test.reason), std::string::npos) << shown.error;
            EXPECT_TRUE(shown.error.starts_with("cryptotool: -: "));
            EXPECT_EQ(shown.error.find('\n'), shown.error.size() - 1);
        } else {
            EXPECT_TRUE(Hex(RunTool({"asn1", "build", "-"}, shown.output).output).starts_with(test.der));
        }
    }
}

TEST(CryptotoolInput, RefusesFilesThatCannotBeReadWhole)
{
    const TemporaryDirectory folder;
    const std::string large = folder / u8"large";
    PutFile(large, "x");
    std::filesystem::resize_file(folder.path() / "large", (std::uintmax_t{256} << 20) + 1);
    const std::string missing = folder / u8"päivä\u009b\n\u202e";
    const ToolResult results[] = {
        RunTool({"asn1", "show", large}),
        RunTool({"asn1", "show", missing}),
        RunTool({"asn1", "show", folder / u8""}),
        RunTool({"asn1", "build", missing}),
        RunTool({"gzip", missing, "-o", folder / u8"none"}),
    };
    EXPECT_NE(results[0].error.find("it is longer than 256 MiB"), std::string::npos);
    EXPECT_NE(results[1].error.find("päivä\\xc2\\x9b\\x0a\\xe2\\x80\\xae: "), std::string::npos) << results[1].error;
    for (const ToolResult& result : results) {
        EXPECT_EQ(result.code, exitRefused);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.error.find('\n'), result.error.size() - 1) << result.error;
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "none"));
}

TEST(CryptotoolOutline, TellsWhereEverythingLies)
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

TEST(CryptotoolOutline, OfCutDataTellsWhatIsThere)
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

TEST(CryptotoolMatch, TellsNamesOrTheStepThatFailed)
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
        {"{|INTEGER = 6|,", "value", "", "cryptotool: -: step 2 of the path, |INTEGER = 6|, leads nowhere\n"},
        {"{,,,", "value", "", "cryptotool: -: step 4 of the path, ,, leads nowhere\n"},
        {"x", "value", "", "cryptotool: -: step 1 of the path, x, leads nowhere\n"},
        {"|", "value", "", "cryptotool: -: step 1 of the path, |, leads nowhere\n"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(std::string(test.path) + " " + test.form);
        const ToolResult got = RunTool({"asn1", "get", "--as", test.form, test.path, "-"}, der);
        EXPECT_EQ(got.output, test.output);
        EXPECT_EQ(got.error, test.error);
        EXPECT_EQ(got.code, test.output.empty() ? exitRefused : exitDone);
    }
}

TEST(CryptotoolOid, FindsBothWays)
{
    EXPECT_EQ(RunTool({"oid", "2.5.4.3"}).output, "2.5.4.3  commonName (CN)\n");
    EXPECT_NE(RunTool({"oid", "COMMONNAME"}).output.find("2.5.4.3 "), std::string::npos);
    EXPECT_EQ(RunTool({"oid", "--json", "2.5.4.3"}).output,
              "{\"oids\":[\n{\"oid\":\"2.5.4.3\",\"name\":\"commonName (CN)\"}\n]}\n");
    for (const char* unknown : {"2.5.4.99999", ".", "", "no such name", "2.5.4.3 "})
        EXPECT_EQ(RunTool({"oid", unknown}).code, exitRefused) << unknown;
}

} // namespace
