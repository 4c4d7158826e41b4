#include "core/system/date_time.h"

#include "core/diagnostics/auto_logger.h"
#include "core/log/date_format.h"

#include <chrono>

using namespace ccrypto;

namespace {

using platform::CalendarTime;

struct TextForm {
    const char* pattern;
    bool utc;
};

/// The forms that are read. GeneralizedTime comes first, by the number of its fraction digits, and UTCTime after it.
constexpr TextForm forms[] = {
    {"yyyyMMddHHmmssZ", true},          {"yyyyMMddHHmmss.fZ", true},    {"yyyyMMddHHmmss.ffZ", true},
    {"yyyyMMddHHmmss.fffZ", true},      {"yyyyMMddHHmmss.ffffZ", true}, {"yyMMddHHmmssZ", true},
    {"yyyyMMddHHmmss.fff", false},      {"yyyyMMddHHmmss", false},      {"yyyy-MM-dd HH:mm:ss:fff ", false},
    {"yyyy-MM-dd HH:mm:ss:fff", false}, {"yyyy-MM-dd HH:mm:ss", false}, {"yyyy-MM-dd", false},
};
constexpr std::uint32_t maxFractionDigits = 4;
constexpr std::uint32_t utcTimeForm = 5;

/// X.509 ends UTCTime a year earlier. Stored data was written with 2050 in it and must read back.
constexpr std::int32_t lastUtcTimeYear = 2050;

std::chrono::year_month_day DateOf(const CalendarTime& time)
{
    return std::chrono::year(time.year) / time.month / time.day;
}

std::int64_t UtcToUnixSeconds(const CalendarTime& utc)
{
    using namespace std::chrono;
    const auto time = sys_days(DateOf(utc)) + hours(utc.hour) + minutes(utc.minute) + seconds(utc.second);
    return time.time_since_epoch().count();
}

bool LocalToUtc(const CalendarTime& local, CalendarTime& utc)
{
    std::int64_t seconds = 0;
    return platform::LocalToUnixSeconds(local, seconds) && platform::UnixSecondsToUtc(seconds, utc);
}

bool UtcToLocal(const CalendarTime& utc, CalendarTime& local)
{
    return platform::UnixSecondsToLocal(UtcToUnixSeconds(utc), local);
}

/// `time` in the other form, invalid when there is none.
CCryptoDateTime Convert(const CCryptoDateTime& time, bool (*convert)(const CalendarTime&, CalendarTime&), CCryptoAutoLogger& logger)
{
    CalendarTime fields;
    if (!time.isValid() || !convert(time.fields(), fields))
        return logger.fail(CCryptoDateTime(), "Failed to mktime()");

    // Zones differ by whole seconds.
    fields.millisecond = time.fields().millisecond;
    const CCryptoDateTime converted(fields, !time.isUtc());
    if (!converted.isValid())
        return logger.fail(CCryptoDateTime(), "Failed to mktime()");
    return logger.succeed(converted);
}

} // namespace

CCryptoDateTime::CCryptoDateTime(const CCryptoString& text)
{
    for (const TextForm& form : forms) {
        if (ParseCalendarTime(text.view(), form.pattern, fields_)) {
            utc_ = form.utc;
            break;
        }
    }
    if (!isValid())
        *this = CCryptoDateTime();
}

CCryptoDateTime CCryptoDateTime::Now()
{
    CalendarTime now = platform::LocalNow();
    if (now.second == 60)
        now.second = 59;
    return {now, false};
}

bool CCryptoDateTime::isValid() const
{
    const auto isWithin = [](std::int32_t field, std::int32_t last) { return field >= 0 && field <= last; };
    return isWithin(fields_.year, 9999) && isWithin(fields_.month, 12) && isWithin(fields_.day, 31) && DateOf(fields_).ok() &&
           isWithin(fields_.hour, 23) && isWithin(fields_.minute, 59) && isWithin(fields_.second, 59) &&
           isWithin(fields_.millisecond, 999);
}

CCryptoString CCryptoDateTime::format(const char* pattern) const
{
    TimeTextBuffer buffer;
    return CCryptoString(FormatCalendarTime(fields_, pattern, buffer));
}

std::partial_ordering CCryptoDateTime::operator<=>(const CCryptoDateTime& other) const
{
    if (utc_ == other.utc_)
        return fields_ <=> other.fields_;
    const std::optional<std::int64_t> moment = toMilliseconds();
    const std::optional<std::int64_t> otherMoment = moment ? other.toMilliseconds() : std::nullopt;
    if (!otherMoment)
        return std::partial_ordering::unordered;
    return *moment <=> *otherMoment;
}

std::optional<std::int64_t> CCryptoDateTime::toMilliseconds() const
{
    const CCryptoDateTime utc = toUtcDateTime();
    if (!utc.isValid())
        return std::nullopt;
    return UtcToUnixSeconds(utc.fields_) * 1000 + utc.fields_.millisecond;
}

CCryptoDateTime CCryptoDateTime::toLocalDateTime() const
{
    CCryptoAutoLogger logger("CCryptoDateTime::toLocalDateTime");
    return utc_ ? Convert(*this, UtcToLocal, logger) : logger.succeed(*this);
}

CCryptoDateTime CCryptoDateTime::toUtcDateTime() const
{
    CCryptoAutoLogger logger("CCryptoDateTime::toUtcDateTime");
    return utc_ ? logger.succeed(*this) : Convert(*this, LocalToUtc, logger);
}

CCryptoString CCryptoDateTime::toGeneralizedTime(std::uint32_t fractionDigits) const
{
    const CCryptoDateTime utc = toUtcDateTime();
    if (!utc.isValid() || fractionDigits > maxFractionDigits)
        return {};
    return utc.format(forms[fractionDigits].pattern);
}

CCryptoString CCryptoDateTime::toUtcTime() const
{
    const CCryptoDateTime utc = toUtcDateTime();
    if (!utc.isValid())
        return {};
    return utc.format(forms[utc.fields_.year <= lastUtcTimeYear ? utcTimeForm : 0].pattern);
}
