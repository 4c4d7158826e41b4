#include "asn1/template/lexical_analyzer.h"

#include "asn1/template/value_notation.h"
#include "asn1/text/decimal.h"
#include "core/base/ascii.h"
#include "core/text/hex.h"

#include <algorithm>

using namespace ccrypto;

namespace {

bool IsLetter(char character)
{
    return IsAsciiLetter(character) || character == '_' || static_cast<unsigned char>(character) >= 0x80;
}

bool IsWordCharacter(char character)
{
    return IsLetter(character) || IsDigit(character);
}

struct Keyword {
    std::string_view word;
    ElementType type;
};

/// Sorted by the bytes of the words.
constexpr Keyword keywords[] = {
    {"APPLICATION", ElementType::application},
    {"BIT_STRING", ElementType::bitString},
    {"BMPString", ElementType::bmpString},
    {"BOOLEAN", ElementType::boolean},
    {"CONSTRUCTED", ElementType::constructed},
    {"CONTEXT_SPECIFIC", ElementType::contextSpecific},
    {"ENUMERATED", ElementType::enumerated},
    {"EXPLICIT", ElementType::explicitTag},
    {"EXTERNAL", ElementType::external},
    {"GeneralString", ElementType::generalString},
    {"GeneralizedType", ElementType::generalizedType},
    {"GraphicsString", ElementType::graphicsString},
    {"IA5String", ElementType::ia5String},
    {"IMPLICIT", ElementType::implicit},
    {"INTEGER", ElementType::asn1Integer},
    {"NULL", ElementType::asn1Null},
    {"NumericString", ElementType::numericString},
    {"OBJECT_IDENTIFIER", ElementType::objectIdentifier},
    {"OCTET_STRING", ElementType::octetString},
    {"OPTIONAL", ElementType::optional},
    {"ObjectDescriptor", ElementType::objectDescriptor},
    {"PRIMITIVE", ElementType::primitive},
    {"PRIVATE", ElementType::privateClass},
    {"PrintableString", ElementType::printableString},
    {"REAL", ElementType::real},
    {"SEQUENCE", ElementType::sequence},
    {"SET", ElementType::set},
    {"TeletexString", ElementType::teletexString},
    {"UTCTime", ElementType::utcTime},
    {"UTF8String", ElementType::utf8String},
    {"UniversalString", ElementType::universalString},
    {"VideoString", ElementType::videotexString},
    {"VideotexString", ElementType::videotexString},
    {"VisibleString", ElementType::visibleString},
    {"case", ElementType::caseWord},
    {"include", ElementType::include},
    {"null", ElementType::null},
};

static_assert(std::ranges::is_sorted(keywords, {}, &Keyword::word));

struct Punctuation {
    std::string_view text;
    ElementType type;
};

/// Of two that begin alike, the longer one first.
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

/// After these a "-" subtracts; after anything else it is the sign of a number.
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

namespace ccrypto {

ElementType KeywordType(std::string_view word)
{
    const auto* const found = std::ranges::lower_bound(keywords, word, {}, &Keyword::word);
    return found != std::end(keywords) && found->word == word ? found->type : ElementType::identifier;
}

} // namespace ccrypto

void CCryptoLexicalAnalyzer::skipBlanksAndComments()
{
    beginsLine_ = false;
    for (;;) {
        const std::string_view blanks = cursor_.takeWhile(IsBlank);
        beginsLine_ = beginsLine_ || blanks.find_first_of("\r\n") != blanks.npos;
        if ((expression_ && !beginsLine_) || !cursor_.lookingAt("--"))
            return;
        cursor_.skip(cursor_.rest().find_first_of("\r\n"));
    }
}

bool CCryptoLexicalAnalyzer::scan(element& token)
{
    if (cursor_.isTooLong())
        return cursor_.fail("Unknown error");
    skipBlanksAndComments();
    cursor_.markPlace();
    if (cursor_.atEnd()) {
        token = element(ElementType::endOfInput);
        return true;
    }
    const char character = cursor_.current();
    const char following = cursor_.following();
    const bool negative = character == '-' && valueFollows_ && IsDigit(following);
    const bool startsMarked = character == '%' && (IsLetter(following) || following == '-');
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
    const std::string_view rest = cursor_.rest();
    std::size_t length = 1;
    // A dot or a hyphen belongs to the word when the word goes on after it.
    const auto goesOn = [rest](std::size_t index) { return index < rest.size() && IsWordCharacter(rest[index]); };
    while (goesOn(length) || (length < rest.size() && (rest[length] == '.' || rest[length] == '-') && goesOn(length + 1)))
        ++length;
    const std::string_view word = cursor_.take(length);
    token = element(word);
    token.setType(KeywordType(word));
    return true;
}

bool CCryptoLexicalAnalyzer::scanNumber(element& token)
{
    const bool negative = cursor_.current() == '-';
    const std::string_view rest = cursor_.rest();
    std::size_t length = negative ? 1 : 0;
    bool dotted = false;
    const auto isDigit = [rest](std::size_t index) { return index < rest.size() && IsDigit(rest[index]); };
    while (isDigit(length) || (length < rest.size() && rest[length] == '.' && isDigit(length + 1))) {
        dotted = dotted || rest[length] == '.';
        ++length;
    }
    const std::string_view digits = cursor_.take(length);
    if (IsLetter(cursor_.current()))
        return cursor_.fail("Unexpected character");
    if (dotted) {
        // An object identifier without its quotes.
        token = element(digits);
        return true;
    }
    if (digits.size() > maxDecimalDigits)
        return cursor_.fail("A number has more than 1000000 digits");
    token = IntegerFromDecimal(digits.substr(negative ? 1 : 0));
    token.setNegative(negative);
    return true;
}

bool CCryptoLexicalAnalyzer::scanEscape(element& text)
{
    const char letter = cursor_.current();
    cursor_.skip();
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
        if (!HexByte(cursor_.rest().substr(0, 2), byte))
            return false;
        cursor_.skip(2);
        text.append(byte);
        return true;
    }
    default:
        return false;
    }
}

