#include "core/system/date_time.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <optional>
#include <string>

namespace {

/// Moves this process to another zone for its scope.
class Zone {
public:
    explicit Zone(const char* rule)
    {
        if (const char* const zone = getenv("TZ"))
            before_ = zone;
        setenv("TZ", rule, 1);
        tzset();
    }
    ~Zone()
    {
        if (before_)
            setenv("TZ", before_->c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }
    Zone(const Zone&) = delete;
    Zone& operator=(const Zone&) = delete;

private:
    std::optional<std::string> before_;
};

std::string Compact(const CCryptoDateTime& time)
{
    return std::string(time.format("yyyyMMddHHmmss.fff").view());
}

} // namespace

TEST(DateTimeZone, FollowsDaylightSaving)
{
    constexpr struct {
        const char* zone;
        const char* utc;
        const char* local;
        bool isUnique;
    } cases[] = {
        {"EET-2EEST,M3.5.0/3,M10.5.0/4", "20240115120000.5Z", "20240115140000.500", true},
        {"EET-2EEST,M3.5.0/3,M10.5.0/4", "20240331005959.9Z", "20240331025959.900", true},
        {"EET-2EEST,M3.5.0/3,M10.5.0/4", "20240331010000.0Z", "20240331040000.000", true},
        {"EET-2EEST,M3.5.0/3,M10.5.0/4", "20241027000000.0Z", "20241027030000.000", false},
        {"EET-2EEST,M3.5.0/3,M10.5.0/4", "20241027020000.0Z", "20241027040000.000", true},
        {"EST5EDT,M3.2.0,M11.1.0", "20240101030000.0Z", "20231231220000.000", true},
        {"EST5EDT,M3.2.0,M11.1.0", "20240704030000.0Z", "20240703230000.000", true},
        {"LHST-10:30LHDT-11,M10.1.0,M4.1.0", "20240228140000.0Z", "20240229010000.000", true},
    };
    for (const auto& [rule, utcText, localText, isUnique] : cases) {
        SCOPED_TRACE(utcText);
        const Zone zone(rule);
        const CCryptoDateTime utc{CCryptoString(utcText)};
        EXPECT_EQ(Compact(utc.toLocalDateTime()), localText);
        if (isUnique) {
            EXPECT_EQ(CCryptoDateTime(CCryptoString(localText)).toUtcDateTime(), utc);
        }
    }
}

TEST(DateTimeZone, DecidesTheYearOfUtcTime)
{
    const Zone zone("EST5");
    EXPECT_EQ(CCryptoDateTime(CCryptoString("20501231190000.000")).toUtcTime(), "20510101000000Z");
    EXPECT_EQ(CCryptoDateTime(CCryptoString("20501231185959.000")).toUtcTime(), "501231235959Z");
    EXPECT_TRUE(CCryptoDateTime(CCryptoString("9999-12-31 19:00:00")).toUtcTime().isEmpty());
}
