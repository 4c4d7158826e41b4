#include "core/platform/clock.h"

#include <gtest/gtest.h>

#include <ctime>

using namespace ccrypto;

using platform::CalendarTime;

namespace {

std::string Text(const CalendarTime& time)
{
    return std::to_string(time.year) + '-' + std::to_string(time.month) + '-' + std::to_string(time.day) + ' ' +
           std::to_string(time.hour) + ':' + std::to_string(time.minute) + ':' + std::to_string(time.second) + '.' +
           std::to_string(time.millisecond);
}

} // namespace

TEST(Clock, SecondsBecomeUtc)
{
    struct {
        std::int64_t seconds;
        const char* text;
    } const cases[] = {
        {0, "1970-1-1 0:0:0.0"},           {951782399, "2000-2-28 23:59:59.0"},
        {951782400, "2000-2-29 0:0:0.0"},  {2147483648, "2038-1-19 3:14:8.0"},
        {-1, "1969-12-31 23:59:59.0"},     {-62167219200, "0-1-1 0:0:0.0"},
        {32535216000, "3001-1-1 0:0:0.0"}, {253402300799, "9999-12-31 23:59:59.0"},
    };
    for (const auto& [seconds, text] : cases) {
        CalendarTime utc;
        ASSERT_TRUE(platform::UnixSecondsToUtc(seconds, utc));
        EXPECT_EQ(Text(utc), text);
    }
}

TEST(Clock, LocalTimeComesBack)
{
    // Half a year apart, so that one of them is in summer time where there is one.
    for (const std::int64_t seconds :
         {1700000000LL, 1715000000LL, 2200000000LL, 0LL, -1LL, -2208988800LL, -2190000000LL, 32503680000LL, 253402300799LL}) {
        CalendarTime local;
        ASSERT_TRUE(platform::UnixSecondsToLocal(seconds, local));
        std::int64_t back = 0;
        ASSERT_TRUE(platform::LocalToUnixSeconds(local, back));
        EXPECT_EQ(back, seconds);
    }
}

TEST(Clock, WhatTheCalendarCannotHoldIsRefused)
{
    CalendarTime time;
    EXPECT_FALSE(platform::UnixSecondsToUtc(INT64_MAX, time));
    EXPECT_FALSE(platform::UnixSecondsToLocal(INT64_MAX, time));
    std::int64_t seconds = 0;
    EXPECT_FALSE(platform::LocalToUnixSeconds({INT32_MIN, 1, 1, 0, 0, 0, 0}, seconds));
    EXPECT_FALSE(platform::LocalToUnixSeconds({2024, INT32_MIN, 1, 0, 0, 0, 0}, seconds));
}

TEST(Clock, NowIsNow)
{
    const std::int64_t before = std::time(nullptr);
    const CalendarTime now = platform::LocalNow();
    const std::int64_t after = std::time(nullptr);
    std::int64_t seconds = 0;
    ASSERT_TRUE(platform::LocalToUnixSeconds(now, seconds));
    EXPECT_GE(seconds, before);
    EXPECT_LE(seconds, after);
    EXPECT_GE(now.millisecond, 0);
    EXPECT_LE(now.millisecond, 999);
}

TEST(Clock, SleepTakesAtLeastItsTime)
{
    const std::int64_t before = platform::MonotonicMilliseconds();
    platform::SleepMilliseconds(40);
    // The clock of Windows moves in steps of 10 to 16 ms.
    EXPECT_GE(platform::MonotonicMilliseconds() - before, 20);
}
