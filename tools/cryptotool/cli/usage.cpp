#include "tools/cryptotool/cli/usage.h"

#include <algorithm>
#include <vector>

namespace ccrypto {

namespace {

constexpr std::string_view programName = "cryptotool";
constexpr std::size_t indentWidth = 4;
constexpr std::size_t columnGap = 2;

struct Row {
    std::string left;
    std::string right;
};

/// Two columns, the right one filled to the width of the help.
std::string Columns(const std::vector<Row>& rows)
{
    std::size_t width = 0;
    for (const Row& row : rows)
        width = std::max(width, row.left.size());
    const std::size_t start = indentWidth + width + columnGap;
    std::string text;
    for (const Row& row : rows) {
        const std::string right = Filled(row.right, helpWidth - start);
        text += std::string(indentWidth, ' ') + row.left + std::string(width - row.left.size() + columnGap, ' ');
        for (std::size_t index = 0; index < right.size(); ++index) {
            text += right[index];
            if (right[index] == '\n' && index + 1 < right.size())
                text += std::string(start, ' ');
        }
    }
    return text;
}

/// Adds the line, unless it is empty, and empties it.
void AppendLine(std::string& filled, std::string& line)
{
    if (!line.empty())
        filled += line + "\n";
    line.clear();
}

} // namespace

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

std::string OptionText(const Option& option)
{
    return std::string(option.text) + (option.isRepeatable ? "; repeatable" : "");
}

std::string Filled(std::string_view text, std::size_t width)
{
    std::string filled;
    std::string line;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view words = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (words.empty() || words.front() == ' ') {
            AppendLine(filled, line);
            filled += std::string(words) + "\n";
            continue;
        }
        while (!words.empty()) {
            const std::string_view word = words.substr(0, words.find(' '));
            words.remove_prefix(std::min(word.size() + 1, words.size()));
            if (!line.empty() && line.size() + 1 + word.size() > width)
                AppendLine(filled, line);
            line.append(line.empty() ? "" : " ").append(word);
        }
    }
    AppendLine(filled, line);
    return filled;
}

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
    return "cryptotool NOUN [VERB] [OPTION...] [OPERAND...]\n\n" + Columns(rows) + "\n" +
           Filled(
               "\"cryptotool help NOUN\" and \"cryptotool help NOUN VERB\" describe one of them, as --help after it does; "
               "\"cryptotool --version\" prints version, commit and the processor instructions in use.\n\n"
               "Files may be DER, PEM, base64 or hexadecimal text, which is detected; \"-\" is standard input. The exit "
               "code is 0 on success, 1 when an input is refused, with the reason on one line, and 2 when the command "
               "line is wrong. A command that prints a verdict ends with 0 for valid or good, 1 for invalid, revoked or bad, 3 for "
               "undecided.",
               helpWidth);
}

std::string NounHelp(const Noun& noun)
{
    std::vector<Row> rows;
    for (const Command* const command : Commands()) {
        if (command->noun == noun.noun)
            rows.push_back({std::string(command->verb) + " " + std::string(command->operands), std::string(command->summary)});
    }
    const std::string name(noun.noun);
    return std::string(programName) + " " + name + ": " + std::string(noun.summary) + "\n\n" + Columns(rows) +
           "\n\"cryptotool help " + name + " VERB\" describes one of them.\n";
}

std::string CommandHelp(const Command& command)
{
    std::vector<Row> rows;
    for (const auto& options : {command.options, std::span<const Option>(commonOptions)})
        for (const Option& option : options)
            rows.push_back({OptionWords(option), OptionText(option)});
    return FullName(command) + " [OPTION...] " + std::string(command.operands) + "\n\n" + Filled(command.details, helpWidth) +
           "\n" + Columns(rows);
}

} // namespace ccrypto
