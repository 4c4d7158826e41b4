#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/cli/usage.h"
#include "tools/cryptotool/output/output.h"

#include <algorithm>

namespace ccrypto {

namespace {

constexpr std::string_view manualDetails =
    R"(Prints the manual page of a command (asn1 show), or without one that of the program, in the language of man(7).
)";

constexpr Option directoryOption = {OptionKind::text, 0, "directory", "DIR",
                                    "write all manual pages to files in DIR, which exists"};
constexpr Option manualOptions[] = {directoryOption, outputOption};

/// Text as roff prints it unchanged.
std::string Roff(std::string_view text)
{
    std::string escaped;
    for (const char character : text) {
        const bool isLineStart = escaped.empty() || escaped.back() == '\n';
        if (isLineStart && (character == '.' || character == '\''))
            escaped += "\\&";
        if (character == '\\')
            escaped += "\\e";
        else if (character == '-')
            escaped += "\\-";
        else
            escaped += character;
    }
    return escaped;
}

std::string Bold(std::string_view text)
{
    return "\\fB" + Roff(text) + "\\fR";
}

/// "cryptotool-asn1-show", also the name of the page's file.
std::string PageName(const Command* command)
{
    std::string name = command != nullptr ? FullName(*command) : "cryptotool";
    std::ranges::replace(name, ' ', '-');
    return name;
}

std::string Head(const std::string& page, std::string_view summary)
{
    std::string title;
    for (const char character : page)
        title += static_cast<char>(character >= 'a' && character <= 'z' ? character - 'a' + 'A' : character);
    return ".TH " + title + " 1 \"\" \"cryptotool " CRYPTOTOOL_VERSION "\" \"User Commands\"\n.SH NAME\n" + Roff(page) + " \\- " +
           Roff(summary) + "\n.SH SYNOPSIS\n";
}

/// Paragraphs; lines that begin with blanks are a table and stay unchanged.
std::string Paragraphs(std::string_view text)
{
    std::string page;
    bool isTable = false;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.starts_with(' ') != isTable) {
            isTable = !isTable;
            page += isTable ? ".nf\n" : ".fi\n";
        }
        page += line.empty() ? ".PP\n" : Roff(line) + "\n";
    }
    return page + (isTable ? ".fi\n" : "");
}

std::string OptionItems(std::span<const Option> options)
{
    std::string items;
    for (const Option& option : options) {
        items += ".TP\n";
        if (option.kind == OptionKind::level)
            items += Bold("-1") + " ... " + Bold("-9");
        else
            items +=
                (option.letter != 0 ? Bold(std::string{'-', option.letter}) + ", " : "") + Bold("--" + std::string(option.name));
        if (!option.value.empty())
            items += " \\fI" + Roff(option.value) + "\\fR";
        items += "\n" + Roff(OptionText(option)) + "\n";
    }
    return items;
}

constexpr std::string_view exitStatus = R"(.SH EXIT STATUS
0 on success, 1 when an input is refused, with the reason on standard error, 2 when the command line is wrong. Commands that print
a verdict end with 0 when it is valid or good, 1 when it is invalid, revoked or bad, 3 when it is undecided.
)";

std::string CommandPage(const Command& command)
{
    return Head(PageName(&command), command.summary) + Bold(FullName(command)) + " [\\fIOPTION\\fR...] " + Roff(command.operands) +
           "\n.SH DESCRIPTION\n" + Paragraphs(command.details) + ".SH OPTIONS\n" + OptionItems(command.options) +
           OptionItems(commonOptions) + std::string(exitStatus) + ".SH SEE ALSO\n.BR cryptotool (1)\n";
}

std::string ProgramPage()
{
    std::string page =
        Head(PageName(nullptr),
             "shows, builds and matches DER, makes keys and certificates, signs, verifies, encrypts, hashes and packs files") +
        Bold("cryptotool") + " \\fINOUN\\fR [\\fIVERB\\fR] [\\fIOPTION\\fR...] [\\fIOPERAND\\fR...]\n.SH DESCRIPTION\n" +
        "Files may be DER, PEM, base64 or hexadecimal text, which is detected; \\(lq\\-\\(rq is standard input.\n"
        ".SH COMMANDS\n";
    for (const Command* const command : Commands())
        page += ".TP\n.BR " + Roff(PageName(command)) + " (1)\n" + Roff(command->summary) + "\n";
    return page + ".SH OPTIONS\nEvery command takes these:\n" + OptionItems(commonOptions) + ".TP\n" + Bold("-V") + ", " +
           Bold("--version") + "\nprint version, commit and the processor instructions in use\n" + std::string(exitStatus) +
           ".SH ENVIRONMENT\n.TP\n.B NO_COLOR\nset to some text, there is no colour unless \\fB\\-\\-color always\\fR asks for it\n"
           ".TP\n.B CRYPTO_CPU\nset to \\(lqportable\\(rq, no special processor instructions are used\n";
}

/// \return exitDone, or the exit code after the reason was printed.
int WritePage(Invocation& invocation, const std::string& file, const std::string& page)
{
    Output output(invocation.console(), file, Output::Content::text);
    return FinishOutput(invocation, output, output.open() && output.write(page));
}

int WriteAllPages(Invocation& invocation, const std::string& directory)
{
    int exit = WritePage(invocation, directory + "/" + PageName(nullptr) + ".1", ProgramPage());
    for (const Command* const command : Commands())
        if (exit == exitDone)
            exit = WritePage(invocation, directory + "/" + PageName(command) + ".1", CommandPage(*command));
    return exit;
}

int PrintManual(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string file = arguments.value(outputOption.name);
    if (arguments.has(directoryOption.name)) {
        if (!arguments.operands().empty() || !file.empty())
            return invocation.misuse("--directory takes neither a command nor -o");
        return WriteAllPages(invocation, arguments.value(directoryOption.name));
    }
    if (arguments.operands().empty())
        return WritePage(invocation, file, ProgramPage());
    for (const Command* const command : Commands())
        if (command->noun == arguments.operand(0) && command->verb == arguments.operand(1))
            return WritePage(invocation, file, CommandPage(*command));
    const std::string name = arguments.operand(0) + (arguments.operand(1).empty() ? "" : " ") + arguments.operand(1);
    return invocation.misuse("unknown command " + name);
}

} // namespace

const Command manualCommand = {"manpage",     "",         "prints a manual page", "[NOUN [VERB]]", 0, 2, manualDetails,
                               manualOptions, PrintManual};

} // namespace ccrypto
