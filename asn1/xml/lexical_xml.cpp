#include "asn1/template/lexical_analyzer.h"
#include "asn1/template/unicode_text.h"
#include "core/text/utf8.h"

#include <algorithm>
#include <charconv>

using namespace ccrypto;

// The XML mode of the lexical analyzer (XML 1.0, fifth edition).

namespace {

constexpr const char* parsingError = "XML parsing error";
constexpr const char* sectionError = "CDATA PARSING ERROR";
constexpr const char* declarationError = "HTML/XML DECLARATION PARSING ERROR";

constexpr std::string_view sectionStart = "<![CDATA[";
constexpr std::string_view sectionEnd = "]]>";
/// The longest is "&#1114111;", give or take leading zeros.
constexpr std::size_t longestReference = 16;

struct NamedCharacter {
    std::string_view name;
    char character;
};

constexpr NamedCharacter namedCharacters[] = {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};

/// The character of what stands between "&" and ";"; 0, which is no XML character, when it is none.
std::uint32_t ReferencedCharacter(std::string_view reference)
{
    for (const NamedCharacter& each : namedCharacters) {
        if (reference == each.name)
            return static_cast<std::uint8_t>(each.character);
    }
    if (!reference.starts_with('#'))
        return 0;
    const bool hexadecimal = reference.starts_with("#x");
    const std::string_view digits = reference.substr(hexadecimal ? 2 : 1);
    std::uint32_t codePoint = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stopped, error] = std::from_chars(digits.data(), end, codePoint, hexadecimal ? 16 : 10);
    return error == std::errc() && stopped == end ? codePoint : 0;
}

void SetTextKind(element& token, ElementType ascii, ElementType beyond)
{
    token.setType(IsAscii(token.view()) ? ascii : beyond);
}

} // namespace

bool CCryptoLexicalAnalyzer::scanXml(element& token)
{
    if (insideTag_)
        return scanXmlAttributes(token);
    for (bool skipped = true; skipped;) {
        if (!skipXmlMarkup(skipped))
            return false;
    }
    notePlace();
    if (atEnd()) {
        token = element(ElementType::endOfInput);
        return true;
    }
    if (current() != '<')
        return scanXmlText(token);
    return lookingAt(sectionStart) ? scanXmlSection(token) : scanXmlTag(token);
}

bool CCryptoLexicalAnalyzer::skipXmlMarkup(bool& skipped)
{
    struct Skipped {
        std::string_view start;
        std::string_view end;
    };
    constexpr Skipped markups[] = {{"<!--", "-->"}, {"<?", "?>"}};
    skipped = true;
    for (const Skipped& markup : markups) {
        if (!lookingAt(markup.start))
            continue;
        notePlace();
        const std::size_t end = text_.find(markup.end, position_ + markup.start.size());
        if (end == std::string_view::npos)
            return fail(declarationError);
        const std::string_view inside = text_.substr(position_ + 4, end - std::min(end, position_ + 4));
        if (markup.start == "<!--" && (inside.ends_with('-') || inside.find("--") != std::string_view::npos))
            return fail(declarationError);
        position_ = end + markup.end.size();
        return true;
    }
    if (lookingAt("<![") && !lookingAt(sectionStart))
        return fail(sectionError);
    if (lookingAt("<!") && !lookingAt(sectionStart))
        return skipXmlDocumentType();
    skipped = false;
    return true;
}

bool CCryptoLexicalAnalyzer::skipXmlDocumentType()
{
    notePlace();
    if (!lookingAt("<!DOCTYPE"))
        return fail(declarationError);
    // What it declares is of no interest: only quotes, comments and brackets tell where it ends.
    bool insideSubset = false;
    for (++position_; !atEnd(); ++position_) {
        const char character = current();
        std::size_t end = position_;
        if (character == '"' || character == '\'')
            end = text_.find(character, position_ + 1);
        else if (lookingAt("<!--"))
            end = text_.find("-->", position_ + 4);
        else if (lookingAt("<?"))
            end = text_.find("?>", position_ + 2);
        else if (character == '[' || character == ']')
            insideSubset = character == '[';
        else if (character == '>' && !insideSubset) {
            ++position_;
            return true;
        }
        if (end == std::string_view::npos)
            break;
        position_ = end;
    }
    return fail(declarationError);
}

