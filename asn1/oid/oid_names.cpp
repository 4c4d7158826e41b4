#include "asn1/oid/oid_names.h"

#include "asn1/oid/oid_table.h"
#include "core/base/ascii.h"

#include <algorithm>

namespace ccrypto {

namespace {

using ccrypto::internal::oidTable;

bool Contains(std::string_view text, std::string_view part)
{
    const auto same = [](char left, char right) { return ToSmall(left) == ToSmall(right); };
    return part.empty() || std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
}

} // namespace

const char* FindOidName(std::string_view dotted)
{
    return oidTable.Find(dotted);
}

std::vector<OidName> FindOidsByName(std::string_view part)
{
    std::vector<OidName> found;
    for (std::string_view rest = oidTable.Rows(); !rest.empty();) {
        const std::string_view row = rest.substr(0, rest.find('\0'));
        const std::size_t blank = row.find(' ');
        if (Contains(row.substr(blank + 1), part))
            found.push_back({row.substr(0, blank), row.data() + blank + 1});
        rest.remove_prefix(row.size() + 1);
    }
    return found;
}

} // namespace ccrypto
