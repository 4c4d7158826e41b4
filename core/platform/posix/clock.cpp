#include "core/platform/clock.h"

#include "core/platform/runtime_calendar.h"

#include <errno.h>
#include <time.h>

#include <limits>

namespace ccrypto::platform {

const std::int64_t runtimeFirstYear = std::numeric_limits<std::int32_t>::min();
const std::int64_t runtimeLastYear = std::numeric_limits<std::int32_t>::max();
const std::int64_t runtimeFirstSecond = std::numeric_limits<std::int64_t>::min();
const std::int64_t runtimeLastSecond = std::numeric_limits<std::int64_t>::max();

std::int64_t RuntimeMktime(tm& fields)
{
    return mktime(&fields);
}

bool RuntimeLocalTime(std::int64_t seconds, tm& fields)
{
    const time_t time = seconds;
    return localtime_r(&time, &fields) != nullptr;
}

bool RuntimeUtcTime(std::int64_t seconds, tm& fields)
{
    const time_t time = seconds;
    return gmtime_r(&time, &fields) != nullptr;
}

CalendarTime LocalNow()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    CalendarTime local;
    static_cast<void>(UnixSecondsToLocal(now.tv_sec, local));
    local.millisecond = static_cast<std::int32_t>(now.tv_nsec / 1000000);
    return local;
}

std::int64_t MonotonicMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

void SleepMilliseconds(std::uint32_t milliseconds)
{
    timespec left{static_cast<time_t>(milliseconds / 1000), static_cast<long>(milliseconds % 1000) * 1000000};
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {}
}

} // namespace ccrypto::platform
