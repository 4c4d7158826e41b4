#include "core/system/character.h"
#include "core/system/convert.h"
#include "core/text/stream.h"
#include "core/text/string.h"
#include "core/text/string_array.h"
#include "core/text/utf8.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

using namespace ccrypto;

namespace {

struct ClassifyCase {
    const char* name;
    std::string_view bytes;
    TextKind kind;
};

TEST(ClassifyText, FollowsCompleteSequencesWhereverTheTextIsCut)
{
    const ClassifyCase cases[] = {
        {"nothing is plain", "", TextKind::Plain},
        {"ASCII is plain", "abc", TextKind::Plain},
        {"a two-byte sequence", "a\xC3\xA4", TextKind::Utf8},
        {"a four-byte sequence after a long ASCII run", "0123456789abcdef0\xF0\x9F\x98\x80", TextKind::Utf8},
        {"a Latin-1 letter", "\xE4", TextKind::Plain},
        {"a sequence cut short", "\xC3x", TextKind::Plain},
        {"a sequence cut by the end", "\xC3\xA4\xE2\x82", TextKind::Plain},
        {"a broken sequence after a whole one", "\xC3\xA4\xC3x", TextKind::Plain},
        {"a stray continuation byte is ignored", "\x80\xC3\xA4", TextKind::Utf8},
        {"bytes that no sequence holds are ignored", "\xF8\xFF\xC3\xA4", TextKind::Utf8},
    };
    for (const ClassifyCase& each : cases) {
        SCOPED_TRACE(each.name);
        EXPECT_EQ(CCryptoString(each.bytes).kind(), each.kind);
        for (std::size_t cut = 0; cut <= each.bytes.size(); ++cut) {
            CCryptoString pieces(each.bytes.substr(0, cut));
            pieces.append(each.bytes.substr(cut));
            EXPECT_EQ(pieces.kind(), each.kind) << cut;
            EXPECT_EQ(pieces.view(), each.bytes);
        }
    }
}

TEST(String, IsMadeOfEachSource)
{
    EXPECT_EQ(CCryptoString(static_cast<const char*>(nullptr)), "");
    EXPECT_EQ(CCryptoString(0), "");
    EXPECT_EQ(CCryptoString(-5), "-5");
    EXPECT_EQ(CCryptoString(INT32_MIN), "-2147483648");
    EXPECT_EQ(CCryptoString("a\0b", 3).length(), 3u);
    EXPECT_EQ(CCryptoString("abc", -1), "");
    EXPECT_EQ(CCryptoString(CCryptoChar(0x20AC)), "\xE2\x82\xAC");
    EXPECT_EQ(CCryptoString(CCryptoString("size "), 12), "size 12");
    EXPECT_EQ(CCryptoString(CCryptoString("size "), 0), "size ");
}

TEST(String, TakesTextKindsOfAnElementAsBytesAndRendersTheOthers)
{
    const element latin("\xC3\xA4", 2, ElementType::characterData);
    EXPECT_EQ(CCryptoString(latin).kind(), TextKind::Utf8);
    const element raw("\xC3\xA4", 2);
    EXPECT_EQ(CCryptoString(raw), "c3a4");
    EXPECT_EQ(CCryptoString(raw).kind(), TextKind::Plain);
}

TEST(String, AppendsToItselfAndKeepsItsTerminator)
{
    CCryptoString text("ab");
    for (int round = 0; round < 8; ++round)
        text += text;
    EXPECT_EQ(std::string(text.c_str()).size(), 512u);
    CCryptoString cleared = text;
    cleared.clear();
    EXPECT_STREQ(cleared.c_str(), "");
    const CCryptoString taken = std::move(text);
    EXPECT_STREQ(text.c_str(), "");
    EXPECT_EQ(taken.length(), 512u);
}

TEST(String, IsTerminatedWhenItIsJoinedOfNothing)
{
    EXPECT_STREQ((CCryptoString() + CCryptoString()).c_str(), "");
    EXPECT_STREQ(CCryptoString(CCryptoString(), 0).c_str(), "");
    EXPECT_STREQ(CCryptoString(nullptr, 4u).c_str(), "");
}

TEST(String, KeepsTheWideUnitsOfEveryTextItHad)
{
    CCryptoString text("\xC3\xA4 and more than an element holds by itself");
    const char16_t* const first = text.toUtf16();
    EXPECT_EQ(text.toUtf16(), first);
    text = "b";
    const std::u16string_view second(text.toUtf16());
    text = "another text";
    EXPECT_EQ(std::u16string_view(text.toUtf16()), u"another text");
    EXPECT_EQ(std::u16string_view(first), u"\u00E4 and more than an element holds by itself");
    EXPECT_EQ(second, u"b");
}

template <typename... Numbers>
constexpr bool noneMakesText = !(std::is_constructible_v<CCryptoString, Numbers> || ...);
template <typename... Numbers>
constexpr bool noneMakesAnElement = !(std::is_constructible_v<element, Numbers> || ...);

static_assert(std::is_constructible_v<CCryptoString, std::int32_t> && std::is_constructible_v<element, std::uint32_t>);
static_assert(noneMakesText<char, bool, double, std::size_t, std::uint32_t, std::int64_t, char16_t>);
static_assert(noneMakesAnElement<char, bool, double, std::size_t, std::int32_t, std::int64_t, char16_t>);

TEST(String, KeepsWideUnitsThroughAssignment)
{
    CCryptoString text("\xC3\xA4");
    const std::u16string_view units(text.toUtf16());
    text = "a longer text that needs storage of its own";
    text.replaceAll("longer", "short");
    CCryptoString other = std::move(text);
    EXPECT_EQ(units, u"\u00E4");
}

TEST(String, ReplacesEveryOccurrenceOnce)
{
    struct Case {
        const char *text, *from, *to, *result;
    };
    const Case cases[] = {{"a-b-c", "-", "+", "a+b+c"}, {"aaa", "aa", "a", "aa"},  {"abc", "", "x", "abc"},
                          {"abc", "d", "x", "abc"},     {"--", "-", "--", "----"}, {"\xC3\xA4", "\xA4", "", "\xC3"}};
    for (const Case& each : cases) {
        CCryptoString text(each.text);
        text.replaceAll(each.from, each.to);
        EXPECT_EQ(text, each.result);
        EXPECT_EQ(text.kind(), CCryptoString(each.result).kind());
    }
}

TEST(StringArray, SplitsAtEverySeparator)
{
    struct Case {
        const char *text, *separator;
        bool skipEmpty, trim;
        std::vector<std::string> parts;
    };
    const Case cases[] = {
        {"a*b*c", "*", false, false, {"a", "b", "c"}},
        {"", "*", false, false, {}},
        {"*", "*", false, false, {"", ""}},
        {"*", "*", true, false, {}},
        {"a, ,b", ",", false, false, {"a", " ", "b"}},
        {"a, ,\tb\n", ",", true, true, {"a", "b"}},
        {" a , ", ",", false, true, {"a", ""}},
        {"a::b:c", "::", false, false, {"a", "b:c"}},
        {"a b", "", false, false, {"a b"}},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.text);
        std::vector<std::string> parts;
        for (const CCryptoString& part : CCryptoStringArray(each.text, each.separator, each.skipEmpty, each.trim))
            parts.emplace_back(part.view());
        EXPECT_EQ(parts, each.parts);
    }
    EXPECT_EQ(CCryptoStringArray("a*b*", "*", false, false).join("; "), "a; b; ");
}

