#include "tools/cryptotool/cli/invocation.h"

#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/cli/suggestion.h"
#include "tools/cryptotool/cli/usage.h"
#include "tools/cryptotool/cli/version.h"
#include "tools/text/safe_text.h"

#include <algorithm>
#include <vector>

namespace ccrypto {

namespace {

constexpr std::size_t maxReason = 1000;

bool IsHelp(std::string_view word)
{
    return word == "--help" || word == "-h";
}

bool IsVersion(std::string_view word)
{
    return word == "--version" || word == "-V";
}

/// One line: the program's name, the file, the text after a word that says what kind of line it is.
void Print(Console& console, Color color, std::string_view kind, std::string_view file, std::string_view text)
{
    const Paint& paint = console.errorPaint();
    std::string line = paint(color, "cryptotool:") + " ";
    if (!file.empty())
        line += OneLine(file) + ": ";
    if (!kind.empty())
        line += paint(color, kind) + " ";
    console.writeError(line + OneLine(text.substr(0, maxReason)) + "\n");
}

void Complain(Console& console, std::string_view file, std::string_view text)
{
    Print(console, Color::bad, {}, file, text);
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

int UnknownNoun(Console& console, const std::string& word)
{
    std::vector<std::string_view> known = {"help"};
    for (const Command* const command : Commands())
        known.push_back(command->noun);
    const char* const what = word.starts_with('-') ? "unknown option " : "unknown command ";
    return Misuse(console, what + word + DidYouMean(word, known), "cryptotool");
}

int UnknownVerb(Console& console, const Noun& noun, const std::string& word)
{
    std::vector<std::string_view> known;
    for (const Command* const command : Commands())
        if (command->noun == noun.noun)
            known.push_back(command->verb);
    const std::string name(noun.noun);
    return Misuse(console, name + " has no verb " + word + DidYouMean(word, known), "cryptotool " + name);
}

/// "cryptotool help ...": the words after it name nothing, a noun, or a command.
int ExplainWords(std::span<const std::string> words, Console& console)
{
    if (words.empty() || IsHelp(words[0]))
        return Help(console, ProgramHelp());
    const Command* const command = FindCommand(words[0], words.size() > 1 ? words[1] : std::string());
    if (command != nullptr)
        return Help(console, CommandHelp(*command));
    const Noun* const noun = FindNoun(words[0]);
    if (noun == nullptr)
        return UnknownNoun(console, words[0]);
    return words.size() == 1 || IsHelp(words[1]) ? Help(console, NounHelp(*noun)) : UnknownVerb(console, *noun, words[1]);
}

/// The words do not begin with a command: help, or what is wrong with them.
int ExplainNoun(std::span<const std::string> words, Console& console)
{
    if (words.empty())
        return Misuse(console, "no command given", "cryptotool");
    if (IsVersion(words[0]))
        return Help(console, VersionText());
    if (words[0] == "help")
        return ExplainWords(words.subspan(1), console);
    const Noun* const noun = FindNoun(words[0]);
    if (noun != nullptr && words.size() == 1)
        return Misuse(console, words[0] + " needs a verb", "cryptotool " + words[0]);
    return ExplainWords(words, console);
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
    if (!console_.isQuiet())
        Print(console_, Color::warning, "warning:", file, remark);
}

void Invocation::remark(std::string_view file, std::string_view text)
{
    if (!console_.isQuiet())
        Print(console_, Color::note, {}, file, text);
}

int RunCommandLine(std::span<const std::string> words, Console& console)
{
    console.setManner(false, "auto");
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
    console.setManner(arguments.has(quietOption.name), arguments.value(colorOption.name, "auto"));
    // The name may come from a variable that was never set: what was to go to a file does not go to standard output instead.
    if (arguments.has(outputOption.name) && arguments.value(outputOption.name).empty())
        return invocation.misuse("-o needs the name of a file");
    return command->run(invocation);
}

} // namespace ccrypto
