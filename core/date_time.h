#pragma once

#include "core/platform/clock.h"
#include "core/string.h"

#include <cstdint>

/// A calendar time, local or UTC: month 1 to 12, day 1 to 31, milliseconds. A default-constructed one is all zeros and invalid.
class CCryptoDateTime {
public:
    CCryptoDateTime() = default;
    CCryptoDateTime(const CCryptoDateTime& other) = default;
    CCryptoDateTime& operator=(const CCryptoDateTime& other) = default;
    CCryptoDateTime(const platform::CalendarTime& fields, bool utc) : fields_(fields), utc_(utc) {}
    virtual ~CCryptoDateTime() = default;

    /// The present, local.
    static CCryptoDateTime Now();
    /// Reads every form that this class writes: the GeneralizedTime and UTCTime forms (UTC), "yyyyMMddHHmmss.fff", the log forms
    /// "yyyy-MM-dd HH:mm:ss:fff" and the same without milliseconds or time of day. Strict: a date that the calendar does not have
    /// is refused.
    explicit CCryptoDateTime(const CCryptoString& text);

    bool isValid() const;
    bool isUtc() const { return utc_; }
    const platform::CalendarTime& fields() const { return fields_; }

    /// "yyyy" "yy" "MM" "dd" "HH" "hh" "mm" "ss" "fff" "ff" "f" are replaced, other characters copied; a malformed token gives
    /// "<ERROR>". At most 50 characters.
    CCryptoString format(const char* pattern) const;
    /// Milliseconds since 1970-01-01 UTC; -1, logged, when the system cannot convert the time.
    std::int64_t toMilliseconds() const;
    /// The same moment in the other form; an invalid time, logged, when the system cannot convert it.
    CCryptoDateTime toLocalDateTime() const;
    CCryptoDateTime toUtcDateTime() const;

    /// GeneralizedTime (X.680, 46) with 0 to 4 fraction digits, for a UTC time.
    CCryptoString toGeneralizedTime(std::uint32_t fractionDigits = 0) const;
    /// UTCTime (X.680, 47) up to the year 2050, GeneralizedTime from 2051 on.
    CCryptoString toUtcTime() const;

    bool operator==(const CCryptoDateTime& other) const;

private:
    platform::CalendarTime fields_;
    bool utc_ = false;
};
