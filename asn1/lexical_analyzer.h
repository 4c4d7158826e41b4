#pragma once

#include "core/element.h"
#include "core/string.h"

#include <cstdint>
#include <string_view>

/// Splits template text into tokens, each an `element`: words (a keyword's own code, or an identifier), numbers, strings, "#" runs
/// of hexadecimal digits, punctuation and operators. White space and comments are passed over.
///
/// The text is UTF-8, or UTF-16 behind its byte order mark; it is not copied unless it is UTF-16, and must outlive the analyzer.
/// docs/template-language.md describes the notation.
class CCryptoLexicalAnalyzer {
public:
    explicit CCryptoLexicalAnalyzer(std::string_view text);
    CCryptoLexicalAnalyzer(const CCryptoLexicalAnalyzer&) = delete;
    CCryptoLexicalAnalyzer& operator=(const CCryptoLexicalAnalyzer&) = delete;

    /// The next token; of type `endOfInput` at the end. \return false for text that is no token; `reason` then tells why.
    bool scan(element& token);

    /// Where the token scanned last begins: from 1, columns in characters.
    std::uint32_t row() const { return row_; }
    std::uint32_t column() const { return column_; }
    /// What the last scan failed on, with the place: "CCryptoLexicalAnalyzer::scan; %s (row=%d,col=%d)".
    const CCryptoString& reason() const { return reason_; }

    /// Inside an expression "--" is an operator, and outside it starts a comment.
    void setExpression(bool expression) { expression_ = expression; }

    /// Passes over white space and hands out the text up to the next blank or separator: the name behind "include".
    std::string_view scanFileName();

private:
    bool atEnd() const { return position_ >= text_.size(); }
    char current() const { return atEnd() ? '\0' : text_[position_]; }
    char following() const { return position_ + 1 < text_.size() ? text_[position_ + 1] : '\0'; }
    void skipBlanksAndComments();
    void notePlace();

    bool scanWord(element& token);
    bool scanNumber(element& token);
    bool scanDoubleQuoted(element& token);
    bool scanSingleQuoted(element& token);
    bool scanHex(element& token);
    bool scanPunctuation(element& token);
    bool readEscape(element& text);
    bool fail(const char* what);

    element converted_;
    std::string_view text_;
    std::size_t position_ = 0;
    std::size_t placed_ = 0; ///< row and column are those of this position
    std::uint32_t row_ = 1;
    std::uint32_t column_ = 1;
    bool expression_ = false;
    bool valueFollows_ = true; ///< a "-" in front of a digit is its sign
    CCryptoString reason_;
};

/// The code of a keyword, exactly as it is spelled; `identifier` for any other word.
ElementType KeywordType(std::string_view word);
