#include "core/platform/clock.h"

#include <windows.h>

#include <time.h>

namespace ccrypto::platform {

namespace {

void FromFields(const tm& fields, CalendarTime& time)
{
    time = {fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec, 0};
}

} // namespace

CalendarTime LocalNow()
{
    constexpr std::int64_t ticksPerSecond = 10'000'000;
    constexpr std::int64_t secondsFrom1601To1970 = 11'644'473'600;
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    const auto ticks = static_cast<std::int64_t>(std::uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime);
    // By way of the runtime, as all conversions: where the variable TZ is set its zone is not the system's.
    CalendarTime local;
    UnixSecondsToLocal(ticks / ticksPerSecond - secondsFrom1601To1970, local);
    local.millisecond = static_cast<std::int32_t>(ticks % ticksPerSecond / 10'000);
    return local;
}

std::int64_t MonotonicMilliseconds()
{
    return static_cast<std::int64_t>(GetTickCount64());
}

bool LocalToUnixSeconds(const CalendarTime& local, std::int64_t& seconds)
{
    tm fields{};
    if (__builtin_sub_overflow(local.year, 1900, &fields.tm_year) || __builtin_sub_overflow(local.month, 1, &fields.tm_mon))
        return false;
    fields.tm_mday = local.day;
    fields.tm_hour = local.hour;
    fields.tm_min = local.minute;
    fields.tm_sec = local.second;
    fields.tm_isdst = -1;
    // -1 is a time, too; only a success sets the day of the week.
    fields.tm_wday = -1;
    const __time64_t result = _mktime64(&fields);
    if (result == -1 && fields.tm_wday == -1)
        return false;
    seconds = result;
    return true;
}

bool UnixSecondsToLocal(std::int64_t seconds, CalendarTime& local)
{
    const __time64_t time = seconds;
    tm fields{};
    if (_localtime64_s(&fields, &time) != 0)
        return false;
    FromFields(fields, local);
    return true;
}

bool UnixSecondsToUtc(std::int64_t seconds, CalendarTime& utc)
{
    const __time64_t time = seconds;
    tm fields{};
    if (_gmtime64_s(&fields, &time) != 0)
        return false;
    FromFields(fields, utc);
    return true;
}

void SleepMilliseconds(std::uint32_t milliseconds)
{
    Sleep(milliseconds);
}

} // namespace ccrypto::platform
