#include "core/system/date_time.h"
#include "tests/support/captured_log.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace ccrypto;

namespace {

using platform::CalendarTime;

constexpr bool utc = true;
constexpr bool local = false;

/// All that a time holds, as text.
std::string Show(const CCryptoDateTime& time)
{
    return std::string(time.format("yyyy-MM-dd HH:mm:ss:fff").view()) + (time.isUtc() ? " UTC" : " local");
}

std::string Text(const CCryptoString& text)
{
    return std::string(text.view());
}

} // namespace

TEST(DateTime, IsOrderedByFieldsOrByTheMoment)
{
    const auto time = [](const char* text) { return CCryptoDateTime(CCryptoString(text)); };
    const CCryptoDateTime utc = time("20240115120000.5Z");
    EXPECT_LT(time("19491231235959Z"), time("20000101000000Z"));
    EXPECT_LT(time("2024-01-15 12:00:00:499"), time("2024-01-15 12:00:00:500"));
    EXPECT_EQ(utc.toLocalDateTime(), utc);
    EXPECT_LT(utc.toLocalDateTime(), time("20240115120000.6Z"));
    EXPECT_GT(time("9999-12-30"), utc);
    EXPECT_LT(time("1900-01-01"), utc);
    const CCryptoDateTime none;
    EXPECT_EQ(none, CCryptoDateTime());
    EXPECT_FALSE(none < utc || none > utc || none == utc);
}

TEST(DateTime, ReadsTheFormsItWrites)
{
    constexpr struct {
        const char* text;
        const char* time;
    } cases[] = {
        {"20240229070809Z", "2024-02-29 07:08:09:000 UTC"},
        {"20240229070809.1Z", "2024-02-29 07:08:09:100 UTC"},
        {"20240229070809.12Z", "2024-02-29 07:08:09:120 UTC"},
        {"20240229070809.123Z", "2024-02-29 07:08:09:123 UTC"},
        {"20240229070809.1239Z", "2024-02-29 07:08:09:123 UTC"},
        {"500101000000Z", "2050-01-01 00:00:00:000 UTC"},
        {"510101000000Z", "1951-01-01 00:00:00:000 UTC"},
        {"991231235959Z", "1999-12-31 23:59:59:000 UTC"},
        {"20000229235959.999", "2000-02-29 23:59:59:999 local"},
        {"20240430000000", "2024-04-30 00:00:00:000 local"},
        {"2024-02-29 07:08:09:045 ", "2024-02-29 07:08:09:045 local"},
        {"2024-02-29 07:08:09:045", "2024-02-29 07:08:09:045 local"},
        {"9999-12-31 23:59:59", "9999-12-31 23:59:59:000 local"},
        {"2024-12-31", "2024-12-31 00:00:00:000 local"},
    };
    for (const auto& [text, time] : cases) {
        const CCryptoDateTime read{CCryptoString(text)};
        EXPECT_TRUE(read.isValid()) << text;
        EXPECT_EQ(Show(read), time) << text;
    }
}

TEST(DateTime, RefusesOtherTexts)
{
    for (const char* text : {
             "",
             "Z",
             "now",
             "20230229000000Z",
             "19000229000000Z",
             "20240431000000Z",
             "20240001000000Z",
             "20241301000000Z",
             "20240100000000Z",
             "20240132000000Z",
             "20240101240000Z",
             "20240101006000Z",
             "20240101000060Z",
             "231301000000Z",
             "20240101000000z",
             "20240101000000.Z",
             "20240101000000.12345Z",
             "20240101000000,1Z",
             "20240101000000+0200",
             "202401010000Z",
             "2401010000Z",
             "2024010100000Z",
             " 20240101000000Z",
             "20240101000000Z ",
             "2024-01-01 00:00:00:0000",
             "2024-01-01  00:00:00",
             "2024-1-1",
             "2024-01-01T00:00:00",
             "-024-01-01",
             "2024-01-01 00:00:00:00",
             "20240101",
         }) {
        const CCryptoDateTime time{CCryptoString(text)};
        EXPECT_FALSE(time.isValid()) << text;
        EXPECT_EQ(time, CCryptoDateTime()) << text;
    }
    EXPECT_FALSE(CCryptoDateTime(CCryptoString(std::string_view("2024-01-01\0", 11))).isValid());
}

