#include "tools/cryptotool/cli/invocation.h"

#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/cli/safe_text.h"
#include "tools/cryptotool/cli/usage.h"

#include <algorithm>

namespace ccrypto {

namespace {

constexpr std::size_t longestReason = 1000;

bool IsHelp(std::string_view word)
{
    return word == "--help" || word == "-h";
}

void Complain(Console& console, std::string_view file, std::string_view text)
{
    const std::string name = file.empty() ? std::string() : OneLine(file) + ": ";
    console.writeError("cryptotool: " + name + OneLine(text.substr(0, longestReason)) + "\n");
}

int Misuse(Console& console, std::string_view problem, const std::string& whatToAsk)
{
    Complain(console, {}, std::string(problem) + " (see " + whatToAsk + " --help)");
    return exitUsage;
}

int Help(Console& console, const std::string& text)
{
    if (console.writeOutput({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}))
        return exitDone;
    Complain(console, "-", SystemReason());
    return exitRefused;
}

const Command* FindCommand(std::string_view noun, std::string_view verb)
{
    const auto commands = Commands();
    const auto found = std::ranges::find_if(commands, [=](const Command* command) {
        return command->noun == noun && (command->verb.empty() || command->verb == verb);
    });
    return found != commands.end() ? *found : nullptr;
}

const Noun* FindNoun(std::string_view noun)
{
    const auto nouns = Nouns();
    const auto found = std::ranges::find(nouns, noun, &Noun::noun);
    return found != nouns.end() ? &*found : nullptr;
}

/// The words name no command: help, or what is wrong with them.
int ExplainNoun(std::span<const std::string> words, Console& console)
{
    const Noun* const noun = words.empty() ? nullptr : FindNoun(words[0]);
    if (noun == nullptr && !words.empty() && IsHelp(words[0]))
        return Help(console, ProgramHelp());
    if (noun == nullptr && !words.empty() && words[0] == "--version")
        return Help(console, "cryptotool " CRYPTOTOOL_VERSION "\n");
    if (noun == nullptr)
        return Misuse(console, words.empty() ? "no command given" : "there is no command " + words[0], "cryptotool");
    if (words.size() > 1 && IsHelp(words[1]))
        return Help(console, NounHelp(*noun));
    const std::string name(noun->noun);
    return Misuse(console, words.size() == 1 ? name + " needs a verb" : name + " has no verb " + words[1], "cryptotool " + name);
}

} // namespace

int Invocation::refuse(std::string_view file, std::string_view reason)
{
    Complain(console_, file, reason);
    return exitRefused;
}

int Invocation::misuse(std::string_view problem)
{
    return Misuse(console_, problem, FullName(command_));
}

void Invocation::warn(std::string_view file, std::string_view remark)
{
    Complain(console_, file, "warning: " + std::string(remark));
}

int RunCommandLine(std::span<const std::string> words, Console& console)
{
    const Command* const command = words.empty() ? nullptr : FindCommand(words[0], words.size() > 1 ? words[1] : std::string());
    if (command == nullptr)
        return ExplainNoun(words, console);
    const std::span<const std::string> rest = words.subspan(command->verb.empty() ? 1 : 2);
    const auto end = std::ranges::find(rest, "--");
    if (std::any_of(rest.begin(), end, IsHelp))
        return Help(console, CommandHelp(*command));
    Arguments arguments;
    std::string problem;
    Invocation invocation(*command, arguments, console);
    if (!arguments.read(*command, rest, problem))
        return invocation.misuse(problem);
    // Of a variable that was never set: what was to go into a file does not go to standard output instead.
    if (arguments.has(outputOption.name) && arguments.value(outputOption.name).empty())
        return invocation.misuse("-o needs the name of a file");
    return command->run(invocation);
}

} // namespace ccrypto
