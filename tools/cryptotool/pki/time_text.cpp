#include "tools/cryptotool/pki/time_text.h"

#include "core/base/ascii.h"
#include "core/platform/clock.h"

#include <cstdint>
#include <cstdio>

namespace ccrypto {

namespace {

/// Takes the digits of a number and the character after them off the front. \return false when they are not there.
bool TakeNumber(std::string_view& text, std::size_t digits, char after, std::int32_t& number)
{
    if (text.size() <= digits || text[digits] != after)
        return false;
    number = 0;
    for (const char digit : text.substr(0, digits)) {
        if (!IsDigit(digit))
            return false;
        number = number * 10 + (digit - '0');
    }
    text.remove_prefix(digits + 1);
    return true;
}

/// The milliseconds of the digits after the point. A fraction that is finer is after the second all the same.
bool ReadFraction(std::string_view digits, std::int32_t& milliseconds)
{
    bool isNonzero = false;
    std::int32_t unit = 100;
    for (const char digit : digits) {
        if (!IsDigit(digit))
            return false;
        isNonzero = isNonzero || digit != '0';
        milliseconds += unit * (digit - '0');
        unit /= 10;
    }
    if (isNonzero && milliseconds == 0)
        milliseconds = 1;
    return !digits.empty();
}

std::string Formatted(const CCryptoDateTime& time, char between)
{
    if (!time.isValid())
        return {};
    const platform::CalendarTime& fields = time.fields();
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d%c%02d:%02d:%02d", fields.year, fields.month, fields.day, between, fields.hour,
                  fields.minute, fields.second);
    char fraction[16] = "";
    if (fields.millisecond != 0)
        std::snprintf(fraction, sizeof fraction, ".%03d", fields.millisecond);
    return std::string(text) + fraction + "Z";
}

} // namespace

std::optional<CCryptoDateTime> ParseRfc3339(std::string_view text)
{
    platform::CalendarTime fields;
    const bool hasFraction = text.find('.') != std::string_view::npos;
    const bool isRead = TakeNumber(text, 4, '-', fields.year) && TakeNumber(text, 2, '-', fields.month) &&
                        TakeNumber(text, 2, 'T', fields.day) && TakeNumber(text, 2, ':', fields.hour) &&
                        TakeNumber(text, 2, ':', fields.minute) && TakeNumber(text, 2, hasFraction ? '.' : 'Z', fields.second);
    if (!isRead)
        return std::nullopt;
    if (hasFraction && (!text.ends_with('Z') || !ReadFraction(text.substr(0, text.size() - 1), fields.millisecond)))
        return std::nullopt;
    const CCryptoDateTime time(fields, true);
    return time.isValid() && (hasFraction || text.empty()) ? std::optional(time) : std::nullopt;
}

std::string Rfc3339Text(const CCryptoDateTime& time)
{
    return Formatted(time, 'T');
}

std::string ReadableText(const CCryptoDateTime& time)
{
    return Formatted(time, ' ');
}

CCryptoDateTime UtcNow()
{
    platform::CalendarTime fields = CCryptoDateTime::Now().toUtcDateTime().fields();
    fields.millisecond = 0;
    return {fields, true};
}

CCryptoDateTime DaysLater(const CCryptoDateTime& time, std::uint64_t days)
{
    constexpr std::uint64_t maxDays = 3'652'424; // of ten thousand years
    constexpr std::int64_t secondsOfDay = 86'400;
    const std::optional<std::int64_t> milliseconds = time.toMilliseconds();
    platform::CalendarTime fields;
    if (!milliseconds || days > maxDays ||
        !platform::UnixSecondsToUtc(*milliseconds / 1000 + static_cast<std::int64_t>(days) * secondsOfDay, fields))
        return {};
    return {fields, true};
}

} // namespace ccrypto
