#include "core/platform/clock.h"

#include "core/platform/runtime_calendar.h"

#include <limits>

namespace ccrypto::platform {

namespace {

/// The Gregorian calendar repeats after 400 years to the day of the week, and so do the rules of summer time as far as they are
/// known for years that far away.
constexpr std::int64_t yearsPerCycle = 400;
constexpr std::int64_t secondsPerCycle = 146097LL * 24 * 60 * 60;

/// Far outside of the years that 32 bits hold.
constexpr std::int64_t maxSeconds = std::int64_t{1} << 58;

/// How many cycles `value` lies beyond the places from `first` to `last`; negative before them.
std::int64_t CyclesBeyond(std::int64_t value, std::int64_t first, std::int64_t last, std::int64_t cycle)
{
    if (value < first)
        return -((first - value + cycle - 1) / cycle);
    return value > last ? (value - last + cycle - 1) / cycle : 0;
}

bool FromFields(const tm& fields, std::int64_t cycles, CalendarTime& time)
{
    const std::int64_t year = std::int64_t{fields.tm_year} + 1900 + cycles * yearsPerCycle;
    if (year < std::numeric_limits<std::int32_t>::min() || year > std::numeric_limits<std::int32_t>::max())
        return false;
    time = {static_cast<std::int32_t>(year), fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec, 0};
    return true;
}

bool FromSeconds(std::int64_t seconds, bool (*convert)(std::int64_t, tm&), CalendarTime& time)
{
    if (seconds < -maxSeconds || seconds > maxSeconds)
        return false;
    const std::int64_t cycles = CyclesBeyond(seconds, runtimeFirstSecond, runtimeLastSecond, secondsPerCycle);
    tm fields{};
    return convert(seconds - cycles * secondsPerCycle, fields) && FromFields(fields, cycles, time);
}

} // namespace

bool LocalToUnixSeconds(const CalendarTime& local, std::int64_t& seconds)
{
    tm fields{};
    if (__builtin_sub_overflow(local.year, 1900, &fields.tm_year) || __builtin_sub_overflow(local.month, 1, &fields.tm_mon))
        return false;
    const std::int64_t cycles = CyclesBeyond(local.year, runtimeFirstYear, runtimeLastYear, yearsPerCycle);
    fields.tm_year -= static_cast<int>(cycles * yearsPerCycle);
    fields.tm_mday = local.day;
    fields.tm_hour = local.hour;
    fields.tm_min = local.minute;
    fields.tm_sec = local.second;
    fields.tm_isdst = -1;
    // -1 is a time, too; only a success sets the day of the week.
    fields.tm_wday = -1;
    const std::int64_t result = RuntimeMktime(fields);
    if (result == -1 && fields.tm_wday == -1)
        return false;
    seconds = result + cycles * secondsPerCycle;
    return true;
}

bool UnixSecondsToLocal(std::int64_t seconds, CalendarTime& local)
{
    return FromSeconds(seconds, RuntimeLocalTime, local);
}

bool UnixSecondsToUtc(std::int64_t seconds, CalendarTime& utc)
{
    return FromSeconds(seconds, RuntimeUtcTime, utc);
}

} // namespace ccrypto::platform
