#include "tools/cryptotool/cli/usage.h"

#include <algorithm>
#include <vector>

namespace ccrypto {

namespace {

constexpr std::string_view programName = "cryptotool";

struct Row {
    std::string left;
    std::string right;
};

/// Two columns; the lines of the right one stand below each other.
std::string Columns(const std::vector<Row>& rows)
{
    std::size_t width = 0;
    for (const Row& row : rows)
        width = std::max(width, row.left.size());
    std::string text;
    for (const Row& row : rows) {
        text += "    " + row.left + std::string(width - row.left.size() + 2, ' ');
        for (const char character : row.right) {
            text += character;
            if (character == '\n')
                text += std::string(width + 6, ' ');
        }
        text += '\n';
    }
    return text;
}

std::string OptionWords(const Option& option)
{
    if (option.kind == OptionKind::level)
        return "-1 ... -9";
    std::string words;
    if (option.letter != 0)
        words = {'-', option.letter, ',', ' '};
    words += "--" + std::string(option.name);
    return option.value.empty() ? words : words + " " + std::string(option.value);
}

} // namespace

std::string FullName(const Command& command)
{
    std::string name = std::string(programName) + " " + std::string(command.noun);
    return command.verb.empty() ? name : name + " " + std::string(command.verb);
}

std::string ProgramHelp()
{
    std::vector<Row> rows;
    for (const Noun& noun : Nouns())
        rows.push_back({std::string(noun.noun), std::string(noun.summary)});
    for (const Command* const command : Commands()) {
        if (command->verb.empty())
            rows.push_back({std::string(command->noun), std::string(command->summary)});
    }
    return "cryptotool NOUN [VERB] [OPTION...] [OPERAND...]\n\n" + Columns(rows) +
           "\ncryptotool NOUN --help and cryptotool NOUN VERB --help tell more; cryptotool --version tells which one this is.\n\n"
           "Files hold DER, PEM or base64, which is found out; \"-\" is standard input. Ends with 0 when all is done, with 1 and "
           "the\n"
           "reason on one line when an input is refused, with 2 when the command line is not understood.\n";
}

std::string NounHelp(const Noun& noun)
{
    std::vector<Row> rows;
    for (const Command* const command : Commands()) {
        if (command->noun == noun.noun)
            rows.push_back({std::string(command->verb) + " " + std::string(command->operands), std::string(command->summary)});
    }
    return std::string(programName) + " " + std::string(noun.noun) + ": " + std::string(noun.summary) + "\n\n" + Columns(rows) +
           "\ncryptotool " + std::string(noun.noun) + " VERB --help tells more.\n";
}

std::string CommandHelp(const Command& command)
{
    std::vector<Row> rows;
    for (const Option& option : command.options)
        rows.push_back({OptionWords(option), std::string(option.text)});
    rows.push_back({"-h, --help", "print this"});
    return FullName(command) + " [OPTION...] " + std::string(command.operands) + "\n\n" + std::string(command.details) + "\n" +
           Columns(rows);
}

} // namespace ccrypto
