#pragma once

#include <compare>
#include <cstdint>

namespace ccrypto::platform {

/// A time of day in the calendar: month 1 to 12, day 1 to 31, second 0 to 60.
struct CalendarTime {
    std::int32_t year = 0;
    std::int32_t month = 0;
    std::int32_t day = 0;
    std::int32_t hour = 0;
    std::int32_t minute = 0;
    std::int32_t second = 0;
    std::int32_t millisecond = 0;

    /// By the fields, the year first.
    auto operator<=>(const CalendarTime& other) const = default;
};

/// The present in the zone of this machine.
[[nodiscard]] CalendarTime LocalNow();

/// Milliseconds of a clock that never goes backwards; its start has no meaning.
[[nodiscard]] std::int64_t MonotonicMilliseconds();

/// Seconds since 1970-01-01 00:00:00 UTC of a local calendar time, daylight saving found out by the system; milliseconds are left
/// out. A year that the system cannot convert is taken for one within its reach that is a multiple of 400 years away.
/// \return false when the time cannot be represented.
[[nodiscard]] bool LocalToUnixSeconds(const CalendarTime& local, std::int64_t& seconds);

/// The two ways back; `millisecond` of the result is 0. \return false for a year beyond 32 bits.
[[nodiscard]] bool UnixSecondsToLocal(std::int64_t seconds, CalendarTime& local);
[[nodiscard]] bool UnixSecondsToUtc(std::int64_t seconds, CalendarTime& utc);

/// Ends the calling thread's time slice for at least `milliseconds`.
void SleepMilliseconds(std::uint32_t milliseconds);

} // namespace ccrypto::platform
