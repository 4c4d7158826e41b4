#include "core/platform/clock.h"

#include "core/platform/runtime_calendar.h"

#include <windows.h>

#include <time.h>

namespace ccrypto::platform {

// The runtime knows the years 1970 to 3000 in UTC; local times at their edges lie outside in some zones.
const std::int64_t runtimeFirstYear = 1971;
const std::int64_t runtimeLastYear = 2999;
const std::int64_t runtimeFirstSecond = 31'536'000;    // 1971-01-01
const std::int64_t runtimeLastSecond = 32'472'144'000; // 2999-01-01

std::int64_t RuntimeMktime(tm& fields)
{
    return _mktime64(&fields);
}

bool RuntimeLocalTime(std::int64_t seconds, tm& fields)
{
    return _localtime64_s(&fields, &seconds) == 0;
}

bool RuntimeUtcTime(std::int64_t seconds, tm& fields)
{
    return _gmtime64_s(&fields, &seconds) == 0;
}

CalendarTime LocalNow()
{
    constexpr std::int64_t ticksPerSecond = 10'000'000;
    constexpr std::int64_t secondsFrom1601To1970 = 11'644'473'600;
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    const auto ticks = static_cast<std::int64_t>(std::uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime);
    // By way of the runtime, as all conversions: where the variable TZ is set its zone is not the system's.
    CalendarTime local;
    static_cast<void>(UnixSecondsToLocal(ticks / ticksPerSecond - secondsFrom1601To1970, local));
    local.millisecond = static_cast<std::int32_t>(ticks % ticksPerSecond / 10'000);
    return local;
}

std::int64_t MonotonicMilliseconds()
{
    return static_cast<std::int64_t>(GetTickCount64());
}

void SleepMilliseconds(std::uint32_t milliseconds)
{
    Sleep(milliseconds);
}

} // namespace ccrypto::platform
