#pragma once

#include "asn1/der/der_cursor.h"
#include "asn1/tree/element_node.h"
#include "core/system/date_time.h"

// The times of certificates, lists and messages (RFC 5280, 4.1.2.5): two digits 50 to 99 are a year of 19xx, unlike in
// CCryptoDateTime, whose boundary is 2050; whole seconds; "Z".

namespace ccrypto {

/// A UTCTime of YYMMDDHHMMSSZ, or a GeneralizedTime of YYYYMMDDHHMMSSZ. A GeneralizedTime may have a fraction where `fractions`.
/// \return an invalid time for anything else and for what no calendar has.
[[nodiscard]] CCryptoDateTime ReadX509Time(const DerItem& item, bool fractions = false);
[[nodiscard]] CCryptoDateTime ReadX509Time(const elementNode* node, bool fractions = false);

/// The word of the template language for the type in which a time is written: "UTCTime" to 2049, the word for a GeneralizedTime
/// from 2050 on and before 1950.
[[nodiscard]] const char* X509TimeTypeWord(const CCryptoDateTime& time);
/// The time's text in that type; empty for a time that is invalid or cannot be converted to UTC.
[[nodiscard]] CCryptoString X509TimeText(const CCryptoDateTime& time);

} // namespace ccrypto
