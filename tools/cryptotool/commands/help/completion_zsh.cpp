#include "tools/cryptotool/cli/arguments.h"
#include "tools/cryptotool/cli/usage.h"
#include "tools/cryptotool/commands/help/completion_script.h"

namespace ccrypto {

namespace {

/// Text inside of single quotes, where _arguments and _describe read "[", "]", ":" and "\" by themselves.
std::string ZshText(std::string_view text)
{
    std::string quoted;
    for (const char character : text) {
        if (character == '\'') {
            quoted += "'\\''";
            continue;
        }
        if (std::string_view("[]:\\").find(character) != std::string_view::npos)
            quoted += '\\';
        quoted += character;
    }
    return quoted;
}

std::string ZshWords(std::string_view choices)
{
    std::string words;
    for (const std::string_view word : SplitChoices(choices))
        words.append(words.empty() ? "(" : " ").append(word);
    return words + ")";
}

/// What follows an option, as _arguments has it; empty for a flag.
std::string ZshValue(const Option& option)
{
    if (option.kind == OptionKind::flag || option.kind == OptionKind::level)
        return {};
    if (TakesFile(option))
        return option.value == "DIR" ? ":directory:_files -/" : ":file:_files";
    return option.kind == OptionKind::choice ? ":value:" + ZshWords(option.value) : ":" + ZshText(option.value) + ": ";
}

std::string OptionLine(const Option& option)
{
    const std::string text = "[" + ZshText(OptionText(option)) + "]" + ZshValue(option);
    const std::string often = option.isRepeatable ? "*" : "";
    if (option.kind == OptionKind::level)
        return "        '(-1 -2 -3 -4 -5 -6 -7 -8 -9)'-{1,2,3,4,5,6,7,8,9}'" + text + "' \\\n";
    const bool takesValue = option.kind != OptionKind::flag;
    const std::string name = "--" + std::string(option.name);
    if (option.letter == 0)
        return "        '" + often + name + (takesValue ? "=" : "") + text + "' \\\n";
    const std::string letter = {'-', option.letter};
    return "        '(" + letter + " " + name + ")'{" + letter + (takesValue ? "+," : ",") + name + (takesValue ? "=" : "") + "}'" +
           text + "' \\\n";
}

std::string DescribedList(const std::string& name, const std::string& entries)
{
    return "    local -a " + name + "\n    " + name + "=(\n" + entries + "    )\n";
}

std::string Entry(std::string_view word, std::string_view summary)
{
    return "        '" + std::string(word) + ":" + ZshText(summary) + "'\n";
}

std::string ZshCase(const Command& command)
{
    std::string text = "    ('" + WordsOf(command) + "')\n        _arguments -s \\\n";
    for (const auto& some : {command.options, std::span<const Option>(commonOptions)})
        for (const Option& option : some)
            text += OptionLine(option);
    if (!command.firstOperands.empty())
        text += "        '1:" + std::string(command.operands.substr(0, command.operands.find(' '))) + ":" +
                ZshWords(command.firstOperands) + "' \\\n";
    return text + "        '*:file:_files'\n        ;;\n";
}

} // namespace

std::string ZshCompletion()
{
    std::string nouns;
    for (const Noun& noun : Nouns())
        nouns += Entry(noun.noun, noun.summary);
    for (const Command* const command : Commands())
        if (command->verb.empty())
            nouns += Entry(command->noun, command->summary);
    std::string text =
        "#compdef cryptotool\n\n_cryptotool() {\n" + DescribedList("nouns", nouns + Entry("help", "describes a command")) +
        "    if [[ $words[2] == help ]] && (( CURRENT > 2 )); then\n        shift words\n        (( CURRENT-- ))\n    fi\n"
        "    if (( CURRENT == 2 )); then\n        _describe command nouns\n        return\n    fi\n"
        "    local command=$words[2]\n    local -a verbs\n    case $command in\n";
    for (const Noun& noun : Nouns()) {
        text += "    (" + std::string(noun.noun) + ")\n        verbs=(\n";
        for (const Command* const command : Commands())
            if (command->noun == noun.noun)
                text += "    " + Entry(command->verb, command->summary);
        text += "        )\n        ;;\n";
    }
    text +=
        "    esac\n    if (( $#verbs )); then\n        if (( CURRENT == 3 )); then\n            _describe verb verbs\n"
        "            return\n        fi\n        command+=\" $words[3]\"\n        shift words\n        (( CURRENT-- ))\n    fi\n"
        "    shift words\n    (( CURRENT-- ))\n    case $command in\n";
    for (const Command* const command : Commands())
        text += ZshCase(*command);
    return text + "    esac\n}\n\n_cryptotool \"$@\"\n";
}

} // namespace ccrypto
