#pragma once

#include <time.h>

#include <cstdint>

/// The conversions of the runtime library, and how far each system's reach. Other years are mapped to some within.
namespace ccrypto::platform {

/// Whole years in every zone.
extern const std::int64_t runtimeFirstYear;
extern const std::int64_t runtimeLastYear;
/// Seconds since 1970 that are local times in every zone.
extern const std::int64_t runtimeFirstSecond;
extern const std::int64_t runtimeLastSecond;

/// mktime; -1 with `tm_wday` untouched when the runtime cannot convert the time.
std::int64_t RuntimeMktime(tm& fields);
bool RuntimeLocalTime(std::int64_t seconds, tm& fields);
bool RuntimeUtcTime(std::int64_t seconds, tm& fields);

} // namespace ccrypto::platform
