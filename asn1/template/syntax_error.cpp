#include "asn1/template/syntax_error.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace ccrypto {

CCryptoString AtPlaceOf(const ccrypto::internal::TextCursor& cursor, const CCryptoString& message)
{
    char place[48];
    std::snprintf(place, sizeof place, "; row=%u,col=%u", cursor.row(), cursor.column());
    return message + place;
}

namespace {

/// The text of a token for the log: the beginning of a long value, with "?" for what is not plain ASCII.
CCryptoString TextOf(const element& token)
{
    constexpr std::size_t maxLength = 40;
    const char* const word = TokenText(token.type());
    if (word != nullptr)
        return word;
    if (token.type() == ElementType::endOfInput || token.isEmpty())
        return {};
    const bool isText =
        token.type() != ElementType::integer && token.type() != ElementType::truth && token.type() != ElementType::bytes;
    const CCryptoString text = isText ? CCryptoString(token.view()) : token.toString();
    std::string plain(text.view().substr(0, maxLength));
    std::ranges::replace_if(
        plain, [](char character) { return character < 0x20 || character > 0x7E; }, '?');
    return CCryptoString(std::string_view(plain));
}

} // namespace

CCryptoString NotExpected(const ccrypto::internal::TextCursor& cursor, const element& token)
{
    const CCryptoString text = TextOf(token);
    if (text.isEmpty())
        return AtPlaceOf(cursor, "Parsing failed; Token not expected?");
    char message[128];
    std::snprintf(message, sizeof message, "Parsing failed; Token not expected: %s (token=%d)", text.c_str(),
                  static_cast<int>(token.type()));
    return AtPlaceOf(cursor, message);
}

} // namespace ccrypto
