#pragma once

#include "core/text/element_type.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace ccrypto {

/// The time of a UTCTime (two-digit years are 1950 to 2049; RFC 5280, 4.1.2.5.1) or GeneralizedTime in the form of RFC 3339:
/// "2026-11-23T12:38:18Z", without a zone for local time. Empty for other types and for what the calendar does not have.
std::string TimeText(ElementType type, std::string_view value);
/// The same for a person: "2026-11-23 12:38:18 UTC".
std::string ReadableTime(const std::string& time);

/// The value of a GeneralName iPAddress (RFC 5280, 4.2.1.6): "10.0.0.1", or an IPv6 address in the form of RFC 5952.
/// \param isRange an address and a mask (4.2.1.10): "10.0.0.0/8", or with the mask in full where it is not a prefix.
/// \return empty for any other length.
std::string AddressText(std::span<const std::uint8_t> value, bool isRange);

} // namespace ccrypto