bool CCryptoLexicalAnalyzer::scanXmlTag(element& token)
{
    const bool isEnd = lookingAt("</");
    position_ += isEnd ? 2 : 1;
    const std::string_view name = text_.substr(position_, XmlNameLength(text_.substr(position_)));
    if (name.empty())
        return fail(parsingError);
    position_ += name.size();
    token = element(name);
    token.setType(isEnd ? markup::endTag : markup::startTag);
    insideTag_ = !isEnd;
    if (!isEnd)
        return atEnd() || IsXmlBlank(current()) || current() == '>' || current() == '/' || fail(parsingError);
    skipXmlBlanks();
    if (current() != '>')
        return fail("XML end tag expected");
    ++position_;
    return true;
}

bool CCryptoLexicalAnalyzer::scanXmlAttributes(element& token)
{
    const std::size_t before = position_;
    skipXmlBlanks();
    notePlace();
    const char character = current();
    if (character == '>' || lookingAt("/>")) {
        token = element(character == '>' ? ElementType::greater : markup::emptyTagEnd);
        position_ += character == '>' ? 1 : 2;
        insideTag_ = false;
        return true;
    }
    if (character == '=') {
        ++position_;
        token = element(ElementType::equals);
        return true;
    }
    if (character == '"' || character == '\'')
        return scanXmlAttributeValue(token);
    const std::string_view name = text_.substr(position_, XmlNameLength(text_.substr(position_)));
    if (name.empty() || position_ == before)
        return fail(parsingError);
    position_ += name.size();
    token = element(name);
    token.setType(ElementType::identifier);
    return true;
}

bool CCryptoLexicalAnalyzer::scanXmlAttributeValue(element& token)
{
    const std::size_t end = text_.find(current(), position_ + 1);
    if (end == std::string_view::npos)
        return fail(parsingError);
    ++position_;
    token = element(ElementType::text);
    if (!scanXmlCharacters(end, true, token))
        return false;
    position_ = end + 1;
    SetTextKind(token, ElementType::text, ElementType::utf8Text);
    return true;
}

bool CCryptoLexicalAnalyzer::scanXmlText(element& token)
{
    const std::size_t end = std::min(text_.find('<', position_), text_.size());
    if (text_.substr(position_, end - position_).find(sectionEnd) != std::string_view::npos)
        return fail(parsingError);
    token = element(ElementType::characterData);
    return scanXmlCharacters(end, false, token);
}

bool CCryptoLexicalAnalyzer::scanXmlSection(element& token)
{
    const std::size_t start = position_ + sectionStart.size();
    const std::size_t end = text_.find(sectionEnd, start);
    const std::string_view section = text_.substr(start, end - std::min(end, start));
    if (end == std::string_view::npos || !IsXmlText(section))
        return fail(sectionError);
    token = element(ElementType::characterData);
    for (std::size_t index = 0; index < section.size(); ++index) {
        if (section[index] != '\r')
            token.append(static_cast<std::uint8_t>(section[index]));
        else if (!section.substr(index + 1).starts_with('\n'))
            token.append(std::uint8_t{'\n'});
    }
    position_ = end + sectionEnd.size();
    return true;
}

bool CCryptoLexicalAnalyzer::scanXmlCharacters(std::size_t end, bool isAttribute, element& text)
{
    while (position_ < end) {
        const std::size_t stop = std::min(text_.substr(0, end).find_first_of("&\r\n\t<", position_), end);
        const std::string_view run = text_.substr(position_, stop - position_);
        if (!IsXmlText(run))
            return fail(parsingError);
        text.append(run);
        position_ = stop;
        if (stop == end)
            return true;
        const char character = current();
        if (character == '&') {
            if (!scanXmlReference(text))
                return fail(parsingError);
            continue;
        }
        if (character == '<')
            return fail(parsingError);
        // A line end is one line feed, and in an attribute any blank is a space (XML 1.0, 2.11 and 3.3.3).
        position_ += lookingAt("\r\n") ? 2 : 1;
        text.append(static_cast<std::uint8_t>(isAttribute ? ' ' : character == '\r' ? '\n' : character));
    }
    return true;
}

bool CCryptoLexicalAnalyzer::scanXmlReference(element& text)
{
    const std::string_view window = text_.substr(position_ + 1, longestReference);
    const std::size_t length = window.find(';');
    if (length == std::string_view::npos)
        return false;
    const std::uint32_t codePoint = ReferencedCharacter(window.substr(0, length));
    position_ += length + 2;
    return IsXmlCharacter(codePoint) && EncodeUtf8(codePoint, text);
}
