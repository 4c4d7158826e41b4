#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/memory_console.h"
#include "tests/tools/cryptotool/small_files.h"
#include "tools/cryptotool/cli/command.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <sstream>

using namespace ccrypto;

namespace {

/// \return the exit code of a shell command in the directory.
int Shell(const TemporaryDirectory& folder, const std::string& command)
{
    const int status = std::system(("cd '" + folder.path().string() + "' && { " + command + "; } >out 2>&1").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool HasProgram(const TemporaryDirectory& folder, const std::string& name)
{
    return Shell(folder, "command -v " + name) == 0;
}

TEST(CryptotoolCompletion, BashCompletesWordsOptionsValuesAndFiles)
{
    const TemporaryDirectory folder;
    PutFile(folder / u8"script", RunTool({"completion", "bash"}).output);
    ASSERT_EQ(Shell(folder, "bash -n script"), 0) << GetFile(folder / u8"out");
    PutFile(folder / u8"one file.der", "");
    const struct {
        const char* words; ///< as an array of bash, the last one incomplete
        const char* replies;
    } cases[] = {
        {"as", "asn1"},
        {"''", "asn1 cipher key cert crl csr ocsp cms p12 oid gzip gunzip hash mac random speed completion manpage help --help "
               "--version"},
        {"key s", "show sign"},
        {"key ''", "gen show public convert sign verify encrypt decrypt agree --help"},
        {"help cip", "cipher"},
        {"help key v", "verify"},
        {"help key verify ''", ""},
        {"asn1 show --le", "--lenient"},
        {"asn1 show --as j", "json"},
        {"asn1 show --as = x", "xml"},
        {"asn1 show --as =", "template json xml der outline"},
        {"asn1 show --at ''", ""},
        {"asn1 show on", "one file.der"},
        {"asn1 show -o one\\ ", "one file.der"},
        {"asn1 show --output = one", "one file.der"},
        {"hash sha2", "sha224 sha256"},
        {"hash sha256 one\\ f", "one file.der"},
        {"hash --q", "--quiet"},
        {"key gen brainpoolP25", "brainpoolP256r1"},
        {"gzip -", "-1 -2 -3 -4 -5 -6 -7 -8 -9 --stdout --output --quiet --color --help"},
        {"completion z", "zsh"},
        {"nonsense --h", ""},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.words);
        PutFile(folder / u8"call", ". ./script\nCOMP_WORDS=(cryptotool " + std::string(test.words) +
                                       ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_cryptotool\nprintf %s \"${COMPREPLY[*]}\"\n");
        Shell(folder, "bash call");
        EXPECT_EQ(GetFile(folder / u8"out"), test.replies);
    }
    EXPECT_EQ(RunTool({"completion", "fish"}).code, exitUsage);
}

TEST(CryptotoolCompletion, ZshReadsItsScript)
{
    const TemporaryDirectory folder;
    const std::string script = RunTool({"completion", "zsh"}).output;
    EXPECT_TRUE(script.starts_with("#compdef cryptotool\n"));
    // A quote ends the string that the text stands in, and a colon the text.
    EXPECT_NE(script.find("the initialisation vector for --raw; '\\'''\\'' where"), std::string::npos);
    EXPECT_NE(script.find("[with --pss\\: bytes of salt"), std::string::npos);
    EXPECT_NE(script.find("'--as=[how to print it (outline); der is binary]:value:(template json xml der outline)' \\\n"),
              std::string::npos);
    for (const Noun& noun : Nouns())
        EXPECT_NE(script.find("'" + std::string(noun.noun) + ":" + std::string(noun.summary.substr(0, 5))), std::string::npos);
    for (const Command* const command : Commands()) {
        const std::string words = std::string(command->noun) + (command->verb.empty() ? "" : " ") + std::string(command->verb);
        EXPECT_NE(script.find("    ('" + words + "')\n        _arguments"), std::string::npos) << words;
    }
    PutFile(folder / u8"script", script);
    if (!HasProgram(folder, "zsh"))
        GTEST_SKIP() << "there is no zsh";
    EXPECT_EQ(Shell(folder, "zsh -n script"), 0) << GetFile(folder / u8"out");
}

TEST(CryptotoolManual, EveryCommandHasAPageWithoutWarnings)
{
    const TemporaryDirectory folder;
    ASSERT_EQ(RunTool({"manpage", "--directory", folder.path().string()}).code, exitDone);
    const std::string program = GetFile(folder / u8"cryptotool.1");
    EXPECT_EQ(program, RunTool({"manpage"}).output);
    EXPECT_EQ(GetFile(folder / u8"cryptotool-asn1-show.1"), RunTool({"manpage", "asn1", "show"}).output);
    const bool hasGroff = HasProgram(folder, "groff");
    const auto letters = [](std::string text) {
        std::erase_if(text, [](char character) { return character == ' ' || character == '\n' || character == '-'; });
        return text;
    };
    for (const Command* const command : Commands()) {
        const std::string verb(command->verb);
        const std::string page = "cryptotool-" + std::string(command->noun) + (verb.empty() ? "" : "-") + verb + ".1";
        SCOPED_TRACE(page);
        EXPECT_TRUE(std::filesystem::exists(folder.path() / page));
        if (!hasGroff)
            continue;
        ASSERT_EQ(Shell(folder, "groff -man -ww -Tascii -P-c -P-b -P-u " + page + " 2>warnings"), 0);
        EXPECT_EQ(GetFile(folder / u8"warnings"), "");
        // Every word of the help is there: no line was taken for a request.
        const std::string shown = letters(GetFile(folder / u8"out"));
        std::istringstream words{std::string(command->details)};
        for (std::string word; words >> word;)
            EXPECT_NE(shown.find(letters(word)), std::string::npos) << word;
        for (const Option& option : command->options) {
            const std::string name(option.kind == OptionKind::level ? "1 ... 9" : option.name);
            EXPECT_NE(shown.find(letters(name)), std::string::npos) << name;
        }
    }
    const std::vector<std::string> wrong[] = {{"manpage", "nonsense"},
                                              {"manpage", "key"},
                                              {"manpage", "key", "gen", "more"},
                                              {"manpage", "key", "gen", "--directory", "."}};
    for (const auto& words : wrong)
        EXPECT_EQ(RunTool(words).code, exitUsage);
    EXPECT_EQ(RunTool({"manpage", "--directory", folder / u8"missing"}).code, exitRefused);
}

} // namespace
