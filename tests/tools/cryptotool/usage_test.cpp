#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/memory_console.h"
#include "tests/tools/cryptotool/small_files.h"
#include "tools/cryptotool/cli/command.h"
#include "tools/cryptotool/cli/progress.h"
#include "tools/cryptotool/cli/usage.h"

#include <gtest/gtest.h>

#include <regex>
#include <sstream>

using namespace ccrypto;

namespace {

TEST(CryptotoolUsage, WrongWordsGetOneLineAndAPointer)
{
    const std::vector<std::string> cases[] = {
        {},
        {"help", "nonsense"},
        {"help", "asn1", "nonsense"},
        {"gzip", "--color", "green"},
        {"nonsense"},
        {"asn1"},
        {"asn1", "nonsense"},
        {"asn1", "show"},
        {"asn1", "show", "a", "b"},
        {"asn1", "show", "--as", "pdf", "a"},
        {"asn1", "show", "--as"},
        {"asn1", "show", "--inside=x", "a"},
        {"asn1", "show", "--depth", "0", "a"},
        {"asn1", "show", "--depth", "99999999999999999999", "a"},
        {"asn1", "show", "--json", "--as", "xml", "a"},
        {"asn1", "show", "--level", "a"},
        {"asn1", "build", "a", "no-value"},
        {"asn1", "build", "a", "=x"},
        {"asn1", "build", "-", "v=@-"},
        {"asn1", "build", "a", "v=@-", "w=der:@-"},
        {"asn1", "build", "--pem", "a--b", "a"},
        {"asn1", "match", "-", "-"},
        {"oid"},
        {"gzip", "-0", "a"},
        {"gzip", "-c", "-o", "a", "b"},
        {"gunzip", "--max-ratio", "4294967296"},
        {"oid", "--\n\x1b"},
        {"random", "10T"},
        {"hash", "sha256", "-o", "", "-"},
        {"cert", "verify", "a", "b"},
        {"cert", "verify", "--at", "2026-11-23 12:00:00Z", "a"},
        {"cert", "verify", "--at", "2026-02-29T12:00:00Z", "a"},
        {"cert", "verify", "--policy", "nonsense", "a"},
        {"cert", "verify", "--policy", "1.2.3", "--policy", "1.2..3", "a"},
        {"cert", "verify", "--eku", "nonsense", "a"},
        {"cert", "verify", "--key-usage", "nonsense", "a"},
        {"cert", "verify", "--host", "", "a"},
        {"cert", "verify", "--status", "some", "a"},
        {"cert", "verify", "--max-depth", "-1", "a"},
        {"cert", "verify", "--crl", "-", "--trust", "-", "a"},
        {"cert", "verify", "--ocsp", "-", "-"},
        {"crl", "find", "a"},
        {"crl", "find", "a", "xyz"},
        {"crl", "find", "a", "01", "--cert", "b"},
    };
    for (const auto& words : cases) {
        const ToolResult result = RunTool(words);
        SCOPED_TRACE(result.error);
        EXPECT_EQ(result.code, exitUsage);
        EXPECT_EQ(result.output, "");
        EXPECT_TRUE(result.error.starts_with("cryptotool: ") && result.error.ends_with("--help)\n"));
        EXPECT_EQ(result.error.find('\n'), result.error.size() - 1);
    }
}

TEST(CryptotoolUsage, ALongWordDoesNotFillTheTerminal)
{
    EXPECT_LT(RunTool({std::string(100000, 'x')}).error.size(), 1100U);
}

TEST(CryptotoolUsage, OptionsMayBeWrittenInEveryUsualWay)
{
    const TemporaryDirectory folder;
    const std::string file = folder / u8"-out";
    PutFile(file, "data");
    const std::string packed = RunTool({"gzip", "-9", file}).output;
    EXPECT_NE(packed, "");
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"gzip", "-9c", file}, {"gzip", file, "-c", "-9"}, {"gzip", "-1", "-9", "--stdout", "--", file}})
        EXPECT_EQ(RunTool(words).output, packed);
    const std::string out = folder / u8"other";
    for (const std::vector<std::string>& words : {std::vector<std::string>{"gzip", "-9o", out, file},
                                                  {"gzip", "-9o" + out, file},
                                                  {"gzip", "-9", "--output=" + out, file}}) {
        EXPECT_EQ(RunTool(words).error, "");
        EXPECT_EQ(GetFile(out), packed);
        std::filesystem::remove(folder.path() / "other");
    }
}

