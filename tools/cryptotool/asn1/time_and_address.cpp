#include "tools/cryptotool/asn1/time_and_address.h"

#include "core/base/ascii.h"

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstdio>

namespace ccrypto {

namespace {

constexpr std::size_t ipv4Size = 4;
constexpr std::size_t ipv6Size = 16;

/// Reads the digits of a time from its front.
class TimeReader {
public:
    explicit TimeReader(std::string_view text) : rest_(text) {}

    /// \return -1 when there are not as many digits.
    int number(std::size_t digits)
    {
        if (rest_.size() < digits || !std::ranges::all_of(rest_.substr(0, digits), IsDigit))
            return -1;
        int value = 0;
        for (const char digit : rest_.substr(0, digits))
            value = value * 10 + (digit - '0');
        rest_.remove_prefix(digits);
        return value;
    }
    bool hasDigit() const { return !rest_.empty() && IsDigit(rest_.front()); }
    /// The fraction with its point, which may be a comma; empty when there is none.
    std::string fraction()
    {
        if (rest_.size() < 2 || (rest_[0] != '.' && rest_[0] != ',') || !IsDigit(rest_[1]))
            return {};
        const auto end = std::ranges::find_if_not(rest_.substr(1), IsDigit) - rest_.begin();
        const std::string digits = "." + std::string(rest_.substr(1, static_cast<std::size_t>(end) - 1));
        rest_.remove_prefix(static_cast<std::size_t>(end));
        return digits;
    }
    /// "Z", "+02:00", or empty for local time. \return false for anything else.
    bool zone(std::string& text)
    {
        if (rest_.empty() || rest_ == "Z") {
            text = rest_;
            return true;
        }
        const char sign = rest_.front();
        rest_.remove_prefix(1);
        const int hours = number(2);
        const int minutes = rest_.empty() ? 0 : number(2);
        text = Formatted("%c%02d:%02d", sign, hours, minutes);
        return (sign == '+' || sign == '-') && rest_.empty() && hours >= 0 && hours < 24 && minutes >= 0 && minutes < 60;
    }

    template <typename... Values>
    static std::string Formatted(const char* format, Values... values)
    {
        char text[64];
        std::snprintf(text, sizeof text, format, values...);
        return text;
    }

private:
    std::string_view rest_;
};

std::string Ipv4Text(std::span<const std::uint8_t> value)
{
    std::string text;
    for (const std::uint8_t byte : value)
        text += (text.empty() ? "" : ".") + std::to_string(byte);
    return text;
}

/// RFC 5952, 4: the first of the longest runs of two zero groups or more is "::".
std::string Ipv6Text(std::span<const std::uint8_t> value)
{
    constexpr std::size_t groupCount = ipv6Size / 2;
    std::array<unsigned, groupCount> groups{};
    for (std::size_t i = 0; i < groupCount; ++i)
        groups[i] = static_cast<unsigned>(value[2 * i] << 8 | value[2 * i + 1]);
    std::size_t start = 0;
    std::size_t length = 1;
    for (std::size_t i = 0; i < groupCount; ++i) {
        std::size_t end = i;
        while (end < groupCount && groups[end] == 0)
            ++end;
        if (end - i > length) {
            start = i;
            length = end - i;
        }
    }
    std::string text;
    for (std::size_t i = 0; i < groupCount; ++i) {
        if (length > 1 && i == start) {
            text += "::";
            i += length - 1;
            continue;
        }
        if (!text.empty() && !text.ends_with(':'))
            text += ':';
        text += TimeReader::Formatted("%x", groups[i]);
    }
    return text;
}

std::string OneAddress(std::span<const std::uint8_t> value)
{
    return value.size() == ipv4Size ? Ipv4Text(value) : Ipv6Text(value);
}

/// How many ones the mask begins with; -1 when other ones follow.
int PrefixLength(std::span<const std::uint8_t> mask)
{
    int length = 0;
    bool isOver = false;
    for (const std::uint8_t byte : mask) {
        const int ones = std::countl_one(byte);
        if ((isOver && byte != 0) || static_cast<std::uint8_t>(byte << ones) != 0)
            return -1;
        length += ones;
        isOver = ones < 8;
    }
    return length;
}

} // namespace

std::string TimeText(ElementType type, std::string_view value)
{
    const bool isShort = type == ElementType::utcTime;
    if (!isShort && type != ElementType::generalizedType)
        return {};
    TimeReader reader(value);
    int year = reader.number(isShort ? 2 : 4);
    if (isShort && year >= 0)
        year += year < 50 ? 2000 : 1900;
    const int month = reader.number(2);
    const int day = reader.number(2);
    const int hour = reader.number(2);
    // GeneralizedTime may end after the hours, both may after the minutes.
    const int minute = isShort || reader.hasDigit() ? reader.number(2) : 0;
    const int second = reader.hasDigit() ? reader.number(2) : 0;
    const std::string fraction = isShort ? std::string() : reader.fraction();
    const std::chrono::year_month_day date(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day)));
    const bool isDay = year >= 0 && month > 0 && day > 0 && date.ok();
    const bool isTime = hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second <= 60;
    std::string zone;
    if (!isDay || !isTime || !reader.zone(zone))
        return {};
    return TimeReader::Formatted("%04d-%02d-%02dT%02d:%02d:%02d", year, month, day, hour, minute, second) + fraction + zone;
}

std::string ReadableTime(const std::string& time)
{
    constexpr std::size_t dateLength = 10;
    constexpr std::size_t secondLength = 19;
    std::string text = time;
    text[dateLength] = ' ';
    const std::size_t zone = text.find_first_of("Z+-", secondLength);
    if (zone == std::string::npos)
        return text + " local time";
    return text.substr(0, zone) + (text[zone] == 'Z' ? " UTC" : " UTC" + text.substr(zone));
}

std::string AddressText(std::span<const std::uint8_t> value, bool isRange)
{
    const std::size_t size = isRange ? value.size() / 2 : value.size();
    if ((size != ipv4Size && size != ipv6Size) || value.size() != (isRange ? 2 * size : size))
        return {};
    if (!isRange)
        return OneAddress(value);
    const auto mask = value.subspan(size);
    const int prefix = PrefixLength(mask);
    return OneAddress(value.first(size)) + "/" + (prefix >= 0 ? std::to_string(prefix) : OneAddress(mask));
}

} // namespace ccrypto
