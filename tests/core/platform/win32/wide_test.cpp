#include "core/platform/win32/wide.h"

#include <gtest/gtest.h>

using namespace ccrypto;

using platform::Utf8ToWide;
using platform::WideToUtf8;

TEST(Wide, Utf8AndSixteenBitUnitsStandForEachOther)
{
    struct {
        std::wstring_view wide;
        std::string_view utf8;
    } const cases[] = {
        {L"", ""},
        {L"a\u007F", "a\x7F"},
        {L"\u0080\u07FF", "\xC2\x80\xDF\xBF"},
        {L"\u0800\uFFFF", "\xE0\xA0\x80\xEF\xBF\xBF"},
        {L"\xD800\xDC00", "\xF0\x90\x80\x80"},
        {L"\xDBFF\xDFFF", "\xF4\x8F\xBF\xBF"},
        {L"\xD800", "\xED\xA0\x80"},
        {L"\xDC00\xD800", "\xED\xB0\x80\xED\xA0\x80"},
        {L"\xD800x\xDFFF", "\xED\xA0\x80x\xED\xBF\xBF"},
        {std::wstring_view(L"a\0b", 3), std::string_view("a\0b", 3)},
    };
    for (const auto& [wide, utf8] : cases) {
        SCOPED_TRACE(utf8);
        EXPECT_EQ(WideToUtf8(wide), utf8);
        EXPECT_EQ(Utf8ToWide(utf8), wide);
    }
}

TEST(Wide, EveryUnitComesBack)
{
    std::wstring all;
    for (unsigned unit = 1; unit <= 0xFFFF; ++unit)
        all += static_cast<wchar_t>(unit);
    EXPECT_EQ(Utf8ToWide(WideToUtf8(all)), all);
}

TEST(Wide, OtherBytesAreLatin1)
{
    struct {
        std::string_view bytes;
        std::wstring_view wide;
    } const cases[] = {
        {"a\xE4", L"a\xE4"},                       // cut short
        {"\x80", L"\x80"},                         // a continuation alone
        {"\xC3\xA4\xFF", L"\xC3\xA4\xFF"},         // one bad byte decides for all
        {"\xC0\xAF", L"\xC0\xAF"},                 // longer than needed
        {"\xE0\x9F\xBF", L"\xE0\x9F\xBF"},         // longer than needed
        {"\xF4\x90\x80\x80", L"\xF4\x90\x80\x80"}, // past the last character
        {"\xF8\x88\x80\x80\x80", L"\xF8\x88\x80\x80\x80"},
    };
    for (const auto& [bytes, wide] : cases)
        EXPECT_EQ(Utf8ToWide(bytes), wide);
}