TEST(CryptotoolUsage, AMistypedWordIsAnsweredWithTheNearestOne)
{
    const struct {
        std::vector<std::string> words;
        const char* said; ///< after the word
    } cases[] = {
        {{"hsah", "sha256", "-"}, "unknown command hsah; did you mean hash? (see cryptotool --help)"},
        {{"Gzip"}, "unknown command Gzip; did you mean gzip? (see cryptotool --help)"},
        {{"--json"}, "unknown option --json (see cryptotool --help)"},
        {{"manpage", "nonsense"}, "unknown command nonsense (see cryptotool manpage --help)"},
        {{"mxd"}, "unknown command mxd (see cryptotool --help)"},
        {{"telephone"}, "unknown command telephone (see cryptotool --help)"},
        {{"key", "shwo"}, "key has no verb shwo; did you mean show? (see cryptotool key --help)"},
        {{"help", "key", "sgin"}, "key has no verb sgin; did you mean sign? (see cryptotool key --help)"},
        {{"asn1", "show", "--lenyent", "-"}, "unknown option --lenyent; did you mean --lenient? (see cryptotool asn1 show --help)"},
        {{"gzip", "--quite"}, "unknown option --quite; did you mean --quiet? (see cryptotool gzip --help)"},
        {{"gzip", "--x"}, "unknown option --x (see cryptotool gzip --help)"},
        {{"gzip", "-z"}, "unknown option -z (see cryptotool gzip --help)"},
        {{"asn1", "show", "--as", "jason", "-"},
         "--as must be one of template|json|xml|der|outline, not jason; did you mean json? (see cryptotool asn1 show --help)"},
        {{"hash", "sha265", "-"}, "unknown hash function sha265; did you mean sha256? (see cryptotool hash --help)"},
        {{"key", "gen", "P-265"}, "unknown algorithm P-265; did you mean P-256? (see cryptotool key gen --help)"},
    };
    for (const auto& test : cases)
        EXPECT_EQ(RunTool(test.words).error, "cryptotool: " + std::string(test.said) + "\n");
}

TEST(CryptotoolUsage, HelpHasThreeWaysToBeAskedAndAWidth)
{
    std::vector<std::vector<std::string>> names = {{}};
    for (const Noun& noun : Nouns())
        names.push_back({std::string(noun.noun)});
    for (const Command* const command : Commands()) {
        names.push_back({std::string(command->noun), std::string(command->verb)});
        std::erase(names.back(), "");
    }
    for (const std::vector<std::string>& name : names) {
        std::vector<std::string> before = {"help"};
        before.insert(before.end(), name.begin(), name.end());
        const std::string help = RunTool(before).output;
        for (const char* const option : {"--help", "-h"}) {
            std::vector<std::string> after = name;
            after.emplace_back(option);
            EXPECT_EQ(RunTool(after).output, help);
        }
        std::string title = "cryptotool";
        for (const std::string& word : name)
            title += " " + word;
        EXPECT_TRUE(help.starts_with(title)) << help;
        std::istringstream lines(help);
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(line.size(), helpWidth) << line;
    }
}

TEST(CryptotoolUsage, TextIsFilledAndIndentedLinesStay)
{
    EXPECT_EQ(ccrypto::Filled("one two three\nfour", 9), "one two\nthree\nfour\n");
    EXPECT_EQ(ccrypto::Filled("one two", 7), "one two\n");
    EXPECT_EQ(ccrypto::Filled("one two", 6), "one\ntwo\n");
    EXPECT_EQ(ccrypto::Filled("incomprehensible word", 4), "incomprehensible\nword\n");
    EXPECT_EQ(ccrypto::Filled("one\n  a   table\ntwo\n\nthree", 80), "one\n  a   table\ntwo\n\nthree\n");
}

TEST(CryptotoolUsage, TheVersionSaysWhichSourcesAndWhichProcessor)
{
    const std::string version = RunTool({"--version"}).output;
    EXPECT_EQ(RunTool({"-V"}).output, version);
    // GoogleTest's own expressions know no brackets on Windows.
    EXPECT_TRUE(
        std::regex_match(version, std::regex("cryptotool [0-9.]+\ncommit ([0-9a-f]+(-dirty)?|unknown)\nprocessor [a-z0-9, ]+\n")))
        << version;
}

