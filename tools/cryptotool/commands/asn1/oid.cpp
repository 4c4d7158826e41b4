#include "asn1/oid/oid_names.h"
#include "core/base/ascii.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/output/output.h"
#include "tools/text/safe_text.h"

#include <algorithm>

namespace ccrypto {

namespace {

constexpr std::string_view oidDetails =
    R"(Prints the name of the object identifier TEXT (2.5.4.3), or every object identifier whose name contains TEXT, in either case.
)";

constexpr Option oidOptions[] = {jsonOption, outputOption};

bool IsDotted(std::string_view text)
{
    const bool isNumeric = std::ranges::all_of(text, [](char character) { return character == '.' || IsDigit(character); });
    return isNumeric && text.find('.') != std::string_view::npos;
}

std::vector<OidName> Find(std::string_view text)
{
    if (!IsDotted(text))
        return text.empty() ? std::vector<OidName>() : FindOidsByName(text);
    const char* const name = FindOidName(text);
    return name != nullptr ? std::vector<OidName>{{text, name}} : std::vector<OidName>();
}

std::string ListText(const std::vector<OidName>& names)
{
    std::size_t width = 0;
    for (const OidName& row : names)
        width = std::max(width, row.dotted.size());
    std::string text;
    for (const OidName& row : names)
        text += std::string(row.dotted) + std::string(width - row.dotted.size() + 2, ' ') + OneLine(row.name) + "\n";
    return text;
}

std::string ListJson(const std::vector<OidName>& names)
{
    std::string text = "{\"oids\":[";
    const char* before = "\n";
    for (const OidName& row : names) {
        text += before + ("{\"oid\":" + JsonString(row.dotted)) + ",\"name\":" + JsonString(row.name) + "}";
        before = ",\n";
    }
    return text + "\n]}\n";
}

int FindOids(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string text = arguments.operand(0);
    const std::vector<OidName> names = Find(text);
    if (names.empty())
        return invocation.refuse(text, IsDotted(text) ? "no name is known for it" : "no name of an object identifier contains it");
    Output output(invocation.console(), arguments.value("output"), Output::Content::text);
    return FinishOutput(invocation, output,
                        output.open() && output.write(arguments.has("json") ? ListJson(names) : ListText(names)));
}

} // namespace

const Command oidCommand = {"oid",      "",      "names an object identifier, or finds one by its name", "TEXT", 1, 1, oidDetails,
                            oidOptions, FindOids};

} // namespace ccrypto
