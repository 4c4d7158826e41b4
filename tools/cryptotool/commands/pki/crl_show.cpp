#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/pki/object_input.h"
#include "tools/cryptotool/pki/object_report.h"
#include "tools/cryptotool/pki/report_output.h"

#include <algorithm>

namespace ccrypto {

namespace {

constexpr std::uint32_t usualEntries = 20;

constexpr std::string_view crlShowDetails =
    R"(Prints what the revocation list in FILE says, and its first entries in their order. Nothing is verified. "cryptotool crl find" looks
up an entry in a list of any length.
)";
constexpr Option crlShowOptions[] = {
    {OptionKind::number, 0, "entries", "N", "print so many entries (20)"},
    jsonOption,
    outputOption,
};

int ShowList(Invocation& invocation)
{
    const std::string file = invocation.arguments().operand(0);
    CrlPtr list;
    if (const int exit = ReadList(invocation, file, list); exit != exitDone)
        return exit;
    Report report;
    DescribeList(*list, report);
    const auto count = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(invocation.arguments().number("entries", usualEntries), list->entryCount()));
    Report& revoked = report.addList("revoked");
    for (std::uint32_t index = 0; index < count; ++index) {
        const std::optional<RevokedEntry> entry = list->entry(index);
        if (!entry)
            return invocation.refuse(file, "entry " + std::to_string(index) + " is malformed");
        DescribeEntry(*entry, revoked.addItem("entry " + std::to_string(index)));
    }
    return WriteReport(invocation, report);
}

} // namespace

const Command crlShowCommand = {"crl",          "show",  "prints what a revocation list says", "FILE", 1, 1, crlShowDetails,
                                crlShowOptions, ShowList};

} // namespace ccrypto
