#include "tools/menuhost/arguments.h"

#include <shlobj.h>

#include <algorithm>
#include <climits>
#include <cwchar>
#include <string_view>

namespace ccrypto {

const char usageText[] =
    R"(menuhost [OPTION]... FILE...

Does to the context-menu handler what Explorer does when the user right-clicks FILE... (all in one folder): activates the
registered class, hands it the shell's data object of the files, has it fill a popup menu and prints what it answered.

  --invoke          choose the handler's entry
  --show            open the menu in a window; an entry chosen there is invoked; prints "shown" when the menu is
                    up, unless --json asks for one object
  --show-seconds N  the same, and close the menu after N seconds
  --flags LIST      flags for QueryContextMenu: numbers or names (CMF_DEFAULTONLY, ...), separated by commas
  --json            print one JSON object
  --help            print this

Ends with 0 when the handler took the selection and added its entry (and took its command, where one was chosen), 1 when it or
the system refused, 2 on wrong usage.
)";

namespace {

/// A timer counts milliseconds in 32 bits.
constexpr UINT maxShowSeconds = 1000000;

struct FlagName {
    const wchar_t* name;
    UINT value;
};

constexpr FlagName flagNames[] = {
    {L"CMF_NORMAL", CMF_NORMAL},
    {L"CMF_DEFAULTONLY", CMF_DEFAULTONLY},
    {L"CMF_VERBSONLY", CMF_VERBSONLY},
    {L"CMF_EXPLORE", CMF_EXPLORE},
    {L"CMF_NOVERBS", CMF_NOVERBS},
    {L"CMF_CANRENAME", CMF_CANRENAME},
    {L"CMF_NODEFAULT", CMF_NODEFAULT},
    {L"CMF_ITEMMENU", CMF_ITEMMENU},
    {L"CMF_EXTENDEDVERBS", CMF_EXTENDEDVERBS},
    {L"CMF_ASYNCVERBSTATE", CMF_ASYNCVERBSTATE},
};

/// Decimal, or hexadecimal after "0x".
bool ParseNumber(const std::wstring& text, UINT& number)
{
    if (text.empty() || text[0] < L'0' || text[0] > L'9')
        return false;
    const bool isHex = text.starts_with(L"0x") || text.starts_with(L"0X");
    wchar_t* end = nullptr;
    const unsigned long long value = std::wcstoull(text.c_str(), &end, isHex ? 16 : 10);
    number = static_cast<UINT>(value);
    return *end == 0 && value <= UINT_MAX;
}

bool ParseFlags(const std::wstring& list, UINT& flags)
{
    std::size_t start = 0;
    while (start <= list.size()) {
        const std::size_t end = std::min(list.find(L',', start), list.size());
        const std::wstring word = list.substr(start, end - start);
        const auto* known = std::find_if(std::begin(flagNames), std::end(flagNames),
                                         [&](const FlagName& candidate) { return word == candidate.name; });
        UINT value = 0;
        if (known != std::end(flagNames))
            value = known->value;
        else if (!ParseNumber(word, value))
            return false;
        flags |= value;
        start = end + 1;
    }
    return true;
}

} // namespace

std::optional<Arguments> ParseArguments(const std::vector<std::wstring>& words, std::wstring& problem)
{
    Arguments result;
    for (auto word = words.begin(); word != words.end(); ++word) {
        const bool hasValue = word + 1 != words.end();
        if (*word == L"--help" || *word == L"-h")
            result.help = true;
        else if (*word == L"--invoke")
            result.invoke = true;
        else if (*word == L"--json")
            result.json = true;
        else if (*word == L"--show")
            result.show = true;
        else if (*word == L"--show-seconds" && hasValue && ParseNumber(word[1], result.showSeconds) && result.showSeconds > 0 &&
                 result.showSeconds <= maxShowSeconds) {
            result.show = true;
            ++word;
        } else if (*word == L"--flags" && hasValue && ParseFlags(word[1], result.flags))
            ++word;
        else if (word->starts_with(L"-")) {
            problem = L"not understood: " + *word + (hasValue ? L" " + word[1] : L"");
            return std::nullopt;
        } else
            result.files.push_back(*word);
    }
    if (result.show && result.invoke) {
        problem = L"--show and --invoke are mutually exclusive";
        return std::nullopt;
    }
    if (result.files.empty() && !result.help) {
        problem = L"no file named";
        return std::nullopt;
    }
    return result;
}

} // namespace ccrypto
