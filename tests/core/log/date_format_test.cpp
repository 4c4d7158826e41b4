#include "core/log/date_format.h"

#include <gtest/gtest.h>

#include <string>

using namespace ccrypto;

namespace {

using platform::CalendarTime;

constexpr CalendarTime moment{2024, 2, 29, 7, 8, 9, 45};

std::string Format(const CalendarTime& time, const char* pattern)
{
    TimeTextBuffer buffer;
    buffer.fill('#');
    std::string text(FormatCalendarTime(time, pattern, buffer));
    EXPECT_EQ(text, buffer.data());
    return text;
}

void ExpectSame(const CalendarTime& time, const CalendarTime& expected)
{
    constexpr const char* allFields = "yyyy-MM-dd HH:mm:ss:fff";
    EXPECT_EQ(Format(time, allFields), Format(expected, allFields));
}

} // namespace

TEST(FormatCalendarTime, FollowsThePattern)
{
    constexpr struct {
        const char* pattern;
        const char* text;
    } cases[] = {
        {nullptr, ""},
        {"", ""},
        {"yyyy-MM-dd HH:mm:ss:fff ", "2024-02-29 07:08:09:045 "},
        {"hh", "07"},
        {"yy", "24"},
        {"f|ff|fff|ffff", "0|04|045|0450"},
        {"yyyyMMddHHmmssZ", "20240229070809Z"},
        {"y", "<ERROR>"},
        {"M/d/H/h/m/s", "<ERROR>/<ERROR>/<ERROR>/<ERROR>/<ERROR>/<ERROR>"},
        {"yyy", "24<ERROR>"},
        {"MMM", "02<ERROR>"},
        {"fffff", "04500"},
        {"Y \xC3\xA4%d", "Y \xC3\xA4%<ERROR>"},
        {"yyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyy", "20242024202420242024202420242024202420242024202420"},
        {"1234567890123456789012345678901234567890123456M", "1234567890123456789012345678901234567890123456<ERR"},
    };
    for (const auto& [pattern, text] : cases)
        EXPECT_EQ(Format(moment, pattern), text) << pattern;
}

TEST(FormatCalendarTime, WritesFieldsOutsideTheCalendarAsTheyAre)
{
    EXPECT_EQ(Format({12024, 13, -1, 100, 0, 0, 1234}, "yyyy yy MM dd HH fff"), "12024 24 13 -1 100 1234");
    EXPECT_EQ(Format({-5, 0, 0, 0, 0, 0, 2147483647}, "yyyy yy ffff"), "-005 05 21474836470");
}

TEST(ParseCalendarTime, ReadsWhatWasWritten)
{
    for (const char* pattern : {"yyyyMMddHHmmss.fffZ", "yyyy-MM-dd HH:mm:ss:fff", "yyMMddhhmmss.ffff", "fffssmmHHddMMyyyy"}) {
        SCOPED_TRACE(pattern);
        CalendarTime time;
        ASSERT_TRUE(ParseCalendarTime(Format(moment, pattern), pattern, time));
        ExpectSame(time, moment);
    }
}

TEST(ParseCalendarTime, FollowsTheTokens)
{
    constexpr struct {
        const char* text;
        const char* pattern;
        CalendarTime expected;
    } cases[] = {
        {"00", "yy", {2000, 0, 0, 0, 0, 0, 0}},    {"50", "yy", {2050, 0, 0, 0, 0, 0, 0}},
        {"51", "yy", {1951, 0, 0, 0, 0, 0, 0}},    {"99", "yy", {1999, 0, 0, 0, 0, 0, 0}},
        {"7", "f", {0, 0, 0, 0, 0, 0, 700}},       {"74", "ff", {0, 0, 0, 0, 0, 0, 740}},
        {"7419", "ffff", {0, 0, 0, 0, 0, 0, 741}}, {"99:13", "mm:MM", {0, 13, 0, 0, 99, 0, 0}},
    };
    for (const auto& [text, pattern, expected] : cases) {
        SCOPED_TRACE(text);
        CalendarTime time;
        ASSERT_TRUE(ParseCalendarTime(text, pattern, time));
        ExpectSame(time, expected);
    }
}

TEST(ParseCalendarTime, RefusesWhatDoesNotFit)
{
    constexpr struct {
        const char* text;
        const char* pattern;
    } cases[] = {
        {"202", "yyyy"}, {"20244", "yyyy"},      {"+202", "yyyy"},     {" 202", "yyyy"}, {"-1", "dd"},     {"1 ", "dd"},
        {"1\xB2", "dd"}, {"2024/02", "yyyy-MM"}, {"2024-", "yyyy-MM"}, {"1", "y"},       {"<ERROR>", "y"}, {"", "f"},
    };
    for (const auto& [text, pattern] : cases) {
        SCOPED_TRACE(text);
        CalendarTime time = moment;
        EXPECT_FALSE(ParseCalendarTime(text, pattern, time));
        ExpectSame(time, moment);
    }
}