TEST(Stream, ReadsAndWritesAndStaysPutOnFailure)
{
    CCryptoStream stream;
    stream.WriteByte(0x01);
    stream.WriteWord16(0x0203);
    stream.WriteWord24(0xFF040506);
    stream.WriteWord32(0x0708090A);
    stream.WriteWord64(0x0B0C0D0E0F101112);
    ASSERT_EQ(stream.remaining(), 18u);
    element nothing;
    EXPECT_TRUE(stream.Read(nothing, 0));
    for (std::uint8_t byte = 1; byte <= 15; ++byte)
        EXPECT_EQ(stream.ReadByte(), byte);
    std::uint8_t four[4] = {};
    EXPECT_FALSE(stream.ReadExactly(four, 4));
    std::uint16_t unit = 0;
    EXPECT_TRUE(stream.ReadWord16LittleEndian(unit));
    EXPECT_EQ(unit, 0x1110);
    EXPECT_FALSE(stream.ReadWord16(unit));
    EXPECT_EQ(unit, 0x1110);
    element rest;
    EXPECT_TRUE(stream.Read(rest, 100));
    EXPECT_EQ(rest.length(), 1u);
    EXPECT_FALSE(stream.Read(rest, 1));
    EXPECT_EQ(stream.ReadByte(), 0);
    EXPECT_EQ(stream.position(), 18u);
}

