#include "asn1/text/text_cursor.h"

#include "core/text/utf8.h"

#include <algorithm>
#include <cstdio>
#include <string>

using namespace ccrypto;

namespace ccrypto::internal {

namespace {

constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view utf16BigEndianMark = "\xFE\xFF";
constexpr std::string_view utf16LittleEndianMark = "\xFF\xFE";

element FromUtf16Bytes(std::string_view bytes, bool bigEndian)
{
    element units;
    for (std::size_t index = 0; index + 1 < bytes.size(); index += 2) {
        const auto first = static_cast<std::uint8_t>(bytes[index]);
        const auto second = static_cast<std::uint8_t>(bytes[index + 1]);
        const char16_t unit = static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first);
        units.append(&unit, sizeof unit);
    }
    return element::FromUtf16(reinterpret_cast<const char16_t*>(units.data()), units.length() / 2);
}

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

TextCursor::TextCursor(std::string_view text) : text_(text)
{
    const bool bigEndian = text.starts_with(utf16BigEndianMark);
    if (bigEndian || text.starts_with(utf16LittleEndianMark)) {
        converted_ = FromUtf16Bytes(text.substr(2), bigEndian);
        text_ = converted_.view();
    } else if (text.starts_with(utf8Mark)) {
        text_.remove_prefix(utf8Mark.size());
    }
}

void TextCursor::markPlace()
{
    for (; placed_ < position_; ++placed_) {
        const char character = text_[placed_];
        if (character == '\n') {
            ++row_;
            column_ = 1;
        } else if (!IsUtf8Continuation(static_cast<std::uint8_t>(character))) {
            ++column_;
        }
    }
}

bool TextCursor::fail(const char* what)
{
    markPlace();
    char text[160];
    std::snprintf(text, sizeof text, "CCryptoLexicalAnalyzer::scan; %s (row=%u,col=%u)", what, row_, column_);
    reason_ = text;
    return false;
}

CCryptoString TextCursor::withPlace(const CCryptoString& message) const
{
    char place[48];
    std::snprintf(place, sizeof place, "; row=%u,col=%u", row_, column_);
    return message + place;
}

CCryptoString TextCursor::notExpected(const element& token) const
{
    const CCryptoString text = TextOf(token);
    if (text.isEmpty())
        return withPlace("Parsing failed; Token not expected?");
    char message[128];
    std::snprintf(message, sizeof message, "Parsing failed; Token not expected: %s (token=%d)", text.c_str(),
                  static_cast<int>(token.type()));
    return withPlace(message);
}

} // namespace ccrypto::internal
