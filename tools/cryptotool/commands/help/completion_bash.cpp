#include "tools/cryptotool/cli/arguments.h"
#include "tools/cryptotool/commands/help/completion_script.h"

namespace ccrypto {

namespace {

constexpr std::string_view bashStart = R"(# bash completion for cryptotool

_cryptotool()
{
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    # "--as=json" comes as three words.
    if [[ $previous == = ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    elif [[ $current == = ]]; then
        current=
    fi
    COMPREPLY=()
)";

constexpr std::string_view bashEnd = R"(    if [[ $values == FILE || ($values == '' && $current != -*) ]]; then
        # Names may hold blanks.
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    elif [[ $values == '' ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
    elif [[ $values != TEXT ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$values" -- "$current")
    fi
}

complete -F _cryptotool cryptotool
)";

std::string Joined(const std::vector<std::string_view>& words)
{
    std::string text;
    for (const std::string_view word : words)
        text.append(text.empty() ? "" : " ").append(word);
    return text;
}

/// A line of a case: when `pattern`, what `values` becomes.
std::string ValuesLine(const std::string& pattern, const std::string& values)
{
    return "        " + pattern + ") values='" + values + "' ;;\n";
}

/// What follows the option: "FILE", "TEXT" for what nothing is known of, or the words that it may be.
std::string ValuesOf(const Option& option)
{
    if (TakesFile(option))
        return "FILE";
    return option.kind == OptionKind::choice ? Joined(SplitChoices(option.value)) : "TEXT";
}

std::string PatternOf(const Option& option)
{
    const std::string name = "--" + std::string(option.name);
    return option.letter == 0 ? name : std::string{'-', option.letter, '|'} + name;
}

/// The case of a command: its options, and the values of those that take one.
std::string BashCase(const Command& command)
{
    std::string options;
    std::string lines;
    for (const auto& some : {command.options, std::span<const Option>(commonOptions)}) {
        for (const Option& option : some) {
            if (option.kind == OptionKind::level) {
                options += "-1 -2 -3 -4 -5 -6 -7 -8 -9 ";
                continue;
            }
            options += "--" + std::string(option.name) + " ";
            if (option.kind != OptionKind::flag)
                lines += ValuesLine(PatternOf(option), ValuesOf(option));
        }
    }
    options.pop_back();
    std::string text = "    '" + WordsOf(command) + "')\n        options='" + options + "'\n        case $previous in\n" + lines +
                       "        esac\n";
    if (!command.firstOperands.empty())
        text += "        if ((COMP_CWORD == first)) && [[ $current != -* ]]; then\n            values='" +
                Joined(SplitChoices(command.firstOperands)) + "'\n        fi\n";
    return text + "        ;;\n";
}

} // namespace

std::string BashCompletion()
{
    const std::string firstWords = Joined(FirstWords());
    std::string text(bashStart);
    text += "    local command=${COMP_WORDS[1]} first=2 options= values=\n    if [[ $command == help && COMP_CWORD -gt 1 ]]; then\n"
            "        command=${COMP_WORDS[2]} first=3\n    fi\n    if ((COMP_CWORD == first - 1)); then\n"
            "        mapfile -t COMPREPLY < <(compgen -W '" +
            firstWords + " help --help --version' -- \"$current\")\n        return\n    fi\n    case $command in\n";
    for (const Noun& noun : Nouns())
        text += "    " + std::string(noun.noun) + ") values='" + Joined(VerbsOf(noun.noun)) + "' ;;\n";
    text += "    esac\n    if [[ $values != '' ]]; then\n        if ((COMP_CWORD == first)); then\n"
            "            mapfile -t COMPREPLY < <(compgen -W \"$values --help\" -- \"$current\")\n            return\n        fi\n"
            "        command+=\" ${COMP_WORDS[first]}\"\n        first=$((first + 1)) values=\n    fi\n"
            "    [[ ${COMP_WORDS[1]} != help ]] || return\n    case $command in\n";
    for (const Command* const command : Commands())
        text += BashCase(*command);
    return text + "    esac\n" + std::string(bashEnd);
}

} // namespace ccrypto
