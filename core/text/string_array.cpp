#include "core/text/string_array.h"

#include "core/memory/out_of_memory.h"

#include <algorithm>

using namespace ccrypto;

namespace {

std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

/// Calls `use` with each part in turn.
template <typename Use>
void ForEachPart(std::string_view text, std::string_view separator, bool skipEmpty, bool trim, Use use)
{
    std::size_t start = 0;
    while (start <= text.size() && !text.empty()) {
        const std::size_t end = separator.empty() ? text.size() : std::min(text.find(separator, start), text.size());
        std::string_view part = text.substr(start, end - start);
        if (trim)
            part = Trimmed(part);
        if (!skipEmpty || !part.empty())
            use(part);
        if (end == text.size())
            return;
        start = end + separator.size();
    }
}

} // namespace

CCryptoStringArray::CCryptoStringArray(const CCryptoString& text, std::string_view separator, bool skipEmpty, bool trim)
{
    // Counted first, since the array grows to exactly the size asked for.
    std::uint32_t count = 0;
    ForEachPart(text.view(), separator, skipEmpty, trim, [&](std::string_view) { ++count; });
    if (!setSize(count))
        EndOutOfMemory();
    CCryptoString* next = begin();
    ForEachPart(text.view(), separator, skipEmpty, trim, [&](std::string_view part) { (next++)->append(part); });
}

CCryptoString CCryptoStringArray::join(std::string_view separator) const
{
    CCryptoString joined;
    for (const CCryptoString& part : *this) {
        if (&part != begin())
            joined.append(separator);
        joined.append(part.view());
    }
    return joined;
}