bool CCryptoLexicalAnalyzer::scanEscaped(const char* stops, element& text)
{
    cursor_.skip();
    for (;;) {
        const std::size_t length = cursor_.rest().find_first_of(stops);
        if (length == std::string_view::npos)
            return cursor_.fail("String parsing error");
        text.append(cursor_.take(length));
        const bool isEscape = cursor_.current() == '\\';
        cursor_.skip();
        if (!isEscape)
            return true;
        if (!scanEscape(text))
            return cursor_.fail("String parsing error");
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
    cursor_.skip();
    const std::string_view text =
        cursor_.takeWhile([](char character) { return character != '\'' && static_cast<unsigned char>(character) >= 0x20; });
    if (cursor_.current() != '\'')
        return cursor_.fail(cursor_.atEnd() ? "String parsing error" : "Invalid string");
    token = element(text);
    token.setType(ElementType::quotedText);
    cursor_.skip();
    return true;
}

bool CCryptoLexicalAnalyzer::scanHex(element& token)
{
    cursor_.skip();
    const std::string_view digits = cursor_.takeWhile(IsHexDigit);
    return (!IsWordCharacter(cursor_.current()) && BytesFromHex(digits, token)) || cursor_.fail("Unexpected character");
}

bool CCryptoLexicalAnalyzer::scanMarked(element& token)
{
    const std::string_view rest = cursor_.rest().substr(1);
    const std::string_view kind = rest.substr(0, rest.find_first_of("\"#"));
    ElementType type = ElementType::none;
    bool negative = false;
    if (!FindValueKind(kind, type, negative))
        return cursor_.fail("Unexpected character");
    cursor_.skip(1 + kind.size());
    token = element();
    const bool scanned = cursor_.current() == '"'   ? scanEscaped("\"\\", token)
                         : cursor_.current() == '#' ? scanHex(token)
                                                    : cursor_.fail("Unexpected character");
    token.setType(type);
    token.setNegative(negative);
    return scanned;
}

bool CCryptoLexicalAnalyzer::scanPunctuation(element& token)
{
    for (const Punctuation& each : punctuation) {
        if (cursor_.lookingAt(each.text)) {
            token = element(each.type);
            cursor_.skip(each.text.size());
            return true;
        }
    }
    return cursor_.fail("Unexpected character");
}

std::string_view CCryptoLexicalAnalyzer::scanFileName()
{
    cursor_.takeWhile(IsBlank);
    const char quote = cursor_.current();
    if (quote != '"' && quote != '\'')
        return cursor_.takeWhile(
            [](char character) { return !IsBlank(character) && character != ',' && character != ';' && character != '}'; });
    cursor_.skip();
    const std::string_view name = cursor_.takeWhile([quote](char character) { return character != quote; });
    cursor_.skip();
    return name;
}
