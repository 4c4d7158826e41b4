#pragma once

#include "asn1/template/lexical_analyzer.h"

namespace ccrypto {

/// "%s; row=%d,col=%d" with the place of the token scanned last.
CCryptoString AtPlaceOf(const CCryptoLexicalAnalyzer& lexer, const CCryptoString& message);
/// "Parsing failed; Token not expected: %s (token=%d)" at its place, or "Parsing failed; Token not expected?" for a token without a
/// text.
CCryptoString NotExpected(const CCryptoLexicalAnalyzer& lexer, const element& token);

} // namespace ccrypto
