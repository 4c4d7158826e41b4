#pragma once

#include "asn1/text/text_cursor.h"
#include "core/text/element.h"

#include <string_view>
#include <utility>

namespace ccrypto {

/// The code of a keyword, exactly as it is spelled; `identifier` for any other word.
[[nodiscard]] ElementType KeywordType(std::string_view word);

} // namespace ccrypto

/// Splits template text into tokens, each an `element`: words (a keyword's own code, or an identifier), numbers, strings, "#" runs
/// of hexadecimal digits, punctuation and operators. White space and comments are ignored. docs/template-language.md describes the
/// notation, TextCursor the text.
class CCryptoLexicalAnalyzer {
public:
    explicit CCryptoLexicalAnalyzer(std::string_view text) : cursor_(text) {}

    /// The next token; of type `endOfInput` at the end. \return false for text that is not a token, with the reason in the cursor.
    [[nodiscard]] bool scan(element& token);

    /// The place of the last token, and why a scan failed.
    const ccrypto::internal::TextCursor& cursor() const { return cursor_; }

    /// Inside an expression "--" is an operator where it does not begin a line; elsewhere it starts a comment. \return the previous
    /// setting.
    bool setExpression(bool expression) { return std::exchange(expression_, expression); }

    /// Whether the last token is the first of its line.
    bool beginsLine() const { return beginsLine_; }

    /// Ignores white space and takes the text up to the next blank or separator, or in quotes: the name after "include".
    std::string_view scanFileName();

private:
    void skipBlanksAndComments();
    bool scanWord(element& token);
    bool scanNumber(element& token);
    bool scanEscaped(const char* stops, element& text);
    bool scanDoubleQuoted(element& token);
    bool scanBackquoted(element& token);
    bool scanSingleQuoted(element& token);
    bool scanHex(element& token);
    bool scanMarked(element& token);
    bool scanPunctuation(element& token);
    bool scanEscape(element& text);

    ccrypto::internal::TextCursor cursor_;
    bool expression_ = false;
    bool beginsLine_ = false;
    bool valueFollows_ = true; ///< a "-" before a digit is its sign
};
