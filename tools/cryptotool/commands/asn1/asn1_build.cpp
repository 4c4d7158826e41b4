#include "asn1/der/encoding_form.h"
#include "asn1/der/pem.h"
#include "asn1/parser/parser_search.h"
#include "tools/cryptotool/asn1/placeholder_values.h"
#include "tools/cryptotool/asn1/template_input.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/output/output.h"

namespace ccrypto {

namespace {

constexpr std::size_t maxValues = 10000;

constexpr std::string_view asn1BuildDetails =
    R"(Reads a template (or the JSON or XML that "cryptotool asn1 show" prints), gives its names the values, and writes DER. VALUE is

    #00ff      bytes
    @FILE      the bytes of FILE
    der:@FILE  the elements of FILE, which may be DER, PEM, base64 or hexadecimal text
    text:TEXT  TEXT unchanged
    42, -42    a number, in an INTEGER, an ENUMERATED and a bracket list
    TRUE       a truth value, or FALSE, in a BOOLEAN
    TEXT       text everywhere else, digits included; in an OBJECT_IDENTIFIER dotted

A name without a value writes nothing; a warning says so, unless it is in an OPTIONAL item. Another warning says when a string is
written as constructed, which DER forbids: OCTET_STRING[PRIMITIVE]{SEQUENCE{...}} is not.
)";

constexpr Option asn1BuildOptions[] = {
    fromOption,
    {OptionKind::text, 0, "pem", "LABEL", "write PEM, between lines with LABEL"},
    outputOption,
};

void WarnOfUnfilled(Invocation& invocation, const std::string& file, const CCryptoParser& tree)
{
    std::string list;
    for (const std::string& name : UnfilledNames(tree))
        list += (list.empty() ? "" : ", ") + name;
    if (!list.empty())
        invocation.warn(file, "no value given for " + list);
}

void WarnOfConstructedStrings(Invocation& invocation, const std::string& file, const CCryptoParser& tree)
{
    CCryptoParserSearch search(tree.root(), true, true);
    if (const elementNode* const item = search.find(IsConstructedString))
        invocation.warn(file, std::string(TokenText(item->type())) +
                                  " is constructed, which DER forbids; with PRIMITIVE in its brackets it is not");
}

/// "; SEQUENC is a name without a value, not a type" where a template begins so.
std::string NameInPlaceOfType(const CCryptoParser& tree)
{
    const std::vector<std::string> names = UnfilledNames(tree);
    return names.empty() ? std::string() : "; " + names.front() + " is a name without a value, not a type";
}

int Write(Invocation& invocation, const std::string& file, const CCryptoParser& tree, const element& der)
{
    const Arguments& arguments = invocation.arguments();
    const bool isPem = arguments.has("pem");
    Output output(invocation.console(), arguments.value("output"), isPem ? Output::Content::text : Output::Content::binary);
    if (der.isEmpty())
        return invocation.refuse(file, LastReason("the template describes no elements") + NameInPlaceOfType(tree));
    return FinishOutput(invocation, output,
                        output.open() &&
                            (isPem ? output.write(WritePem(arguments.value("pem"), der).view()) : output.write(der.bytes())));
}

int Build(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::vector<std::string>& operands = arguments.operands();
    if (arguments.has("pem") && !IsPemLabel(arguments.value("pem")))
        return invocation.misuse("not a PEM label: " + arguments.value("pem"));
    bool usesInput = operands[0] == "-";
    for (std::size_t index = 1; index < operands.size(); ++index) {
        const std::string_view word = operands[index];
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos || equals == 0)
            return invocation.misuse("not in the form NAME=VALUE: " + operands[index]);
        const bool isInput = FileOfValue(word.substr(equals + 1)) == "-";
        if (usesInput && isInput)
            return invocation.misuse("standard input can be one file only");
        usesInput = usesInput || isInput;
    }

    const std::string& file = operands[0];
    CCryptoParser tree;
    std::string reason;
    if (!ReadTemplate(invocation.console(), file, arguments.value("from"), tree, reason))
        return invocation.refuse(file, reason);
    for (std::size_t index = 1; index < operands.size(); ++index) {
        const std::string_view word = operands[index];
        const std::size_t equals = word.find('=');
        FillProblem problem;
        if (!FillPlaceholders(tree, word.substr(0, equals), word.substr(equals + 1), invocation.console(), problem))
            return invocation.refuse(problem.file.empty() ? file : problem.file, problem.reason);
    }
    StartReason();
    const int code = Write(invocation, file, tree, tree.ToDer());
    if (code == exitDone) {
        WarnOfUnfilled(invocation, file, tree);
        WarnOfConstructedStrings(invocation, file, tree);
    }
    return code;
}

} // namespace

const Command asn1BuildCommand = {"asn1",
                                  "build",
                                  "writes the DER that a template describes",
                                  "TEMPLATE-FILE [NAME=VALUE...]",
                                  1,
                                  maxValues + 1,
                                  asn1BuildDetails,
                                  asn1BuildOptions,
                                  Build};

} // namespace ccrypto
