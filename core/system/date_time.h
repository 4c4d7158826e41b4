#pragma once

#include "core/platform/clock.h"
#include "core/text/string.h"

#include <compare>
#include <cstdint>
#include <optional>

/// A calendar time to the millisecond, local or UTC. A default-constructed one is all zeros and invalid.
class CCryptoDateTime {
public:
    CCryptoDateTime() = default;
    CCryptoDateTime(const ccrypto::platform::CalendarTime& fields, bool utc) : fields_(fields), utc_(utc) {}
    /// Reads these forms alone:
    ///
    /// | form                                                     | time  |
    /// |----------------------------------------------------------|-------|
    /// | GeneralizedTime with 0 to 4 fraction digits              | UTC   |
    /// | UTCTime, two-digit years are 1951 to 2050                | UTC   |
    /// | "yyyyMMddHHmmss.fff" and "yyyyMMddHHmmss"                | local |
    /// | "yyyy-MM-dd HH:mm:ss:fff", with or without a blank after it | local |
    /// | "yyyy-MM-dd HH:mm:ss" and "yyyy-MM-dd"                   | local |
    ///
    /// Any other text, or a date that the calendar does not have, gives an invalid time.
    explicit CCryptoDateTime(const CCryptoString& text);
    CCryptoDateTime(const CCryptoDateTime& other) = default;
    CCryptoDateTime& operator=(const CCryptoDateTime& other) = default;
    virtual ~CCryptoDateTime() = default;

    /// The present, local.
    [[nodiscard]] static CCryptoDateTime Now();

    /// \return whether the calendar has this time: years 0 to 9999, seconds 0 to 59. A leap second has no place in the count of
    /// seconds that the systems keep, so second 60 is refused.
    [[nodiscard]] bool isValid() const;
    bool isUtc() const { return utc_; }
    const ccrypto::platform::CalendarTime& fields() const { return fields_; }

    /// The fields by a pattern, which core/log/date_format.h explains; at most 50 characters. An invalid time is written unchanged.
    [[nodiscard]] CCryptoString format(const char* pattern) const;

    /// Milliseconds since 1970-01-01 00:00:00 UTC; none when toUtcDateTime() fails or the time is invalid.
    [[nodiscard]] std::optional<std::int64_t> toMilliseconds() const;
    /// The same moment in the other form; an invalid time, logged as "Failed to mktime()", when the system cannot convert it. Of
    /// the two moments that a local time means when clocks are set back the system picks one, and one that clocks skip it moves.
    [[nodiscard]] CCryptoDateTime toLocalDateTime() const;
    [[nodiscard]] CCryptoDateTime toUtcDateTime() const;

    /// GeneralizedTime (X.680, 46) of the moment in UTC, with `fractionDigits` digits, trailing zeros among them. \return empty
    /// when the time cannot be written: it is invalid, cannot be converted, or more than 4 digits are asked for.
    [[nodiscard]] CCryptoString toGeneralizedTime(std::uint32_t fractionDigits = 0) const;
    /// UTCTime (X.680, 47) up to the year 2050, GeneralizedTime without a fraction from 2051 on. Two digits hold no century: a year
    /// of 1950 or earlier reads back as one of 1951 to 2050. \return empty as above.
    [[nodiscard]] CCryptoString toUtcTime() const;

    /// Two times of one form by their fields, a local and a UTC time by the moments they mean; an invalid time has no order with
    /// one of the other form.
    std::partial_ordering operator<=>(const CCryptoDateTime& other) const;
    bool operator==(const CCryptoDateTime& other) const { return (*this <=> other) == 0; }

private:
    ccrypto::platform::CalendarTime fields_;
    bool utc_ = false;
};
