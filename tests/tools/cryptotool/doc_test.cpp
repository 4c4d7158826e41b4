#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/in_folder.h"
#include "tests/tools/cryptotool/memory_console.h"
#include "tests/tools/cryptotool/small_files.h"
#include "tools/cryptotool/cli/command.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

constexpr std::string_view indent = "    ";

std::string Document()
{
    std::string text = GetFile(std::filesystem::path(TEST_DATA_DIR "/../../../docs/cryptotool.md").lexically_normal().string());
    std::erase(text, '\r');
    return text;
}

std::string Indented(std::string_view text)
{
    std::string result;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = text.find('\n', start) + 1;
        const std::string_view line = text.substr(start, end - start);
        result += line == "\n" ? std::string(line) : std::string(indent) + std::string(line);
        start = end;
    }
    return result;
}

/// The words of a line, single quotes around those with blanks or special characters.
std::vector<std::string> WordsOf(std::string_view line)
{
    std::vector<std::string> words(1);
    bool isQuoted = false;
    for (const char character : line) {
        if (character == '\'')
            isQuoted = !isQuoted;
        else if (character == ' ' && !isQuoted)
            words.emplace_back();
        else
            words.back() += character;
    }
    return words;
}

struct Example {
    std::string command;
    std::string output;
};

/// Every block of lines that begins with "    $ ".
std::vector<Example> Examples(const std::string& document)
{
    std::vector<Example> examples;
    std::istringstream lines(document);
    bool isOpen = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("    $ ")) {
            examples.push_back({line.substr(6), ""});
            isOpen = true;
        } else if (isOpen && line.starts_with(indent)) {
            examples.back().output += line.substr(indent.size()) + "\n";
        } else {
            isOpen = false;
        }
    }
    return examples;
}

TEST(CryptotoolDocument, HoldsEveryHelpText)
{
    const std::string document = Document();
    std::vector<std::vector<std::string>> calls = {{"--help"}};
    for (const Noun& noun : Nouns())
        calls.push_back({std::string(noun.noun), "--help"});
    for (const Command* const command : Commands()) {
        calls.push_back({std::string(command->noun), std::string(command->verb), "--help"});
        std::erase(calls.back(), "");
        const std::string title = std::string(command->noun) + (command->verb.empty() ? "" : " ") + std::string(command->verb);
        EXPECT_NE(document.find("# " + title + "\n"), std::string::npos) << title;
    }
    for (const auto& words : calls) {
        const ToolResult help = RunTool(words);
        EXPECT_EQ(help.code, exitDone);
        EXPECT_NE(document.find("\n\n" + Indented(help.output) + "\n"), std::string::npos) << help.output;
    }
}

TEST(CryptotoolDocument, ExamplesAreTrue)
{
    const std::vector<Example> examples = Examples(Document());
    ASSERT_GT(examples.size(), 15U);
    const TemporaryDirectory folder;
    const InFolder inFolder(folder.path());
    for (const Example& example : examples) {
        SCOPED_TRACE(example.command);
        std::vector<std::string> words = WordsOf(example.command);
        const std::string program = words[0];
        words.erase(words.begin());
        if (program == "cat") {
            PutFile(words[0], example.output);
            continue;
        }
        EXPECT_EQ(program, "cryptotool");
        const ToolResult result = RunTool(words);
        EXPECT_EQ(result.output + result.error, example.output);
    }
}

} // namespace
