#include "shellext/com/bounded_text.h"

#include <gtest/gtest.h>

#include <string>

using namespace ccrypto;

TEST(BoundedText, CutsTerminatesAndReports)
{
    struct Case {
        std::size_t capacity;
        HRESULT result;
        const wchar_t* written;
    };
    constexpr auto cut = static_cast<HRESULT>(0x8007007A);
    const Case cases[] = {
        {6, S_OK, L"CLSID"}, {5, cut, L"CLSI"}, {3, cut, L"CL"}, {1, cut, L""}, {0x80000000, E_INVALIDARG, L""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.capacity);
        wchar_t target[] = L"########";
        EXPECT_EQ(JoinBounded(target, c.capacity, {L"CLS", L"", L"ID"}), c.result);
        EXPECT_STREQ(target, c.written);
        EXPECT_STREQ(target + std::wstring(c.written).size() + 1, std::wstring(7 - std::wstring(c.written).size(), L'#').c_str());
    }

    wchar_t untouched[] = L"#";
    EXPECT_EQ(JoinBounded(untouched, 0, {L"a"}), E_INVALIDARG);
    EXPECT_STREQ(untouched, L"#");
    EXPECT_EQ(JoinBounded(nullptr, 10, {L"a"}), E_INVALIDARG);
}
