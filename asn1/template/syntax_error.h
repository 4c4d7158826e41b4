#pragma once

#include "asn1/text/text_cursor.h"

namespace ccrypto {

/// "%s; row=%d,col=%d" with the place of the token scanned last.
CCryptoString AtPlaceOf(const ccrypto::internal::TextCursor& cursor, const CCryptoString& message);
/// "Parsing failed; Token not expected: %s (token=%d)" with its place; "Parsing failed; Token not expected?" for a token without
/// text.
CCryptoString NotExpected(const ccrypto::internal::TextCursor& cursor, const element& token);

} // namespace ccrypto
