#include "asn1/template/lexical_analyzer.h"

#include "asn1/der/decimal.h"
#include "asn1/template/value_notation.h"
#include "core/base/ascii.h"
#include "core/text/hex.h"
#include "core/text/utf8.h"

#include <algorithm>
#include <cstdio>

using namespace ccrypto;

namespace {

constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view utf16BigEndianMark = "\xFE\xFF";
constexpr std::string_view utf16LittleEndianMark = "\xFF\xFE";

bool IsLetter(char character)
{
    return IsAsciiLetter(character) || character == '_' || static_cast<unsigned char>(character) >= 0x80;
}

bool IsWordCharacter(char character)
{
    return IsLetter(character) || IsDigit(character);
}

/// Text of 16-bit units in either byte order.
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

struct Punctuation {
    std::string_view text;
    ElementType type;
};

/// The longer of two that begin alike stands first.
constexpr Punctuation punctuation[] = {
    {"==", ElementType::equal},
    {"!=", ElementType::notEqual},
    {">=", ElementType::greaterOrEqual},
    {"<=", ElementType::lessOrEqual},
    {"++", ElementType::increment},
    {"--", ElementType::decrement},
    {"||", ElementType::logicalOr},
    {"&&", ElementType::logicalAnd},
    {",", ElementType::comma},
    {".", ElementType::period},
    {";", ElementType::semicolon},
    {":", ElementType::colon},
    {"\\", ElementType::backslash},
    {"/", ElementType::solidus},
    {"!", ElementType::exclamation},
    {"%", ElementType::percent},
    {"=", ElementType::equals},
    {">", ElementType::greater},
    {"<", ElementType::less},
    {"+", ElementType::plus},
    {"-", ElementType::minus},
    {"*", ElementType::asterisk},
    {"{", ElementType::leftBrace},
    {"}", ElementType::rightBrace},
    {"[", ElementType::leftBracket},
    {"]", ElementType::rightBracket},
    {"(", ElementType::leftParenthesis},
    {")", ElementType::rightParenthesis},
};

/// Behind these a "-" subtracts; behind anything else it is the sign of a number.
bool EndsOperand(ElementType type)
{
    switch (type) {
    case ElementType::identifier:
    case ElementType::integer:
    case ElementType::text:
    case ElementType::utf8Text:
    case ElementType::quotedText:
    case ElementType::bytes:
    case ElementType::truth:
    case ElementType::characterData:
    case ElementType::rightBrace:
    case ElementType::rightBracket:
    case ElementType::rightParenthesis:
        return true;
    default:
        return false;
    }
}

} // namespace

CCryptoLexicalAnalyzer::CCryptoLexicalAnalyzer(std::string_view text, LexicalMode mode) : mode_(mode), text_(text)
{
    const bool bigEndian = text.starts_with(utf16BigEndianMark);
    if (bigEndian || text.starts_with(utf16LittleEndianMark)) {
        converted_ = FromUtf16Bytes(text.substr(2), bigEndian);
        text_ = converted_.view();
    } else if (text.starts_with(utf8Mark)) {
        text_.remove_prefix(utf8Mark.size());
    }
}

void CCryptoLexicalAnalyzer::notePlace()
{
    for (const std::size_t end = std::min(position_, text_.size()); placed_ < end; ++placed_) {
        const char character = text_[placed_];
        if (character == '\n') {
            ++row_;
            column_ = 1;
        } else if (!IsUtf8Continuation(static_cast<std::uint8_t>(character))) {
            ++column_;
        }
    }
}

bool CCryptoLexicalAnalyzer::fail(const char* what)
{
    notePlace();
    char text[160];
    std::snprintf(text, sizeof text, "CCryptoLexicalAnalyzer::scan; %s (row=%u,col=%u)", what, row_, column_);
    reason_ = text;
    return false;
}

void CCryptoLexicalAnalyzer::skipBlanksAndComments()
{
    behindLineEnd_ = false;
    for (;;) {
        for (; IsBlank(current()); ++position_)
            behindLineEnd_ = behindLineEnd_ || current() == '\n' || current() == '\r';
        if ((expression_ && !behindLineEnd_) || current() != '-' || following() != '-')
            return;
        position_ = std::min(text_.find_first_of("\r\n", position_), text_.size());
    }
}

bool CCryptoLexicalAnalyzer::scan(element& token)
{
    if (text_.size() > UINT32_MAX)
        return fail("Unknown error");
    switch (mode_) {
    case LexicalMode::json:
        return scanJson(token);
    case LexicalMode::xml:
        return scanXml(token);
    default:
        return scanTemplate(token);
    }
}

bool CCryptoLexicalAnalyzer::scanTemplate(element& token)
{
    skipBlanksAndComments();
    notePlace();
    if (atEnd()) {
        token = element(ElementType::endOfInput);
        return true;
    }
    const char character = current();
    const bool negative = character == '-' && valueFollows_ && IsDigit(following());
    const bool startsMarked = character == '%' && (IsLetter(following()) || following() == '-');
    const bool scanned = IsDigit(character) || negative ? scanNumber(token)
                         : IsLetter(character)          ? scanWord(token)
                         : character == '"'             ? scanDoubleQuoted(token)
                         : character == '`'             ? scanBackquoted(token)
                         : character == '\''            ? scanSingleQuoted(token)
                         : character == '#'             ? scanHex(token)
                         : startsMarked                 ? scanMarked(token)
                                                        : scanPunctuation(token);
    valueFollows_ = !EndsOperand(token.type());
    return scanned;
}

