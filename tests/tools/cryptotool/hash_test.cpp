#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/in_folder.h"
#include "tests/tools/cryptotool/memory_console.h"
#include "tests/tools/cryptotool/small_files.h"
#include "tools/cryptotool/sums/sum_line.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace ccrypto;

namespace {

const std::string abcSum = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
// RFC 4231, 4.3.
const std::string jefeMAC = "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843";
const std::string jefeText = "what do ya want for nothing?";

TEST(CryptotoolHash, PrintsAndChecksSums)
{
    const TemporaryDirectory folder;
    const std::string first = folder / u8"päivä";
    const std::string second = folder / u8"zwei";
    const std::string list = folder / u8"list";
    PutFile(first, "abc");
    PutFile(second, std::string(300000, 'x'));

    EXPECT_EQ(RunTool({"hash", "sha256", "-"}, "abc").output, abcSum + "  -\n");
    EXPECT_EQ(RunTool({"hash", "SHA-256", first, second, "-o", list}).code, exitDone);
    EXPECT_TRUE(GetFile(list).starts_with(SumLine{abcSum, first}.text()));
    ToolResult checked = RunTool({"hash", "sha256", "--check", list});
    EXPECT_EQ(checked.code, exitDone);
    EXPECT_EQ(checked.output, SumLine::About(first, "OK") + SumLine::About(second, "OK"));

    PutFile(first, "abd");
    std::filesystem::remove(FilePath(second));
    PutFile(list, GetFile(list) + "no sum\n" + abcSum.substr(2) + "  short\n");
    checked = RunTool({"hash", "-c", "sha256", list});
    EXPECT_EQ(checked.code, exitRefused);
    EXPECT_EQ(checked.output, SumLine::About(first, "FAILED") + SumLine::About(second, "FAILED open or read"));
    EXPECT_NE(checked.error.find(list + ": line 3 is not a line with a SHA-256 sum\n"), std::string::npos) << checked.error;
    EXPECT_NE(checked.error.find(list + ": line 4 is not a line with a SHA-256 sum\n"), std::string::npos) << checked.error;

    PutFile(list, "");
    EXPECT_EQ(RunTool({"hash", "sha256", "--check", list}).code, exitRefused);
    EXPECT_EQ(RunTool({"hash", "sha3", first}).code, exitUsage);
    EXPECT_EQ(RunTool({"hash"}).code, exitUsage);

    // One file that cannot be read does not keep the others from being read.
    const ToolResult some = RunTool({"hash", "sha256", folder / u8"nothing", "-"}, "abc");
    EXPECT_EQ(some.code, exitRefused);
    EXPECT_EQ(some.output, abcSum + "  -\n");
}

TEST(CryptotoolHash, ReadsStandardInputOnce)
{
    EXPECT_EQ(RunTool({"hash", "sha256"}, "abc").output, abcSum + "  -\n");
    EXPECT_EQ(RunTool({"hash", "--check", "sha256"}, "x\n").error.substr(0, 20), "cryptotool: -: line ");
    const ToolResult twice = RunTool({"hash", "sha256", "-", "-"}, "abc");
    EXPECT_EQ(twice.code, exitUsage);
    EXPECT_EQ(twice.output, "");

    // A line that names it has its sum, unless the lines come from there, or a line before was it.
    const std::string emptySum = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
    const TemporaryDirectory folder;
    const std::string list = folder / u8"list";
    PutFile(list, "\xEF\xBB\xBF" + abcSum + "  -\r\n" + emptySum + " *-\r\n");
    const ToolResult lines = RunTool({"hash", "--check", "sha256", list}, "abc");
    EXPECT_EQ(lines.code, exitRefused);
    EXPECT_EQ(lines.output, "-: OK\n-: FAILED open or read\n");
    const ToolResult itself = RunTool({"hash", "--check", "sha256", "-"}, emptySum + "  -\n");
    EXPECT_EQ(itself.code, exitRefused);
    EXPECT_EQ(itself.output, "-: FAILED open or read\n");
    EXPECT_EQ(itself.error, "cryptotool: -: standard input was read already\ncryptotool: 0 OK, 1 not readable\n");
}

TEST(CryptotoolHash, OddNamesAreEscapedAndReadBack)
{
    for (const std::string name : {"plain", "two  blanks", " *", "a\\b", "line\nend", "\r", "\\n", "-", "\xE2\x80\xAE"}) {
        const std::string text = SumLine{abcSum, name}.text();
        EXPECT_EQ(text.find('\n'), text.size() - 1) << text;
        SumLine sum;
        EXPECT_TRUE(sum.read(std::string_view(text).substr(0, text.size() - 1))) << text;
        EXPECT_EQ(sum.digits, abcSum);
        EXPECT_EQ(sum.file, name);
    }
    EXPECT_EQ((SumLine{"00", "a\nb\\"}).text(), "\\00  a\\nb\\\\\n");
    SumLine sum;
    EXPECT_TRUE(sum.read("AB *name"));
    EXPECT_EQ(sum.text(), "ab  name\n");
    EXPECT_TRUE(sum.read("\\MD5 (a\\nb) = AB"));
    EXPECT_EQ(sum.text(), "\\ab  a\\nb\n");
    for (const char* line : {"", " ", "00", "00 ", "00  ", "00 name", "0g  name", "  name", "\\00  a\\", "\\00  \\x", "\\",
                             "MD5 (a) = ", "MD5 (a) = 0g", "MD5 () = 00", "MD5 (a) =00", "MD5 (a = 00", "\\MD5 (\\x) = 00"})
        EXPECT_FALSE(sum.read(line)) << line;
}

TEST(CryptotoolHash, ChecksLinesThatNameTheAlgorithm)
{
    const TemporaryDirectory folder;
    const InFolder inFolder(folder.path());
    const std::string other = "900150983cd24fb0d6963f7d28e17f72";
    const struct {
        std::string line;
        const char* output; ///< empty for a line that is no sum here
    } cases[] = {
        {"SHA256 (a) = " + abcSum, "a: OK\n"},
        {"sha-256 (b (c) = d) = " + abcSum, "b (c) = d: OK\n"},
        {abcSum + "  g (h) = 00", "g (h) = 00: OK\n"},
        {"SHA256 (a) = " + abcSum.substr(1) + "0", "a: FAILED\n"},
        {"SHA512 (a) = " + abcSum, ""},
        {"MD5 (a) = " + other, ""},
        {"SHA256 (a) = " + other, ""},
    };
    for (const char* name : {"a", "b (c) = d", "g (h) = 00"})
        PutFile(name, "abc");
    for (const auto& test : cases) {
        SCOPED_TRACE(test.line);
        EXPECT_EQ(RunTool({"hash", "--check", "sha256", "-"}, test.line + "\n").output, test.output);
    }
}

TEST(CryptotoolHash, ChecksWithASummaryAndWithoutWhatIsIgnored)
{
    const TemporaryDirectory folder;
    const InFolder inFolder(folder.path());
    PutFile("good", "abc");
    PutFile("bad", "abd");
    std::filesystem::create_directory("dir");
    const std::string comments = "# made by hand\n\n   \r\n";
    const std::string good = abcSum + "  good\n";
    const std::string bad = abcSum + "  bad\n";
    const std::string missing = abcSum + "  missing\n";
    const struct {
        std::vector<std::string> options;
        std::string list;
        int code;
        std::string output;
        const char* summary; ///< the last line of standard error; empty for none at all
    } cases[] = {
        {{}, comments + good, exitDone, "good: OK\n", "1 OK"},
        {{},
         good + bad + missing,
         exitRefused,
         "good: OK\nbad: FAILED\nmissing: FAILED open or read\n",
         "1 OK, 1 failed, 1 missing"},
        {{},
         good + "x\n" + abcSum + "  dir\n",
         exitRefused,
         "good: OK\ndir: FAILED open or read\n",
         "1 OK, 1 not readable, 1 malformed line"},
        {{"-q"}, good, exitDone, "", ""},
        {{"--ignore-missing"}, good + missing, exitDone, "good: OK\n", "1 OK"},
        {{"--ignore-missing"}, missing, exitRefused, "", "0 OK"},
        {{"--json"},
         good + bad,
         exitRefused,
         "{\"files\":[\n{\"file\":\"good\",\"status\":\"OK\"},\n{\"file\":\"bad\",\"status\":\"failed\"}\n]}\n",
         "1 OK, 1 failed"},
        {{"--json"}, comments, exitRefused, "{\"files\":[]}\n", "0 OK"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.list + testing::PrintToString(test.options));
        std::vector<std::string> words = {"hash", "-c", "sha256", "-"};
        words.insert(words.end(), test.options.begin(), test.options.end());
        const ToolResult result = RunTool(words, test.list);
        EXPECT_EQ(result.code, test.code);
        EXPECT_EQ(result.output, test.output);
        if (*test.summary == 0)
            EXPECT_EQ(result.error, "");
        else
            EXPECT_TRUE(result.error.ends_with("cryptotool: " + std::string(test.summary) + "\n")) << result.error;
    }
    // A file that is not a list does not flood the terminal.
    std::string notAList;
    for (int line = 0; line < 1000; ++line)
        notAList += "x\n";
    const ToolResult flood = RunTool({"hash", "-c", "sha256", "-"}, good + notAList);
    EXPECT_EQ(flood.code, exitRefused);
    EXPECT_EQ(std::ranges::count(flood.error, '\n'), 11) << flood.error;
    EXPECT_TRUE(flood.error.ends_with("1 OK, 1000 malformed lines\n")) << flood.error;
    const ToolResult quiet = RunTool({"hash", "-cq", "sha256", "-"}, good + bad);
    EXPECT_EQ(quiet.output, "bad: FAILED\n");
    EXPECT_EQ(quiet.error, "");
    EXPECT_EQ(RunTool({"hash", "--ignore-missing", "sha256", "good"}).code, exitUsage);
    EXPECT_EQ(RunTool({"hash", "--json", "md4", "good", "missing"}).output,
              "{\"files\":[\n{\"file\":\"good\",\"algorithm\":\"MD4\",\"digest\":\"a448017aaf21d8525fc10ae87aa6729d\"}\n]}\n");
}

TEST(CryptotoolHash, ATerminalIsNotSteeredByNames)
{
    const TemporaryDirectory folder;
    const std::string name = folder / u8"a\u202Eb";
    PutFile(name, "abc");
    EXPECT_NE(RunTool({"hash", "sha256", name}).output.find("\xE2\x80\xAE"), std::string::npos);
    const std::string shown = RunTool({"hash", "sha256", name}, "", true).output;
    EXPECT_EQ(shown.find("\xE2\x80\xAE"), std::string::npos);
    EXPECT_TRUE(shown.ends_with("\n"));
}

TEST(CryptotoolMac, TakesItsKeyFromAFileOrATerminal)
{
    const TemporaryDirectory folder;
    const std::string key = folder / u8"key";
    const std::string message = folder / u8"message";
    PutFile(key, "Jefe");
    PutFile(message, jefeText);
    EXPECT_EQ(RunTool({"mac", "hmac-sha256", "--key-file", key, "-"}, jefeText).output, jefeMAC + "  -\n");
    const std::string sum = SumLine{jefeMAC, message}.text();
    EXPECT_EQ(RunTool({"mac", "HMAC-SHA-256", "--key-file", "-", message, message}, "Jefe").output, sum + sum);

    MemoryConsole console;
    console.input = jefeText;
    console.hiddenLines = {"Jefe"};
    EXPECT_EQ(RunCommandLine(std::vector<std::string>{"mac", "hmac-sha256", "-"}, console), exitDone);
    EXPECT_EQ(console.output, jefeMAC + "  -\n");
    EXPECT_EQ(console.prompts, "Enter the key: ");
}

// RFC 4493, 4.
TEST(CryptotoolMac, KnowsCMACByTheLengthOfItsKey)
{
    const TemporaryDirectory folder;
    const std::string key = folder / u8"key";
    PutFile(key, "2b7e151628aed2a6abf7158809cf4f3c\r\n");
    const std::vector<std::string> words = {"mac", "AES-CMAC", "--hex-key", "--key-file", key, "-"};
    EXPECT_EQ(RunTool(words, "").output, "bb1d6929e95937287fa37d129b756746  -\n");
    PutFile(key, "2b7e151628aed2a6abf7158809cf4f");
    const ToolResult result = RunTool(words, "");
    EXPECT_EQ(result.code, exitRefused);
    EXPECT_EQ(result.error, "cryptotool: " + key + ": it has 15 bytes, not 16, 24 or 32\n");
}

TEST(CryptotoolMac, RefusesWhatIsNoKey)
{
    const TemporaryDirectory folder;
    const std::string key = folder / u8"key";
    PutFile(key, std::string(65537, 'k'));
    PutFile(folder / u8"odd", "012\n");
    const struct {
        std::vector<std::string> words;
        int code;
        const char* said;
    } cases[] = {
        {{"--key-file", key, "x"}, exitRefused, "it is longer than 65536 bytes"},
        {{"--key-file", "-", "x"}, exitRefused, "it is empty"},
        {{"--key-file", folder / u8"missing", "x"}, exitRefused, "missing: "},
        {{"--key-fd", "99", "x"}, exitRefused, "no such descriptor"},
        {{"--key-fd", "4294967296", "x"}, exitRefused, "no such descriptor"},
        {{"--hex-key", "--key-file", folder / u8"odd", "x"}, exitRefused, "odd: it is not made of hexadecimal digits"},
        {{"x"}, exitRefused, "no line came from a terminal; --key-file or --key-fd provides it"},
        {{"--key-file", "-"}, exitUsage, "only one of the files can be standard input"},
        {{"--key-file", "-", "-"}, exitUsage, "only one of the files can be standard input"},
        {{"--key-fd", "0", "-"}, exitUsage, "only one of the files can be standard input"},
        {{"--key-file", key, "-", "-"}, exitUsage, "only one of the files can be standard input"},
        {{"--key-file", key, "--key-fd", "0", "x"}, exitUsage, "--key-file and --key-fd are mutually exclusive"},
    };
    for (const auto& test : cases) {
        std::vector<std::string> words = {"mac", "hmac-sha1"};
        words.insert(words.end(), test.words.begin(), test.words.end());
        const ToolResult result = RunTool(words);
        EXPECT_EQ(result.code, test.code);
        EXPECT_NE(result.error.find(test.said), std::string::npos) << result.error;
        EXPECT_EQ(result.output, "");
    }
    for (const char* name : {"sha256", "hmac-", "hmac-sha3"})
        EXPECT_EQ(RunTool({"mac", name, "--key-file", key, "x"}).code, exitUsage) << name;
}

} // namespace