TEST(DateTime, WritesTheAsn1Forms)
{
    constexpr struct {
        CalendarTime time;
        const char* utcTime;
        const char* generalizedTime;
    } cases[] = {
        {{2024, 2, 29, 7, 8, 9, 45}, "240229070809Z", "20240229070809.045Z"},
        {{1999, 12, 31, 23, 59, 59, 999}, "991231235959Z", "19991231235959.999Z"},
        {{2050, 12, 31, 23, 59, 59, 999}, "501231235959Z", "20501231235959.999Z"},
        {{2051, 1, 1, 0, 0, 0, 0}, "20510101000000Z", "20510101000000.000Z"},
        {{2023, 2, 29, 0, 0, 0, 0}, "", ""},
        {{2024, 2, 29, 0, 0, 60, 0}, "", ""},
        {{12024, 2, 29, 0, 0, 0, 0}, "", ""},
        {{2024, 2, 1, 0, 0, 0, -1}, "", ""},
        {{2024, -2147483647, 2147483647, 0, 0, 0, 0}, "", ""},
    };
    for (const auto& [fields, utcTime, generalizedTime] : cases) {
        const CCryptoDateTime time(fields, utc);
        SCOPED_TRACE(Show(time));
        EXPECT_EQ(Text(time.toUtcTime()), utcTime);
        EXPECT_EQ(Text(time.toGeneralizedTime(3)), generalizedTime);
        EXPECT_EQ(time.isValid(), *utcTime != '\0');
    }
    const CCryptoDateTime time({2024, 2, 29, 7, 8, 9, 45}, utc);
    EXPECT_EQ(Text(time.toGeneralizedTime()), "20240229070809Z");
    EXPECT_EQ(Text(time.toGeneralizedTime(1)), "20240229070809.0Z");
    EXPECT_EQ(Text(time.toGeneralizedTime(2)), "20240229070809.04Z");
    EXPECT_EQ(Text(time.toGeneralizedTime(4)), "20240229070809.0450Z");
    EXPECT_TRUE(time.toGeneralizedTime(5).isEmpty());
}

TEST(DateTime, CountsMillisecondsFrom1970)
{
    constexpr struct {
        CalendarTime time;
        std::int64_t milliseconds;
    } cases[] = {
        {{1970, 1, 1, 0, 0, 0, 0}, 0},
        {{1969, 12, 31, 23, 59, 59, 999}, -1},
        {{2001, 9, 9, 1, 46, 40, 5}, 1'000'000'000'005},
        {{2024, 2, 29, 12, 0, 0, 0}, 1'709'208'000'000},
        {{9999, 12, 31, 23, 59, 59, 999}, 253'402'300'799'999},
    };
    for (const auto& [time, milliseconds] : cases)
        EXPECT_EQ(CCryptoDateTime(time, utc).toMilliseconds(), milliseconds);
    EXPECT_EQ(CCryptoDateTime({2023, 2, 29, 0, 0, 0, 0}, utc).toMilliseconds(), std::nullopt);
    EXPECT_EQ(CCryptoDateTime().toMilliseconds(), std::nullopt);
}

TEST(DateTime, KeepsTheMomentBetweenUtcAndLocal)
{
    // One moment of every month and hour, in the zone of this machine whatever it is.
    for (std::int32_t month = 1; month <= 12; ++month) {
        for (std::int32_t hour = 0; hour < 24; ++hour) {
            const CCryptoDateTime time({2024, month, 17, hour, 30, 15, 678}, utc);
            const CCryptoDateTime there = time.toLocalDateTime();
            EXPECT_FALSE(there.isUtc());
            EXPECT_EQ(there.toUtcDateTime(), time) << Show(there);
            EXPECT_EQ(there.toMilliseconds(), time.toMilliseconds());
            EXPECT_EQ(there.toLocalDateTime(), there);
            EXPECT_EQ(Text(there.toGeneralizedTime(3)), Text(time.toGeneralizedTime(3)));
        }
    }
    const CCryptoDateTime now = CCryptoDateTime::Now();
    EXPECT_TRUE(now.isValid());
    EXPECT_FALSE(now.isUtc());
}

TEST(DateTime, SaysWhyItDoesNotConvert)
{
    constexpr CalendarTime noSuchDay{2024, 2, 30, 0, 0, 0, 0};
    {
        const CapturedLog log;
        EXPECT_FALSE(CCryptoDateTime(noSuchDay, local).toUtcDateTime().isValid());
        EXPECT_EQ(log.texts(),
                  (std::vector<std::string>{"CCryptoDateTime::toUtcDateTime - IN",
                                            "CCryptoDateTime::toUtcDateTime - OUT WITH ERROR", "ERROR: Failed to mktime()"}));
    }
    const CapturedLog log;
    EXPECT_FALSE(CCryptoDateTime(noSuchDay, utc).toLocalDateTime().isValid());
    EXPECT_EQ(log.texts(),
              (std::vector<std::string>{"CCryptoDateTime::toLocalDateTime - IN",
                                        "CCryptoDateTime::toLocalDateTime - OUT WITH ERROR", "ERROR: Failed to mktime()"}));
}