struct LineCase {
    std::string_view bytes;
    std::vector<std::string> forwards;
    std::vector<std::string> backwards;
};

TEST(StreamLines, EndAtEitherTerminatorOrAPair)
{
    const LineCase cases[] = {
        {"", {}, {}},
        {"a", {"a"}, {"a"}},
        {"a\r\nb", {"a", "b"}, {"b", "a"}},
        {"a\n\rb", {"a", "b"}, {"b", "a"}},
        {"a\n\nb\r", {"a", "", "b"}, {"b", "", "a"}},
        {"a\r\n", {"a", ""}, {"a"}},
        {"\r\n\r\nx", {"", "", "x"}, {"x", "", ""}},
    };
    for (const LineCase& each : cases) {
        SCOPED_TRACE(std::string(each.bytes));
        element buffer(each.bytes);
        CCryptoStream stream(buffer);
        std::vector<std::string> lines;
        CCryptoString line;
        while (line.readLine(stream))
            lines.emplace_back(line.view());
        EXPECT_EQ(lines, each.forwards);
        lines.clear();
        while (stream.ReadPreviousLine(line))
            lines.emplace_back(line.view());
        EXPECT_EQ(lines, each.backwards);
        EXPECT_EQ(stream.position(), 0u);
    }
}

using enum CharacterEncoding;

struct WriteCase {
    std::uint32_t codePoint;
    CharacterEncoding encoding;
    std::string_view bytes;
    bool written = true;
};

TEST(Character, IsWrittenInEachEncoding)
{
    using std::string_view_literals::operator""sv;
    const WriteCase cases[] = {
        {'A', Latin1, "A"},
        {0x100, Latin1, "\0"sv},
        {0x7FF, Utf8, "\xDF\xBF"},
        {0xD800, Utf8, "\xED\xA0\x80"},
        {0xFFFF, Utf8, "\xEF\xBF\xBF"},
        {0x1FFFFF, Utf8, "\xF7\xBF\xBF\xBF"},
        {0x200000, Utf8, "", false},
        {0xE4, Utf16, "\0\xE4"sv},
        {0x1F600, Utf16, "\xD8\x7D\xDE\0"sv},
        {0xD801, Utf16, "\xD8\x36\xDC\x01"},
        {0xDFFF, Utf16, "\xD8\x37\xDF\xFF"},
        {0xE000, Utf16, "\xE0\0"sv},
        {0xD800, Utf16, "", false},
        {0x110000, Utf16, "", false},
        {0x20AC, Wchar16, "\xAC\x20"},
        {0x10000, Wchar16, "", false},
    };
    for (const WriteCase& each : cases) {
        CCryptoStream stream;
        EXPECT_EQ(CCryptoChar(each.codePoint).Write(stream, each.encoding), each.written);
        EXPECT_EQ(stream.buffer().view(), each.bytes) << std::hex << each.codePoint;
    }
}

struct ReadCase {
    std::string_view bytes;
    CharacterEncoding encoding;
    bool read;
    std::uint32_t codePoint;
    std::uint32_t position;
};

TEST(Character, IsReadInEachEncoding)
{
    using std::string_view_literals::operator""sv;
    const ReadCase cases[] = {
        {"\xE4", Latin1, true, 0xE4, 1},
        {"\xE2\x82\xAC", Utf8, true, 0x20AC, 3},
        {"\xC0\x80", Utf8, true, 0, 2},
        {"\xF7\xBF\xBF\xBF", Utf8, true, 0x1FFFFF, 4},
        {"\x80", Utf8, false, 7, 1},
        {"\xF8\x80", Utf8, false, 7, 1},
        {"\xE2\x82", Utf8, false, 7, 2},
        {"\xE2(", Utf8, false, 7, 2},
        {"\xD8\x3D\xDE\0"sv, Utf16, true, 0x1F600, 4},
        {"\xDE\0x"sv, Utf16, false, 7, 2},
        {"\xD8\x3D\0x"sv, Utf16, false, 7, 4},
        {"\xD8\x3D", Utf16, false, 7, 2},
        {"\x3D\xD8", Wchar16, true, 0xFFFD, 2},
        {"\xAC\x20", Wchar16, true, 0x20AC, 2},
        {"\xAC", Wchar16, false, 7, 1},
        {"A", Utf16, false, 7, 1},
        {"\xD8\x3D\xDE", Utf16, false, 7, 3},
        {"", Utf8, false, 7, 0},
    };
    for (const ReadCase& each : cases) {
        SCOPED_TRACE(testing::PrintToString(each.bytes));
        element buffer(each.bytes);
        CCryptoStream stream(buffer);
        CCryptoChar character(7);
        EXPECT_EQ(character.Read(stream, each.encoding), each.read);
        EXPECT_EQ(character.codePoint(), each.codePoint);
        EXPECT_EQ(stream.position(), each.position);
    }
}

