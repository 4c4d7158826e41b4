#pragma once

#include "core/platform/clock.h"

#include <array>
#include <cstddef>
#include <string_view>

/// Calendar times as text and back, by a pattern; neither direction allocates or logs.
///
/// | token          | written as                                | read as                                     |
/// |----------------|-------------------------------------------|---------------------------------------------|
/// | "yyyy"         | the year, at least 4 digits               | exactly 4 digits                            |
/// | "yy"           | the last two digits of the year           | 00 to 50 are 2000 to 2050, others 1951 up  |
/// | "MM" "dd"      | month, day, at least 2 digits             | exactly 2 digits                            |
/// | "HH" or "hh"   | the hour of 24, at least 2 digits         | exactly 2 digits                            |
/// | "mm" "ss"      | minute, second, at least 2 digits         | exactly 2 digits                            |
/// | "f" to "ffff"  | 1 to 4 decimals of the second             | as many digits; what is below 1 ms is lost  |
///
/// A null pattern is an empty one. Of the tokens that fit, the longest is taken. A token letter that forms no token, such as a
/// single "y", is malformed. All other characters stand for themselves.

namespace ccrypto {

constexpr std::size_t maxTimeText = 50;
using TimeTextBuffer = std::array<char, maxTimeText + 1>;

/// Writes `time` to `buffer`, zero-terminated; a malformed token becomes "<ERROR>". The fields are written as they are, in the
/// calendar or not. What exceeds the buffer is cut off.
/// \return the text without its terminator; it lies in `buffer`.
std::string_view FormatCalendarTime(const platform::CalendarTime& time, const char* pattern, TimeTextBuffer& buffer);

/// Reads `text`, which must fit the whole pattern; fields without a token become 0. The calendar is not consulted.
/// \return false, `time` untouched, when the text does not fit or the pattern is malformed.
[[nodiscard]] bool ParseCalendarTime(std::string_view text, const char* pattern, platform::CalendarTime& time);

} // namespace ccrypto