bool CCryptoLexicalAnalyzer::scanWord(element& token)
{
    const std::size_t start = position_;
    // A dot or a hyphen belongs to the word when the word goes on behind it.
    while (IsWordCharacter(current()) || ((current() == '.' || current() == '-') && IsWordCharacter(following())))
        ++position_;
    const std::string_view word = text_.substr(start, position_ - start);
    token = element(word);
    token.setType(KeywordType(word));
    return true;
}

bool CCryptoLexicalAnalyzer::scanNumber(element& token)
{
    const std::size_t start = position_;
    const bool negative = current() == '-';
    position_ += negative ? 1 : 0;
    bool dotted = false;
    while (IsDigit(current()) || (current() == '.' && IsDigit(following()))) {
        dotted = dotted || current() == '.';
        ++position_;
    }
    if (IsLetter(current()))
        return fail("Unexpected character");
    const std::string_view digits = text_.substr(start, position_ - start);
    if (dotted) {
        // An object identifier without its quotes.
        token = element(digits);
        return true;
    }
    if (digits.size() > maxDecimalDigits)
        return fail("A number has more than 1000000 digits");
    token = IntegerFromDecimal(digits.substr(negative ? 1 : 0));
    token.setNegative(negative);
    return true;
}

bool CCryptoLexicalAnalyzer::readEscape(element& text)
{
    const char letter = current();
    ++position_;
    switch (letter) {
    case 'n':
        text.append(std::uint8_t{'\n'});
        return true;
    case 'r':
        text.append(std::uint8_t{'\r'});
        return true;
    case 't':
        text.append(std::uint8_t{'\t'});
        return true;
    case '"':
    case '`':
    case '\\':
        text.append(static_cast<std::uint8_t>(letter));
        return true;
    case 'x': {
        std::uint8_t byte = 0;
        if (!HexByte(text_.substr(std::min(position_, text_.size()), 2), byte))
            return false;
        position_ += 2;
        text.append(byte);
        return true;
    }
    default:
        return false;
    }
}

bool CCryptoLexicalAnalyzer::scanEscaped(const char* stops, element& text)
{
    ++position_;
    for (;;) {
        const std::size_t stop = text_.find_first_of(stops, position_);
        if (stop == std::string_view::npos)
            return fail("String parsing error");
        text.append(text_.substr(position_, stop - position_));
        position_ = stop + 1;
        if (text_[stop] != '\\')
            return true;
        if (!readEscape(text))
            return fail("String parsing error");
    }
}

bool CCryptoLexicalAnalyzer::scanDoubleQuoted(element& token)
{
    element text;
    if (!scanEscaped("\"\\", text))
        return false;
    token = CCryptoString(text.view()).data();
    return true;
}

bool CCryptoLexicalAnalyzer::scanBackquoted(element& token)
{
    token = element(ElementType::identifier);
    return scanEscaped("`\\", token);
}

bool CCryptoLexicalAnalyzer::scanSingleQuoted(element& token)
{
    const std::size_t start = ++position_;
    while (!atEnd() && current() != '\'') {
        if (static_cast<unsigned char>(current()) < 0x20)
            return fail("Invalid string");
        ++position_;
    }
    if (atEnd())
        return fail("String parsing error");
    token = element(text_.substr(start, position_ - start));
    token.setType(ElementType::quotedText);
    ++position_;
    return true;
}

bool CCryptoLexicalAnalyzer::scanHex(element& token)
{
    const std::size_t start = ++position_;
    while (IsHexDigit(current()))
        ++position_;
    if (IsWordCharacter(current()) || !BytesFromHex(text_.substr(start, position_ - start), token))
        return fail("Unexpected character");
    return true;
}

bool CCryptoLexicalAnalyzer::scanMarked(element& token)
{
    const std::size_t start = position_ + 1;
    const std::size_t end = std::min(text_.find_first_of("\"#", start), text_.size());
    ElementType type = ElementType::none;
    bool negative = false;
    if (!FindValueKind(text_.substr(start, end - start), type, negative))
        return fail("Unexpected character");
    position_ = end;
    token = element();
    const bool scanned = current() == '"'   ? scanEscaped("\"\\", token)
                         : current() == '#' ? scanHex(token)
                                            : fail("Unexpected character");
    token.setType(type);
    token.setNegative(negative);
    return scanned;
}

bool CCryptoLexicalAnalyzer::scanPunctuation(element& token)
{
    const std::string_view rest = text_.substr(position_);
    for (const Punctuation& each : punctuation) {
        if (rest.starts_with(each.text)) {
            token = element(each.type);
            position_ += each.text.size();
            return true;
        }
    }
    return fail("Unexpected character");
}

std::string_view CCryptoLexicalAnalyzer::scanFileName()
{
    while (IsBlank(current()))
        ++position_;
    const char quote = current() == '"' || current() == '\'' ? current() : '\0';
    position_ += quote != '\0' ? 1 : 0;
    const std::size_t start = position_;
    while (!atEnd() &&
           (quote != '\0' ? current() != quote : !IsBlank(current()) && current() != ',' && current() != ';' && current() != '}'))
        ++position_;
    const std::string_view name = text_.substr(start, position_ - start);
    position_ += quote != '\0' && !atEnd() ? 1 : 0;
    return name;
}
