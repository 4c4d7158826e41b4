#include "asn1/template/item_notation.h"

#include "asn1/der/der_analyzer.h"
#include "asn1/template/gen_parser.h"
#include "asn1/template/lexical_analyzer.h"
#include "asn1/template/value_notation.h"
#include "asn1/text/unicode_text.h"
#include "asn1/tree/item_list.h"
#include "core/text/hex.h"

#include <algorithm>
#include <cstdio>

namespace ccrypto {

namespace {

constexpr std::uint32_t maxDecimalBytes = 8;

CCryptoString Hex(std::span<const std::uint8_t> bytes)
{
    return CCryptoString("#") + HexText(bytes);
}

/// UTF-8 whose characters beyond ASCII may stand in an XML document, too.
bool IsWritable(std::string_view text)
{
    std::uint32_t codePoint = 0;
    while (!text.empty()) {
        const std::size_t taken = ReadCharacter(text, codePoint);
        if (taken == 0 || (codePoint >= 0x80 && !IsXmlCharacter(codePoint)))
            return false;
        text.remove_prefix(taken);
    }
    return true;
}

CCryptoString Quoted(std::string_view text, char quote = '"')
{
    const bool escapeHighBytes = !IsWritable(text);
    CCryptoString quoted(std::string_view(&quote, 1));
    for (const char character : text) {
        const auto byte = static_cast<std::uint8_t>(character);
        if (character == quote || character == '\\') {
            const char escaped[] = {'\\', character};
            quoted.append({escaped, 2});
        } else if (byte < 0x20 || byte == 0x7F || (byte >= 0x80 && escapeHighBytes)) {
            char escaped[5];
            std::snprintf(escaped, sizeof escaped, "\\x%02x", byte);
            quoted += escaped;
        } else {
            quoted.append({&character, 1});
        }
    }
    return quoted.append({&quote, 1});
}

/// Words, quotes or bytes after the name of their kind, where the notation alone would be read as another kind.
CCryptoString Marked(const element& value, const CCryptoString& notation)
{
    return CCryptoString("%").append(ValueKindName(value)).append(notation.view());
}

/// Whether the bytes, classified again when they are read back from quotes, are written the same by the owner.
bool SurvivesQuotes(const element& value, ElementType owner)
{
    const bool sameKind = (CCryptoString(value.view()).kind() == TextKind::Utf8) == (value.type() == ElementType::utf8Text);
    return sameKind || (owner != ElementType::bmpString && IsAscii(value.view()));
}

CCryptoString TextNotation(const element& value, ElementType owner)
{
    if (value.type() == ElementType::quotedText && IsWritable(value.view())) {
        const bool plain = std::ranges::all_of(value.bytes(), [](std::uint8_t byte) { return byte >= 0x20 && byte != '\''; });
        if (plain)
            return CCryptoString("'").append(value.view()).append("'");
    }
    const bool isPlain = value.type() == ElementType::text || value.type() == ElementType::utf8Text;
    return isPlain && SurvivesQuotes(value, owner) ? Quoted(value.view()) : Marked(value, Quoted(value.view()));
}

/// A number reads back as its shortest magnitude, so only such bytes are written in decimal. Below zero, bytes with the top bit set
/// may be two's complement from DER.
CCryptoString IntegerNotation(const element& value, ElementType owner)
{
    const element number = WithoutSignOctet(value, owner);
    const std::uint32_t length = number.length();
    const bool shortest = length == 1 || (length > 1 && number.data()[0] != 0);
    const bool isDecimal = shortest && length <= maxDecimalBytes && !(number.negative() && number.data()[0] >= 0x80);
    return isDecimal ? number.toString() : Marked(value, Hex(value.bytes()));
}

/// A name that the lexer does not read as one word, for example from a JSON document, is written in backquotes.
CCryptoString WordNotation(std::string_view name)
{
    CCryptoLexicalAnalyzer lexer(name);
    element word;
    const bool isWord = IsWritable(name) && lexer.scan(word) && word.type() == ElementType::identifier && word.view() == name;
    return isWord ? CCryptoString(name) : Quoted(name, '`');
}

/// Whether an item without a word needs a "\" in its place.
bool NeedsMark(const elementNode& item, ItemPlace place)
{
    if (place == ItemPlace::alone || item.type() != ElementType::none)
        return false;
    return item.previous() != nullptr || (IsBare(item) && (item.next() != nullptr || item.parent() != nullptr));
}

bool AppendBlock(const elementNode* list, const char* before, const char* after, CCryptoString& text, std::uint32_t depth)
{
    text += before;
    // The lists in brackets and parentheses are not the node's value.
    const bool appended = AppendList(list, nullptr, ",", text, depth + 1);
    text += after;
    return appended;
}

} // namespace

CCryptoString TokenNotation(const element& token, const elementNode* owner)
{
    const ElementType type = owner != nullptr ? owner->type() : ElementType::none;
    switch (token.type()) {
    case ElementType::none:
        return {};
    case ElementType::identifier:
        return WordNotation(token.view());
    case ElementType::text:
    case ElementType::utf8Text:
    case ElementType::quotedText:
    case ElementType::characterData:
        return TextNotation(token, type);
    case ElementType::integer:
        return IntegerNotation(token, type);
    case ElementType::truth:
        return Marked(token, Hex(token.bytes()));
    case ElementType::bytes:
        return Hex(token.bytes());
    default:
        return token.toString();
    }
}

bool AppendList(const elementNode* first, const elementNode* owner, const char* separator, CCryptoString& text, std::uint32_t depth)
{
    if (depth >= maxTreeDepth)
        return false;
    for (const elementNode* node = first; node != nullptr; node = node->next()) {
        if (!AppendHead(*node, owner, ItemPlace::inList, text, depth))
            return false;
        if (node->content() != nullptr) {
            text += " {";
            if (!AppendList(node->content(), node, ",", text, depth + 1))
                return false;
            text += "}";
        }
        if (!AppendTail(*node, true, text, depth))
            return false;
        if (node->next() == nullptr)
            break;
        // After only a blank, a "-" would subtract.
        text += node->next()->token().negative() && separator[0] == ' ' ? " . " : separator;
    }
    return true;
}

bool AppendHead(const elementNode& item, const elementNode* owner, ItemPlace place, CCryptoString& text, std::uint32_t depth)
{
    text += NeedsMark(item, place) ? CCryptoString("\\") : TokenNotation(item.token(), owner);
    if (item.brackets() != nullptr && !AppendBlock(item.brackets(), "[", "]", text, depth))
        return false;
    return item.modifiers() == nullptr || AppendBlock(item.modifiers(), " (", ")", text, depth);
}

bool AppendTail(const elementNode& item, bool withValue, CCryptoString& text, std::uint32_t depth)
{
    const bool hasValue = withValue && item.shortValue() != nullptr;
    text += hasValue ? " = " : "";
    if (hasValue && !AppendValue(item, text, depth))
        return false;
    if (item.operation() == nullptr)
        return true;
    // Without the separator the operator would belong to the value.
    text += hasValue ? "; " : " ";
    return AppendOperation(item, text, depth);
}

bool AppendValue(const elementNode& item, CCryptoString& text, std::uint32_t depth)
{
    return AppendList(item.shortValue(), &item, " ", text, depth + 1);
}

bool AppendOperation(const elementNode& item, CCryptoString& text, std::uint32_t depth)
{
    const elementNode* const operation = item.operation();
    if (operation == nullptr)
        return true;
    text += TokenNotation(operation->token(), nullptr);
    text += operation->content() != nullptr ? " " : "";
    return AppendList(operation->content(), &item, " ", text, depth + 1);
}

ElementNodePtr ParseList(std::string_view text, std::uint32_t& itemsLeft)
{
    NoIncludes loader;
    return CCryptoGENParser(&loader).TryParse(text, itemsLeft);
}

ElementNodePtr ParseHead(std::string_view text, std::uint32_t& itemsLeft)
{
    const ElementType keyword = KeywordType(text);
    if (IsAsn1Type(keyword)) {
        itemsLeft -= itemsLeft != 0 ? 1 : 0;
        return elementNode::Make(keyword);
    }
    ElementNodePtr item = ParseList(text, itemsLeft);
    return item != nullptr && item->next() == nullptr && item->content() == nullptr ? std::move(item) : nullptr;
}

} // namespace ccrypto
