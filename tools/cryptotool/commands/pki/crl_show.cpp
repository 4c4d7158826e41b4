#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/pki/object_report.h"

#include <algorithm>
#include <optional>

namespace ccrypto {

namespace {

constexpr std::uint64_t usualEntries = 20;

constexpr std::string_view crlShowDetails =
    R"(Prints what the revocation lists in FILE say, and the first entries of each in their order. Nothing is verified. "cryptotool crl find"
looks up an entry in a list of any length. With --json, "revocationLists" is a list.
)";
constexpr Option crlShowOptions[] = {
    {OptionKind::number, 0, "entries", "N", "print so many entries of each list (20)"},
    jsonOption,
    outputOption,
};

bool AddList(const element& der, std::uint64_t maxEntries, Report& lists, const std::string& heading)
{
    CCrypto_X509_CRL list;
    if (!list.LoadCRL(der))
        return false;
    Report& report = lists.addItem(heading);
    DescribeList(list, report);
    const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(maxEntries, list.entryCount()));
    Report& revoked = report.addList("revoked");
    for (std::uint32_t index = 0; index < count; ++index)
        if (const std::optional<RevokedEntry> entry = list.entry(index))
            DescribeEntry(*entry, revoked.addItem("entry " + std::to_string(index)));
    return true;
}

int ShowLists(Invocation& invocation)
{
    const std::uint64_t maxEntries = invocation.arguments().number("entries", usualEntries);
    return ShowObjects(
        invocation, ObjectKind::list, "revocationLists",
        [=](const element& der, Report& lists, const std::string& heading) { return AddList(der, maxEntries, lists, heading); });
}

} // namespace

const Command crlShowCommand = {"crl",          "show",   "prints what revocation lists say", "FILE", 1, 1, crlShowDetails,
                                crlShowOptions, ShowLists};

} // namespace ccrypto
