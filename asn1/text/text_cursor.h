#pragma once

#include "core/text/element.h"
#include "core/text/string.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace ccrypto::internal {

/// A position in a text that a lexer splits into tokens, with the row and the column of the last token for messages.
///
/// The text is UTF-8 with or without a byte order mark, or UTF-16 after its own. It is copied only when it is UTF-16, and must
/// outlive the cursor. The position never passes the end, where `current` and `following` give a zero byte.
class TextCursor {
public:
    explicit TextCursor(std::string_view text);
    TextCursor(const TextCursor&) = delete;
    TextCursor& operator=(const TextCursor&) = delete;

    /// Elements hold at most this much: a lexer refuses a longer text.
    bool isTooLong() const { return text_.size() > UINT32_MAX; }

    bool atEnd() const { return position_ == text_.size(); }
    char current() const { return atEnd() ? '\0' : text_[position_]; }
    char following() const { return position_ + 1 < text_.size() ? text_[position_ + 1] : '\0'; }
    std::string_view rest() const { return text_.substr(position_); }
    bool lookingAt(std::string_view text) const { return rest().starts_with(text); }

    void skip(std::size_t count = 1) { position_ += std::min(count, text_.size() - position_); }
    std::string_view take(std::size_t count)
    {
        const std::string_view taken = text_.substr(position_, count);
        position_ += taken.size();
        return taken;
    }
    template <typename Predicate>
    std::string_view takeWhile(Predicate&& belongs)
    {
        const std::string_view all = rest();
        return take(static_cast<std::size_t>(std::ranges::find_if_not(all, belongs) - all.begin()));
    }

    /// Takes the position as the place for messages.
    void markPlace();
    /// From 1; columns in characters.
    std::uint32_t row() const { return row_; }
    std::uint32_t column() const { return column_; }

    /// Marks the place and keeps the reason: "CCryptoLexicalAnalyzer::scan; %s (row=%d,col=%d)". \return false.
    bool fail(const char* what);
    const CCryptoString& reason() const { return reason_; }

    /// What a parser says of the token scanned last: "%s; row=%d,col=%d".
    CCryptoString withPlace(const CCryptoString& message) const;
    /// "Parsing failed; Token not expected: %s (token=%d)" with the place; "Parsing failed; Token not expected?" for a token
    /// without text.
    CCryptoString notExpected(const element& token) const;

private:
    element converted_; ///< from UTF-16
    std::string_view text_;
    std::size_t position_ = 0;
    std::size_t placed_ = 0; ///< row and column are those of this position
    std::uint32_t row_ = 1;
    std::uint32_t column_ = 1;
    CCryptoString reason_;
};

} // namespace ccrypto::internal
