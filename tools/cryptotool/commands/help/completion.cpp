#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/commands/help/completion_script.h"
#include "tools/cryptotool/output/output.h"

namespace ccrypto {

namespace {

constexpr std::string_view completionDetails =
    R"(Prints a script by which the shell SHELL completes commands, options and file names. An installation has both scripts in place; for
one shell alone, read it there: source <(cryptotool completion bash)
)";
constexpr std::string_view shellNames = "bash|zsh";

constexpr Option completionOptions[] = {outputOption};

int PrintCompletion(Invocation& invocation)
{
    const std::string shell = invocation.arguments().operand(0);
    if (shell != "bash" && shell != "zsh")
        return invocation.misuse("SHELL must be one of bash|zsh, not " + shell);
    Output output(invocation.console(), invocation.arguments().value(outputOption.name), Output::Content::text);
    const std::string script = shell == "bash" ? BashCompletion() : ZshCompletion();
    return FinishOutput(invocation, output, output.open() && output.write(script));
}

} // namespace

std::string WordsOf(const Command& command)
{
    return std::string(command.noun) + (command.verb.empty() ? "" : " ") + std::string(command.verb);
}

std::vector<std::string_view> FirstWords()
{
    std::vector<std::string_view> words;
    for (const Noun& noun : Nouns())
        words.push_back(noun.noun);
    for (const Command* const command : Commands())
        if (command->verb.empty())
            words.push_back(command->noun);
    return words;
}

std::vector<std::string_view> VerbsOf(std::string_view noun)
{
    std::vector<std::string_view> verbs;
    for (const Command* const command : Commands())
        if (command->noun == noun)
            verbs.push_back(command->verb);
    return verbs;
}

bool TakesFile(const Option& option)
{
    return option.kind == OptionKind::text && (option.value == "FILE" || option.value == "DIR");
}

const Command completionCommand = {
    "completion",    "",        "prints a completion script for a shell", "SHELL", 1, 1, completionDetails, completionOptions,
    PrintCompletion, shellNames};

} // namespace ccrypto
