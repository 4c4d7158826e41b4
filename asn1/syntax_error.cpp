#include "asn1/syntax_error.h"

#include <cstdio>

CCryptoString AtPlaceOf(const CCryptoLexicalAnalyzer& lexer, const CCryptoString& message)
{
    char place[48];
    std::snprintf(place, sizeof place, "; row=%u,col=%u", lexer.row(), lexer.column());
    return message + place;
}

CCryptoString NotExpected(const CCryptoLexicalAnalyzer& lexer, const element& token)
{
    const char* const text = TokenText(token.type());
    if (text == nullptr)
        return AtPlaceOf(lexer, "Parsing failed; Token not expected?");
    char message[96];
    std::snprintf(message, sizeof message, "Parsing failed; Token not expected: %s (token=%d)", text,
                  static_cast<int>(token.type()));
    return AtPlaceOf(lexer, message);
}
