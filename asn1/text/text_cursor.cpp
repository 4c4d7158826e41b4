#include "asn1/text/text_cursor.h"

#include "core/text/utf8.h"

#include <cstdio>

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

} // namespace ccrypto::internal