TEST(HtmlEncode, NamesWhatHtmlGivesAMeaning)
{
    struct Case {
        const char *source, *encoded, *keepingQuotes;
    };
    const Case cases[] = {{"", "", ""},
                          {"a b", "a&#x20;b", "a b"},
                          {"<&>", "&lt;&amp;&gt;", "&lt;&amp;&gt;"},
                          {"\"'", "&quot;&apos;", "\"'"},
                          {"\t\x7F\x9F\xA0", "&#x09;&#x7f;&#x9f;\xA0", "\t\x7F\x9F\xA0"}};
    for (const Case& each : cases) {
        for (const bool keepQuotes : {false, true}) {
            const std::string_view expected = keepQuotes ? each.keepingQuotes : each.encoded;
            const std::uint32_t size = CCryptoConvert::html_encode(each.source, nullptr, 0, keepQuotes);
            EXPECT_EQ(size, expected.size() + 1);
            std::string target(size, '?');
            EXPECT_EQ(CCryptoConvert::html_encode(each.source, target.data(), size, keepQuotes), expected.size());
            EXPECT_EQ(target.c_str(), expected);
            // One byte less is refused, and nothing is written past the end.
            if (!expected.empty()) {
                target.assign(size, '?');
                EXPECT_EQ(CCryptoConvert::html_encode(each.source, target.data(), size - 1, keepQuotes), 0u);
                EXPECT_EQ(target.back(), '?');
                EXPECT_LT(std::strlen(target.c_str()), size - 1);
            }
        }
    }
}

TEST(Base64Url, IsPaddedAndTranslated)
{
    EXPECT_EQ(CCryptoConvert::base64url_decode("YQ").view(), "a");
    EXPECT_EQ(CCryptoConvert::base64url_decode("-_-_").view(), "\xFB\xFF\xBF");
    EXPECT_EQ(CCryptoConvert::base64url_decode("YWE").view(), "aa");
    EXPECT_EQ(CCryptoConvert::base64url_decode("YWFhY").view(), "aaa");
}

TEST(StringAppend, TakesPiecesOfEveryLengthWhereverTheyAreNotAscii)
{
    for (std::size_t length = 0; length <= 40; ++length) {
        // Past the end stands for a piece without such a character.
        for (std::size_t position = 0; position < length + 2; ++position) {
            SCOPED_TRACE(testing::Message() << length << " bytes, beyond ASCII at " << position);
            std::string piece(length, 'a');
            const bool beyond = position + 1 < length;
            if (beyond)
                piece.replace(position, 2, "\xC3\xA4");
            CCryptoString text("b");
            text.append(piece).append(piece);
            EXPECT_EQ(text.view(), "b" + piece + piece);
            EXPECT_EQ(std::strlen(text.c_str()), 2 * length + 1);
            EXPECT_EQ(text.kind(), beyond ? TextKind::Utf8 : TextKind::Plain);
            std::u16string units(length, u'a');
            if (beyond)
                units[position] = u'\u00E4';
            const CCryptoString converted = CCryptoString::FromUtf16(units.data(), static_cast<std::uint32_t>(length));
            const std::string expected = beyond ? piece + "a" : piece;
            EXPECT_EQ(converted.view(), expected);
            EXPECT_EQ(converted.kind(), beyond ? TextKind::Utf8 : TextKind::Plain);
        }
    }
}

TEST(Utf8Prefix, CutsNoCharacter)
{
    const struct {
        std::string_view text;
        std::size_t most;
        std::string_view prefix;
    } cases[] = {
        {"abc", 3, "abc"},
        {"abc", 2, "ab"},
        {"a\xC3\xA4", 2, "a"},
        {"\xF0\x9F\x98\x80z", 3, ""},
        {"\xF0\x9F\x98\x80z", 4, "\xF0\x9F\x98\x80"},
        {"\x80\x80\x80\x80\x80\x80", 5, "\x80\x80\x80\x80\x80"},
    };
    for (const auto& [text, most, prefix] : cases)
        EXPECT_EQ(Utf8Prefix(text, most), prefix) << text << " to " << most;
}

} // namespace
