#include "core/text/element.h"
#include "core/text/string.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using namespace ccrypto;

namespace {

TEST(ElementGrowth, ExactAtFirstThenAFifthButAtLeast256More)
{
    element buffer;
    buffer.reserve(10);
    EXPECT_EQ(buffer.capacity(), 10u);
    buffer.reserve(11);
    EXPECT_EQ(buffer.capacity(), 11u + 256);
    buffer.reserve(2001);
    EXPECT_EQ(buffer.capacity(), 2001u + 400);
    element assigned("abcd", 4);
    assigned.assign("0123456789", 10);
    EXPECT_EQ(assigned.capacity(), 10u + 256);
}

TEST(ElementGrowth, AppendsItsOwnBytes)
{
    element text("abc");
    for (int round = 0; round < 10; ++round)
        text.append(text.data(), text.length());
    ASSERT_EQ(text.length(), 3u << 10);
    for (std::uint32_t index = 0; index < text.length(); ++index)
        ASSERT_EQ(text[index], "abc"[index % 3]) << index;
}

TEST(Element, WipesTheBytesItGivesUp)
{
    const std::string text(40, 's');
    const auto shrunk = [&](auto shrink) {
        element bytes(text);
        shrink(bytes);
        return std::string(reinterpret_cast<const char*>(bytes.data()), text.size());
    };
    const std::string wiped = "ss" + std::string(38, '\0');
    EXPECT_EQ(shrunk([](element& bytes) { bytes.resize(2); }), wiped);
    EXPECT_EQ(shrunk([](element& bytes) { bytes.assign("ss", 2); }), wiped);
    EXPECT_EQ(shrunk([](element& bytes) { bytes.erase(1, 38); }), wiped);
}

TEST(Element, KeepsTypeSignAndBytesThroughCopyMoveAndAssignment)
{
    element number(0x01020304u);
    number.setNegative(true);
    const element copy = number;
    element moved = std::move(number);
    EXPECT_EQ(copy, moved);
    EXPECT_TRUE(number.isEmpty());
    element assigned("something longer than a number");
    assigned = copy;
    EXPECT_EQ(assigned, copy);
    moved.setNegative(false);
    EXPECT_FALSE(moved == copy);
}

TEST(Element, MovesBytesInsideAndOutsideOfItself)
{
    for (const std::uint32_t length : {0u, 1u, 21u, 22u, 23u, 5000u}) {
        SCOPED_TRACE(length);
        const std::string bytes(length, 'x');
        element source(bytes.data(), length);
        element constructed = std::move(source);
        element assigned("what it held before, longer than fits inside");
        assigned = std::move(constructed);
        EXPECT_TRUE(source.isEmpty() && constructed.isEmpty());
        EXPECT_EQ(assigned.view(), bytes);
        source.append(assigned.view());
        EXPECT_EQ(source.view(), bytes);
    }
}

TEST(Element, ErasesFromTheMiddleAndReadsPastTheEndAsZero)
{
    element bytes("abcdef", 6);
    bytes.erase(1, 2);
    EXPECT_EQ(bytes.view(), "adef");
    bytes.erase(3, 100);
    EXPECT_EQ(bytes.view(), "ade");
    bytes.erase(3, 1);
    EXPECT_EQ(bytes.view(), "ade");
    EXPECT_EQ(bytes[3], 0);
}

struct TextCase {
    const char* name;
    element value;
    std::string_view text;
};

element Integer(std::string_view bytes, bool negative)
{
    element number(bytes.data(), static_cast<std::uint32_t>(bytes.size()), ElementType::integer);
    number.setNegative(negative);
    return number;
}

TEST(ElementText, RendersEveryKindAsPeopleReadIt)
{
    const TextCase cases[] = {
        {"text", element("abc"), "abc"},
        {"bytes", element("\x00\xAB", 2), "00ab"},
        {"token", element(ElementType::sequence), "SEQUENCE"},
        {"odd spelling", element(ElementType::generalizedType), "GeneralizedType"},
        {"true", element::FromTruth(true), "TRUE"},
        {"false", element::FromTruth(false), "FALSE"},
        {"zero", element(0u), "0"},
        {"zero below zero", Integer(std::string(1, '\0'), true), "0"},
        {"word", element(0xFFFFFFFFu), "4294967295"},
        {"no bytes at all", Integer("", false), "0"},
        {"two's complement -128", Integer("\x80", true), "-128"},
        {"two's complement -256", Integer(std::string_view("\xFF\x00", 2), true), "-256"},
        {"magnitude 5 with a minus", Integer("\x05", true), "-5"},
        {"2 to the 64th", Integer(std::string_view("\x01\0\0\0\0\0\0\0\0", 9), false), "18446744073709551616"},
        {"10 to the 18th, zeros between limbs", Integer(std::string_view("\x0D\xE0\xB6\xB3\xA7\x64\x00\x00", 8), false),
         "1000000000000000000"},
    };
    for (const TextCase& each : cases) {
        SCOPED_TRACE(each.name);
        EXPECT_EQ(each.value.toString().view(), each.text);
    }
    EXPECT_EQ(Integer(std::string(513, '\x11'), false).toString().view().substr(0, 4), "0x11");
    EXPECT_EQ(Integer(std::string(513, '\xFF'), true).toString().view().substr(0, 5), "-0x00");
    EXPECT_EQ(Integer(std::string(512, '\xFF'), false).toString().length(), 1234u);
}

struct NumberCase {
    element value;
    std::uint64_t word64;
    std::int32_t integer;
    std::optional<std::uint32_t> exactWord32;
    std::optional<std::int32_t> exactInt;
};

TEST(ElementNumber, ReadsBytesAndDecimalText)
{
    const NumberCase cases[] = {
        {element("1234"), 1234, 1234, 1234, 1234},
        {element(" -7x"), static_cast<std::uint64_t>(-7), -7, {}, -7},
        {element("18446744073709551612"), 18446744073709551612u, -4, {}, {}},
        {element("99999999999999999999999"), UINT64_MAX, -1, {}, {}},
        {element("none"), 0, 0, 0, 0},
        {element(0x80000000u), 0x80000000, INT32_MIN, 0x80000000, {}},
        {element("4294967295"), 0xFFFFFFFF, -1, 0xFFFFFFFF, {}},
        {element("4294967296"), 0x100000000, 0, {}, {}},
        {element("-2147483648"), 0xFFFFFFFF80000000, INT32_MIN, {}, INT32_MIN},
        {element("-2147483649"), 0xFFFFFFFF7FFFFFFF, INT32_MAX, {}, {}},
        {element(0x7FFFFFFFu), 0x7FFFFFFF, INT32_MAX, 0x7FFFFFFF, INT32_MAX},
        {Integer("\x80", true), 0x80, -128, {}, -128},
        {Integer("\x05", true), 5, -5, {}, -5},
        {Integer("\xFF\xFF\xFF\xFE", true), 0xFFFFFFFE, -2, {}, -2},
        {element("\x01\x02\x03\x04\x05\x06\x07\x08\x09", 9), 0x0203040506070809, 0x06070809, {}, {}},
        {element("\0\0\0\0\0\0\0\0\x09", 9), 9, 9, 9, 9},
        {element(), 0, 0, 0, 0},
    };
    for (const NumberCase& each : cases) {
        SCOPED_TRACE(each.value.toString().c_str());
        EXPECT_EQ(each.value.toWord64(), each.word64);
        EXPECT_EQ(each.value.toWord32(), static_cast<std::uint32_t>(each.word64));
        EXPECT_EQ(each.value.toInt(), each.integer);
        EXPECT_EQ(each.value.exactWord32(), each.exactWord32);
        EXPECT_EQ(each.value.exactInt(), each.exactInt);
    }
}

std::u16string Units(const element& text)
{
    element units;
    if (!text.toUtf16(units))
        return u"not converted";
    std::u16string copy(units.length() / 2, u' ');
    std::memcpy(copy.data(), units.data(), units.length());
    return copy;
}

TEST(ElementUtf16, EveryRunOfUnitsComesBackEvenUnpairedSurrogates)
{
    const std::u16string runs[] = {
        u"report.pdf", u"\u00E4\u0416\u20AC", u"\U0001F600 smile", {0xD83D}, {0xDE00, u'x'}, {u'a', 0xD83D, u'b', 0xDE00}, {}};
    for (const std::u16string& run : runs)
        EXPECT_EQ(Units(element::FromUtf16(run.data(), static_cast<std::uint32_t>(run.size()))), run);
}

TEST(ElementUtf16, PlainTextIsLatin1AndBrokenUtf8IsRefused)
{
    EXPECT_EQ(Units(element("\xE4"
                            "b")),
              u"\u00E4b");
    for (const std::string_view broken : {"\xC3\xA4\xC3", "\xC3\xA4\x80", "\xF7\xBF\xBF\xBF", "a\xC0\x80", "\xE0\x80\xAF"}) {
        element units;
        EXPECT_FALSE(element(broken.data(), static_cast<std::uint32_t>(broken.size()), ElementType::utf8Text).toUtf16(units));
        EXPECT_TRUE(units.isEmpty());
    }
}

TEST(ElementBase64, FollowsThePublishedVectorsBothWays)
{
    // RFC 4648, 10.
    const std::pair<const char*, const char*> vectors[] = {{"", ""},
                                                           {"f", "Zg=="},
                                                           {"fo", "Zm8="},
                                                           {"foo", "Zm9v"},
                                                           {"foob", "Zm9vYg=="},
                                                           {"fooba", "Zm9vYmE="},
                                                           {"foobar", "Zm9vYmFy"}};
    for (const auto& [plain, encoded] : vectors) {
        EXPECT_EQ(element(plain).toBase64().view(), encoded);
        EXPECT_EQ(element::FromBase64(encoded).view(), plain);
    }
}

TEST(ElementBase64, ToleratesLayoutAndRefusesOtherCharacters)
{
    const std::pair<const char*, const char*> cases[] = {
        {"Zm9v\r\n YmFy\n", "foobar"}, {"Zm8", "fo"}, {"Zm9vY", "foo"}, {"Zm9v-", ""}, {"Zg==Zg==", ""}, {"Z", ""}};
    for (const auto& [text, plain] : cases)
        EXPECT_EQ(element::FromBase64(text).view(), plain) << text;
}

} // namespace
