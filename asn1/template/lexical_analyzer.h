#pragma once

#include "core/text/element.h"
#include "core/text/string.h"

#include <cstdint>
#include <string_view>
#include <utility>

namespace ccrypto {

/// The notation that an analyzer reads.
enum class LexicalMode { templateText, json, xml };

/// Tokens that only markup has, numbered behind those of the tree.
namespace markup {
constexpr auto startTag = static_cast<ElementType>(91);    ///< "<name"; the token's bytes are the name
constexpr auto emptyTagEnd = static_cast<ElementType>(92); ///< "/>"
constexpr auto endTag = static_cast<ElementType>(93);      ///< "</name>"; the bytes are the name
} // namespace markup

} // namespace ccrypto

/// Splits text into tokens, each an `element`.
///
/// - Template text gives words (a keyword's own code, or an identifier), numbers, strings, "#" runs of hexadecimal digits,
///   punctuation and operators; white space and comments are passed over. docs/template-language.md describes the notation.
/// - JSON (RFC 8259) gives punctuation, strings as text or utf8Text, integers (negative ones in two's complement), other numbers as
///   characterData, truth and null.
/// - XML 1.0 gives startTag, then for each attribute an identifier, "=" and text, then ">" or emptyTagEnd; endTag; and
///   characterData with its references resolved, a CDATA section as one of its own. Comments, processing instructions,
///   declarations and the document type are passed over; no entity but the five of XML is known, and nothing external is read.
///
/// The text is UTF-8, or UTF-16 behind its byte order mark; it is not copied unless it is UTF-16, and must outlive the analyzer.
class CCryptoLexicalAnalyzer {
public:
    explicit CCryptoLexicalAnalyzer(std::string_view text, ccrypto::LexicalMode mode = ccrypto::LexicalMode::templateText);
    CCryptoLexicalAnalyzer(const CCryptoLexicalAnalyzer&) = delete;
    CCryptoLexicalAnalyzer& operator=(const CCryptoLexicalAnalyzer&) = delete;

    /// The next token; of type `endOfInput` at the end. \return false for text that is no token; `reason` then tells why.
    bool scan(element& token);

    /// Where the token scanned last begins: from 1, columns in characters.
    std::uint32_t row() const { return row_; }
    std::uint32_t column() const { return column_; }
    /// What the last scan failed on, with the place: "CCryptoLexicalAnalyzer::scan; %s (row=%d,col=%d)".
    const CCryptoString& reason() const { return reason_; }

    /// Inside an expression "--" is an operator where it does not begin a line, and outside it starts a comment. \return what held
    /// before.
    bool setExpression(bool expression) { return std::exchange(expression_, expression); }

    /// Whether the token scanned last is the first of its line.
    bool behindLineEnd() const { return behindLineEnd_; }

    /// Passes over white space and hands out the text up to the next blank or separator: the name behind "include".
    std::string_view scanFileName();

private:
    bool atEnd() const { return position_ >= text_.size(); }
    char current() const { return atEnd() ? '\0' : text_[position_]; }
    char following() const { return position_ + 1 < text_.size() ? text_[position_ + 1] : '\0'; }
    bool lookingAt(std::string_view text) const { return text_.substr(position_).starts_with(text); }
    void skipBlanksAndComments();
    bool scanTemplate(element& token);
    void notePlace();

    bool scanWord(element& token);
    bool scanNumber(element& token);
    bool scanEscaped(const char* stops, element& text);
    bool scanDoubleQuoted(element& token);
    bool scanBackquoted(element& token);
    bool scanSingleQuoted(element& token);
    bool scanHex(element& token);
    bool scanMarked(element& token);
    bool scanPunctuation(element& token);
    bool readEscape(element& text);
    bool fail(const char* what);

    void skipXmlBlanks();
    bool scanJson(element& token);
    bool scanJsonString(element& token);
    bool scanJsonEscape(element& text);
    bool scanJsonUnit(std::uint32_t& unit);
    bool scanJsonNumber(element& token);
    bool scanJsonWord(element& token);

    bool scanXml(element& token);
    bool scanXmlTag(element& token);
    bool scanXmlAttributes(element& token);
    bool scanXmlAttributeValue(element& token);
    bool scanXmlText(element& token);
    bool scanXmlReference(element& text);
    bool scanXmlCharacters(std::size_t end, bool isAttribute, element& text);
    bool scanXmlSection(element& token);
    bool skipXmlMarkup(bool& skipped);
    bool skipXmlDocumentType();

    ccrypto::LexicalMode mode_;
    element converted_;
    std::string_view text_;
    std::size_t position_ = 0;
    std::size_t placed_ = 0; ///< row and column are those of this position
    std::uint32_t row_ = 1;
    std::uint32_t column_ = 1;
    bool expression_ = false;
    bool behindLineEnd_ = false;
    bool valueFollows_ = true; ///< a "-" in front of a digit is its sign
    bool insideTag_ = false;   ///< of XML: attributes follow
    CCryptoString reason_;
};

namespace ccrypto {

/// Whether all of the text is one JSON number.
bool IsJsonNumber(std::string_view text);

/// The code of a keyword, exactly as it is spelled; `identifier` for any other word.
ElementType KeywordType(std::string_view word);

} // namespace ccrypto
