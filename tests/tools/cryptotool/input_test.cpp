#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/der_text.h"
#include "tests/tools/cryptotool/memory_console.h"
#include "tests/tools/cryptotool/small_files.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace ccrypto;

namespace {

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
        {"a tag of several octets", Bytes("7f2103020105"), "", "; its tag is above 30, which is not supported"},
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

TEST(CryptotoolInput, WarnsOfTagsThatItReadsWrongly)
{
    const ToolResult shown = RunTool({"asn1", "show", "-"}, Bytes("30055f03010203"));
    EXPECT_EQ(shown.code, exitDone);
    EXPECT_NE(shown.error.find("the tag at offset 2 is above 30, which is not supported"), std::string::npos) << shown.error;
    EXPECT_EQ(RunTool({"asn1", "show", "-"}, Bytes("30035e0105")).error, "");
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

/// Zeros, one byte more than may be read whole.
class LongInput : public MemoryConsole {
public:
    std::int64_t readInput(std::span<std::uint8_t> target) override
    {
        const std::size_t count = std::min(target.size(), left_);
        left_ -= count;
        return static_cast<std::int64_t>(count);
    }

private:
    std::size_t left_ = (std::size_t{256} << 20) + 1;
};

TEST(CryptotoolInput, RefusesStreamsThatAreTooLong)
{
    LongInput console;
    EXPECT_EQ(RunCommandLine(std::vector<std::string>{"asn1", "show", "-"}, console), exitRefused);
    EXPECT_EQ(console.error, "cryptotool: -: it is longer than 256 MiB\n");
}

} // namespace
