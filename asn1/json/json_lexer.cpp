#include "asn1/json/json_lexer.h"

#include "asn1/text/decimal.h"
#include "asn1/text/unicode_text.h"
#include "core/base/ascii.h"
#include "core/text/hex.h"
#include "core/text/utf8.h"

#include <algorithm>
#include <charconv>

using namespace ccrypto;

namespace ccrypto::internal {

namespace {

constexpr std::uint32_t surrogateBase = 0x10000;

/// The length of the run of digits at the start of the text.
std::size_t DigitCount(std::string_view text)
{
    return static_cast<std::size_t>(std::ranges::find_if_not(text, IsDigit) - text.begin());
}

/// The length of the number at the start of the text; 0 when there is none.
std::size_t NumberLength(std::string_view text)
{
    std::size_t length = text.starts_with('-') ? 1 : 0;
    const std::size_t whole = DigitCount(text.substr(length));
    if (whole == 0 || (whole > 1 && text[length] == '0'))
        return 0;
    length += whole;
    if (length < text.size() && text[length] == '.') {
        const std::size_t digits = DigitCount(text.substr(length + 1));
        if (digits == 0)
            return 0;
        length += 1 + digits;
    }
    if (length < text.size() && (text[length] == 'e' || text[length] == 'E')) {
        const bool sign = length + 1 < text.size() && (text[length + 1] == '+' || text[length + 1] == '-');
        const std::size_t start = length + (sign ? 2 : 1);
        const std::size_t digits = start < text.size() ? DigitCount(text.substr(start)) : 0;
        if (digits == 0)
            return 0;
        length = start + digits;
    }
    return length;
}

} // namespace

bool IsJsonNumber(std::string_view text)
{
    return !text.empty() && NumberLength(text) == text.size();
}

bool JsonLexer::scan(element& token)
{
    if (cursor_.isTooLong())
        return cursor_.fail("Unknown error");
    cursor_.takeWhile([](char character) { return IsXmlBlank(character); });
    cursor_.markPlace();
    if (cursor_.atEnd()) {
        token = element(ElementType::endOfInput);
        return true;
    }
    constexpr std::pair<char, ElementType> punctuation[] = {
        {'{', ElementType::leftBrace},    {'}', ElementType::rightBrace}, {'[', ElementType::leftBracket},
        {']', ElementType::rightBracket}, {':', ElementType::colon},      {',', ElementType::comma},
    };
    const char first = cursor_.current();
    for (const auto& [character, type] : punctuation) {
        if (first == character) {
            cursor_.skip();
            token = element(type);
            return true;
        }
    }
    if (first == '"')
        return scanString(token);
    return IsDigit(first) || first == '-' ? scanNumber(token) : scanWord(token);
}

bool JsonLexer::scanWord(element& token)
{
    constexpr std::string_view words[] = {"null", "true", "false"};
    for (const std::string_view word : words) {
        if (!cursor_.lookingAt(word))
            continue;
        cursor_.skip(word.size());
        token = word == "null" ? element(ElementType::null) : element::FromTruth(word == "true");
        return true;
    }
    return cursor_.fail("Unexpected character");
}

bool JsonLexer::scanNumber(element& token)
{
    const std::string_view number = cursor_.take(NumberLength(cursor_.rest()));
    if (number.empty())
        return cursor_.fail("Unexpected character");
    if (!SignedFromDecimal(number, token))
        token = element(number.data(), static_cast<std::uint32_t>(number.size()), ElementType::characterData);
    return true;
}

bool JsonLexer::scanString(element& token)
{
    const auto isPlain = [](char character) {
        return character != '"' && character != '\\' && static_cast<std::uint8_t>(character) >= 0x20;
    };
    token = element(ElementType::text);
    cursor_.skip();
    for (;;) {
        const std::string_view rest = cursor_.rest();
        const std::string_view run =
            rest.substr(0, static_cast<std::size_t>(std::ranges::find_if_not(rest, isPlain) - rest.begin()));
        if (run.size() == rest.size() || !IsUtf8(run))
            return cursor_.fail("String parsing error");
        token.append(run);
        cursor_.skip(run.size());
        const char stop = cursor_.current();
        if (static_cast<std::uint8_t>(stop) < 0x20)
            return cursor_.fail("Invalid string");
        cursor_.skip();
        if (stop == '"')
            break;
        if (!scanEscape(token))
            return cursor_.fail("String parsing error");
    }
    if (!IsAscii(token.view()))
        token.setType(ElementType::utf8Text);
    return true;
}

bool JsonLexer::scanEscape(element& text)
{
    constexpr std::string_view letters = "\"\\/bfnrt";
    constexpr std::string_view characters = "\"\\/\b\f\n\r\t";
    const char letter = cursor_.current();
    const std::size_t index = letters.find(letter);
    cursor_.skip();
    if (letter != 'u') {
        if (index == std::string_view::npos)
            return false;
        text.append(static_cast<std::uint8_t>(characters[index]));
        return true;
    }
    std::uint32_t codePoint = 0;
    std::uint32_t second = 0;
    if (!scanUnit(codePoint) || IsLowSurrogate(codePoint))
        return false;
    if (IsHighSurrogate(codePoint)) {
        if (!cursor_.lookingAt("\\u"))
            return false;
        cursor_.skip(2);
        if (!scanUnit(second) || !IsLowSurrogate(second))
            return false;
        codePoint = surrogateBase + ((codePoint & 0x3FF) << 10) + (second & 0x3FF);
    }
    return EncodeUtf8(codePoint, text);
}

bool JsonLexer::scanUnit(std::uint32_t& unit)
{
    const std::string_view digits = cursor_.rest().substr(0, 4);
    if (digits.size() < 4 || !std::ranges::all_of(digits, IsHexDigit))
        return false;
    std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
    cursor_.skip(digits.size());
    return true;
}

} // namespace ccrypto::internal
