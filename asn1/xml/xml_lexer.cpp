#include "asn1/xml/xml_lexer.h"

#include "asn1/text/unicode_text.h"
#include "core/text/utf8.h"

#include <algorithm>
#include <charconv>

using namespace ccrypto;

namespace ccrypto::internal {

namespace {

constexpr const char* parsingError = "XML parsing error";
constexpr const char* sectionError = "CDATA PARSING ERROR";
constexpr const char* declarationError = "HTML/XML DECLARATION PARSING ERROR";

bool IsBlankCharacter(char character)
{
    return IsXmlBlank(character);
}

constexpr std::string_view sectionStart = "<![CDATA[";
constexpr std::string_view sectionEnd = "]]>";
/// "&#1114111;" with some leading zeros.
constexpr std::size_t maxReferenceLength = 16;

struct NamedCharacter {
    std::string_view name;
    char character;
};

constexpr NamedCharacter namedCharacters[] = {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};

/// The character that a reference between "&" and ";" names; 0, which XML does not allow, for any other text.
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

} // namespace

bool XmlLexer::scan(element& token)
{
    if (cursor_.isTooLong())
        return cursor_.fail("Unknown error");
    if (insideTag_)
        return scanInsideTag(token);
    while (atIgnoredMarkup()) {
        if (!skipIgnoredMarkup())
            return false;
    }
    cursor_.markPlace();
    if (cursor_.atEnd()) {
        token = element(ElementType::endOfInput);
        return true;
    }
    if (cursor_.current() != '<')
        return scanText(token);
    return cursor_.lookingAt(sectionStart) ? scanSection(token) : scanTag(token);
}

bool XmlLexer::atIgnoredMarkup() const
{
    return cursor_.lookingAt("<?") || (cursor_.lookingAt("<!") && !cursor_.lookingAt(sectionStart));
}

bool XmlLexer::skipIgnoredMarkup()
{
    if (cursor_.lookingAt("<?"))
        return skipInstruction();
    if (cursor_.lookingAt("<!--"))
        return skipComment();
    return cursor_.lookingAt("<![") ? cursor_.fail(sectionError) : skipDocumentType();
}

bool XmlLexer::skipComment()
{
    cursor_.markPlace();
    const std::string_view inside = cursor_.rest().substr(4);
    const std::size_t length = inside.find("--");
    if (length == std::string_view::npos || !inside.substr(length).starts_with("-->"))
        return cursor_.fail(declarationError);
    cursor_.skip(4 + length + 3);
    return true;
}

bool XmlLexer::skipInstruction()
{
    cursor_.markPlace();
    const std::size_t end = cursor_.rest().find("?>", 2);
    if (end == std::string_view::npos)
        return cursor_.fail(declarationError);
    cursor_.skip(end + 2);
    return true;
}

bool XmlLexer::skipDocumentType()
{
    cursor_.markPlace();
    if (!cursor_.lookingAt("<!DOCTYPE"))
        return cursor_.fail(declarationError);
    // What it declares is ignored: only quotes, comments and brackets say where it ends.
    bool insideSubset = false;
    for (cursor_.skip(); !cursor_.atEnd(); cursor_.skip()) {
        const char character = cursor_.current();
        std::size_t length = 0;
        if (character == '"' || character == '\'')
            length = cursor_.rest().find(character, 1);
        else if (cursor_.lookingAt("<!--"))
            length = cursor_.rest().find("-->", 4);
        else if (cursor_.lookingAt("<?"))
            length = cursor_.rest().find("?>", 2);
        else if (character == '[' || character == ']')
            insideSubset = character == '[';
        else if (character == '>' && !insideSubset) {
            cursor_.skip();
            return true;
        }
        if (length == std::string_view::npos)
            break;
        cursor_.skip(length);
    }
    return cursor_.fail(declarationError);
}

bool XmlLexer::scanTag(element& token)
{
    const bool isEnd = cursor_.lookingAt("</");
    cursor_.skip(isEnd ? 2 : 1);
    const std::string_view name = cursor_.take(XmlNameLength(cursor_.rest()));
    if (name.empty())
        return cursor_.fail(parsingError);
    token = element(name);
    token.setType(isEnd ? markup::endTag : markup::startTag);
    insideTag_ = !isEnd;
    if (!isEnd) {
        const char next = cursor_.current();
        return cursor_.atEnd() || IsXmlBlank(next) || next == '>' || next == '/' || cursor_.fail(parsingError);
    }
    cursor_.takeWhile(IsBlankCharacter);
    if (cursor_.current() != '>')
        return cursor_.fail("XML end tag expected");
    cursor_.skip();
    return true;
}

bool XmlLexer::scanInsideTag(element& token)
{
    const bool afterBlank = !cursor_.takeWhile(IsBlankCharacter).empty();
    cursor_.markPlace();
    const char character = cursor_.current();
    if (character == '>' || cursor_.lookingAt("/>")) {
        token = element(character == '>' ? ElementType::greater : markup::emptyTagEnd);
        cursor_.skip(character == '>' ? 1 : 2);
        insideTag_ = false;
        return true;
    }
    if (character == '=') {
        cursor_.skip();
        token = element(ElementType::equals);
        return true;
    }
    if (character == '"' || character == '\'')
        return scanAttributeValue(token);
    const std::string_view name = cursor_.rest().substr(0, XmlNameLength(cursor_.rest()));
    if (name.empty() || !afterBlank)
        return cursor_.fail(parsingError);
    cursor_.skip(name.size());
    token = element(name);
    token.setType(ElementType::identifier);
    return true;
}

bool XmlLexer::scanAttributeValue(element& token)
{
    const std::size_t end = cursor_.rest().find(cursor_.current(), 1);
    if (end == std::string_view::npos)
        return cursor_.fail(parsingError);
    cursor_.skip();
    token = element(ElementType::text);
    if (!scanCharacters(end - 1, true, token))
        return false;
    cursor_.skip();
    if (!IsAscii(token.view()))
        token.setType(ElementType::utf8Text);
    return true;
}

bool XmlLexer::scanText(element& token)
{
    const std::string_view text = cursor_.rest().substr(0, cursor_.rest().find('<'));
    if (text.find(sectionEnd) != std::string_view::npos)
        return cursor_.fail(parsingError);
    token = element(ElementType::characterData);
    return scanCharacters(text.size(), false, token);
}

bool XmlLexer::scanSection(element& token)
{
    const std::string_view rest = cursor_.rest().substr(sectionStart.size());
    const std::size_t length = rest.find(sectionEnd);
    const std::string_view section = rest.substr(0, length);
    if (length == std::string_view::npos || !IsXmlText(section))
        return cursor_.fail(sectionError);
    token = element(ElementType::characterData);
    for (std::size_t index = 0; index < section.size(); ++index) {
        if (section[index] != '\r')
            token.append(static_cast<std::uint8_t>(section[index]));
        else if (!section.substr(index + 1).starts_with('\n'))
            token.append(std::uint8_t{'\n'});
    }
    cursor_.skip(sectionStart.size() + length + sectionEnd.size());
    return true;
}

bool XmlLexer::scanCharacters(std::size_t length, bool isAttribute, element& text)
{
    const std::size_t restAfter = cursor_.rest().size() - length;
    for (;;) {
        const std::string_view left = cursor_.rest().substr(0, cursor_.rest().size() - restAfter);
        const std::string_view run = left.substr(0, left.find_first_of("&\r\n\t<"));
        if (!IsXmlText(run))
            return cursor_.fail(parsingError);
        text.append(run);
        cursor_.skip(run.size());
        if (run.size() == left.size())
            return true;
        const char character = cursor_.current();
        if (character == '&') {
            if (!scanReference(text))
                return cursor_.fail(parsingError);
            continue;
        }
        if (character == '<')
            return cursor_.fail(parsingError);
        // A line end is one line feed, and in an attribute any blank is a space (XML 1.0, 2.11 and 3.3.3).
        cursor_.skip(cursor_.lookingAt("\r\n") ? 2 : 1);
        text.append(static_cast<std::uint8_t>(isAttribute ? ' ' : character == '\r' ? '\n' : character));
    }
}

bool XmlLexer::scanReference(element& text)
{
    const std::string_view window = cursor_.rest().substr(1, maxReferenceLength);
    const std::size_t length = window.find(';');
    if (length == std::string_view::npos)
        return false;
    const std::uint32_t codePoint = ReferencedCharacter(window.substr(0, length));
    cursor_.skip(length + 2);
    return IsXmlCharacter(codePoint) && EncodeUtf8(codePoint, text);
}

} // namespace ccrypto::internal
