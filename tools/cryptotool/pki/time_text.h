#pragma once

#include "core/system/date_time.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Times of the command line and of what is printed, all of them UTC.

namespace ccrypto {

/// "2026-11-23T12:00:00Z", with a fraction of any length; what is finer than a millisecond counts as one when there is no other.
/// \return none for anything else.
[[nodiscard]] std::optional<CCryptoDateTime> ParseRfc3339(std::string_view text);

/// "2026-11-23T12:00:00Z", with milliseconds where there are any. Empty for an invalid time.
[[nodiscard]] std::string Rfc3339Text(const CCryptoDateTime& time);
/// "2026-11-23 12:00:00Z".
[[nodiscard]] std::string ReadableText(const CCryptoDateTime& time);

/// The present, in whole seconds.
[[nodiscard]] CCryptoDateTime UtcNow();
/// The time so many days later. Invalid for a time that no calendar has.
[[nodiscard]] CCryptoDateTime DaysLater(const CCryptoDateTime& time, std::uint64_t days);

} // namespace ccrypto