/// A console whose time goes on a quarter of a second each time that it is looked at.
class TerminalOfTime : public MemoryConsole {
public:
    TerminalOfTime() { isErrorTerminal = true; }
    Clock::time_point now() const override { return time_ += std::chrono::milliseconds(250); }

private:
    mutable Clock::time_point time_;
};

TEST(CryptotoolProgress, IsShownForLongWorkAndTakenAway)
{
    const TemporaryDirectory folder;
    const std::string file = folder / u8"file";
    const std::string packed = folder / u8"packed";
    const std::string key = folder / u8"key";
    std::string data;
    while (data.size() < (1U << 20))
        data += std::to_string(data.size() * 7919) + " ";
    PutFile(file, data);
    PutFile(key, std::string(32, 'k'));
    ASSERT_EQ(RunTool({"gzip", file, "-o", packed}).code, exitDone);
    const struct {
        std::vector<std::string> words;
        const char* shown;
    } cases[] = {
        {{"hash", "md5", file}, "\r[#"},
        {{"hash", "md5", "-"}, "\r0 MiB"},
        {{"mac", "hmac-md5", "--key-file", key, file}, "\r[#"},
        {{"gzip", file}, "\r[#"},
        {{"gunzip", packed}, "\r[#"},
        {{"random", "1M"}, "\r[#"},
        {{"cipher", "enc", "--key-file", key, file}, "\r[#"},
        {{"key", "gen", "rsa", "--bits", "1024"}, "\rlooking for primes: "},
        {{"speed", "md4", "md5"}, "\r2 of "},
    };
    const auto run = [](std::vector<std::string> words, bool isErrorTerminal, const char* more) {
        TerminalOfTime console;
        console.isErrorTerminal = isErrorTerminal;
        console.input = std::string(1U << 18, 'x');
        if (*more != 0)
            words.emplace_back(more);
        RunCommandLine(words, console);
        return console.error;
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(testing::PrintToString(test.words));
        const std::string shown = run(test.words, true, "");
        EXPECT_NE(shown.find(test.shown), std::string::npos) << shown;
        EXPECT_TRUE(shown.ends_with(" \r")) << shown;
        EXPECT_EQ(run(test.words, false, ""), "");
        EXPECT_EQ(run(test.words, true, "--quiet"), "");
    }
}

TEST(CryptotoolColor, IsForTerminalsAndForWhoAsks)
{
    const struct {
        const char* when;
        bool isOutputTerminal, isErrorTerminal;
        bool inOutput, inErrors;
    } cases[] = {
        {"auto", false, false, false, false}, {"auto", true, false, true, false},   {"auto", false, true, false, true},
        {"never", true, true, false, false},  {"always", false, false, true, true},
    };
    const std::string sum = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad  -\n";
    for (const auto& test : cases) {
        SCOPED_TRACE(std::string(test.when) + (test.isOutputTerminal ? " output" : "") + (test.isErrorTerminal ? " error" : ""));
        MemoryConsole console;
        console.isTerminal = test.isOutputTerminal;
        console.isErrorTerminal = test.isErrorTerminal;
        console.input = "abc";
        const TemporaryDirectory folder;
        const std::string list = folder / u8"list";
        PutFile(list, sum);
        EXPECT_EQ(RunCommandLine(std::vector<std::string>{"hash", "-c", "sha256", "--color", test.when, list}, console), exitDone);
        EXPECT_EQ(console.output, test.inOutput ? "-: \x1b[32mOK\x1b[0m\n" : "-: OK\n");
        EXPECT_EQ(console.error, test.inErrors ? "\x1b[90mcryptotool:\x1b[0m 1 OK\n" : "cryptotool: 1 OK\n");
    }
    // Neither a terminal that does not take them nor a file gets the sequences.
    MemoryConsole plain;
    plain.isTerminal = true;
    plain.isErrorTerminal = true;
    plain.takesColor = false;
    RunCommandLine(std::vector<std::string>{"asn1", "show", "-"}, plain);
    EXPECT_EQ(plain.error.find('\x1b'), std::string::npos);
    const TemporaryDirectory folder;
    const std::string out = folder / u8"out";
    EXPECT_EQ(RunTool({"asn1", "show", "--color", "always", "-", "-o", out}, "\x05\x01").code, exitRefused);
    EXPECT_EQ(RunTool({"asn1", "show", "--color", "always", "-", "-o", out}, std::string("\x05\0", 2)).code, exitDone);
    EXPECT_EQ(GetFile(out).find('\x1b'), std::string::npos);
}

} // namespace
