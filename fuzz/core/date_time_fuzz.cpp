#include "core/log/date_format.h"
#include "core/system/date_time.h"
#include "fuzz/require.h"

#include <cstdint>
#include <string>
#include <string_view>

using namespace ccrypto;

namespace {

/// What was read is written in a form that reads the same.
void CheckText(std::string_view text)
{
    const CCryptoDateTime time{CCryptoString(text)};
    if (!time.isValid()) {
        Require(time == CCryptoDateTime());
        return;
    }
    Require(CCryptoDateTime(time.format(time.isUtc() ? "yyyyMMddHHmmss.fffZ" : "yyyyMMddHHmmss.fff")) == time);
    Require(!time.isUtc() || CCryptoDateTime(time.toGeneralizedTime(3)) == time);
}

/// Whatever the pattern and the fields, the text stays within its buffer.
void CheckPattern(const std::string& pattern, std::string_view text)
{
    platform::CalendarTime time{-2147483647, 2147483647, -1, 12, 34, 56, 2147483647};
    if (!ParseCalendarTime(text, pattern.c_str(), time))
        Require(time.year == -2147483647 && time.millisecond == 2147483647);
    TimeTextBuffer buffer;
    const std::string_view written = FormatCalendarTime(time, pattern.c_str(), buffer);
    Require(written.size() <= maxTimeText && buffer[written.size()] == '\0');
}

} // namespace

/// A text, and after a line feed a pattern for it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string_view text = input.substr(0, input.find('\n'));
    CheckText(text);
    if (text.size() < input.size())
        CheckPattern(std::string(input.substr(text.size() + 1)), text);
    return 0;
}
