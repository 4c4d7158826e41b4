#include "asn1/der/decimal.h"
#include "asn1/template/lexical_analyzer.h"
#include "asn1/template/unicode_text.h"
#include "core/base/ascii.h"
#include "core/text/hex.h"
#include "core/text/utf8.h"

#include <algorithm>
#include <charconv>

using namespace ccrypto;

// The JSON mode of the lexical analyzer (RFC 8259).

namespace {

constexpr std::uint32_t surrogateBase = 0x10000;

/// How long the run of digits at the start of the text is.
std::size_t DigitCount(std::string_view text)
{
    return static_cast<std::size_t>(std::ranges::find_if_not(text, IsDigit) - text.begin());
}

/// How long the number at the start of the text is; 0 when there is none.
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

namespace ccrypto {

bool IsJsonNumber(std::string_view text)
{
    return !text.empty() && NumberLength(text) == text.size();
}

} // namespace ccrypto

void CCryptoLexicalAnalyzer::skipXmlBlanks()
{
    while (!atEnd() && IsXmlBlank(current()))
        ++position_;
}

bool CCryptoLexicalAnalyzer::scanJson(element& token)
{
    skipXmlBlanks();
    notePlace();
    if (atEnd()) {
        token = element(ElementType::endOfInput);
        return true;
    }
    constexpr std::pair<char, ElementType> punctuation[] = {
        {'{', ElementType::leftBrace},    {'}', ElementType::rightBrace}, {'[', ElementType::leftBracket},
        {']', ElementType::rightBracket}, {':', ElementType::colon},      {',', ElementType::comma},
    };
    for (const auto& [character, type] : punctuation) {
        if (current() == character) {
            ++position_;
            token = element(type);
            return true;
        }
    }
    if (current() == '"')
        return scanJsonString(token);
    return IsDigit(current()) || current() == '-' ? scanJsonNumber(token) : scanJsonWord(token);
}

bool CCryptoLexicalAnalyzer::scanJsonWord(element& token)
{
    constexpr std::string_view words[] = {"null", "true", "false"};
    for (const std::string_view word : words) {
        if (!lookingAt(word))
            continue;
        position_ += word.size();
        token = word == "null" ? element(ElementType::null) : element::FromTruth(word == "true");
        return true;
    }
    return fail("Unexpected character");
}

bool CCryptoLexicalAnalyzer::scanJsonNumber(element& token)
{
    const std::size_t length = NumberLength(text_.substr(position_));
    const std::string_view number = text_.substr(position_, length);
    if (length == 0)
        return fail("Unexpected character");
    position_ += length;
    if (!SignedFromDecimal(number, token))
        token = element(number.data(), static_cast<std::uint32_t>(length), ElementType::characterData);
    return true;
}

bool CCryptoLexicalAnalyzer::scanJsonString(element& token)
{
    token = element(ElementType::text);
    ++position_;
    for (;;) {
        const std::string_view rest = text_.substr(std::min(position_, text_.size()));
        const auto stops = [](char character) {
            return character == '"' || character == '\\' || static_cast<std::uint8_t>(character) < 0x20;
        };
        const auto length = static_cast<std::size_t>(std::ranges::find_if(rest, stops) - rest.begin());
        const std::string_view run = rest.substr(0, length);
        if (length == rest.size() || !IsUtf8(run))
            return fail("String parsing error");
        token.append(run);
        position_ += length;
        if (static_cast<std::uint8_t>(current()) < 0x20)
            return fail("Invalid string");
        ++position_;
        if (rest[length] == '"')
            break;
        if (!scanJsonEscape(token))
            return fail("String parsing error");
    }
    if (!IsAscii(token.view()))
        token.setType(ElementType::utf8Text);
    return true;
}

bool CCryptoLexicalAnalyzer::scanJsonEscape(element& text)
{
    constexpr std::string_view letters = "\"\\/bfnrt";
    constexpr std::string_view characters = "\"\\/\b\f\n\r\t";
    const char letter = current();
    const std::size_t index = letters.find(letter);
    ++position_;
    if (letter != 'u') {
        if (index == std::string_view::npos)
            return false;
        text.append(static_cast<std::uint8_t>(characters[index]));
        return true;
    }
    std::uint32_t codePoint = 0;
    std::uint32_t second = 0;
    if (!scanJsonUnit(codePoint) || IsLowSurrogate(codePoint))
        return false;
    if (IsHighSurrogate(codePoint)) {
        if (!lookingAt("\\u"))
            return false;
        position_ += 2;
        if (!scanJsonUnit(second) || !IsLowSurrogate(second))
            return false;
        codePoint = surrogateBase + ((codePoint & 0x3FF) << 10) + (second & 0x3FF);
    }
    return EncodeUtf8(codePoint, text);
}

bool CCryptoLexicalAnalyzer::scanJsonUnit(std::uint32_t& unit)
{
    const std::string_view digits = text_.substr(std::min(position_, text_.size()), 4);
    if (digits.size() < 4 || !std::ranges::all_of(digits, IsHexDigit))
        return false;
    std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
    position_ += digits.size();
    return true;
}
