#include "core/platform/clock.h"

#include <errno.h>
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
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    CalendarTime local;
    UnixSecondsToLocal(now.tv_sec, local);
    local.millisecond = static_cast<std::int32_t>(now.tv_nsec / 1000000);
    return local;
}

std::int64_t MonotonicMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
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
    const time_t result = mktime(&fields);
    if (result == -1 && fields.tm_wday == -1)
        return false;
    seconds = result;
    return true;
}

bool UnixSecondsToLocal(std::int64_t seconds, CalendarTime& local)
{
    const time_t time = seconds;
    tm fields{};
    // The runtime counts years from 1900, so the last ones it knows do not fit when counted from 0.
    if (localtime_r(&time, &fields) == nullptr || fields.tm_year > INT32_MAX - 1900)
        return false;
    FromFields(fields, local);
    return true;
}

bool UnixSecondsToUtc(std::int64_t seconds, CalendarTime& utc)
{
    const time_t time = seconds;
    tm fields{};
    if (gmtime_r(&time, &fields) == nullptr || fields.tm_year > INT32_MAX - 1900)
        return false;
    FromFields(fields, utc);
    return true;
}

void SleepMilliseconds(std::uint32_t milliseconds)
{
    timespec left{static_cast<time_t>(milliseconds / 1000), static_cast<long>(milliseconds % 1000) * 1000000};
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {}
}

} // namespace ccrypto::platform
