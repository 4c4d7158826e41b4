#include "asn1/item_notation.h"

#include "asn1/gen_parser.h"
#include "asn1/hex.h"
#include "asn1/lexical_analyzer.h"
#include "asn1/unicode_text.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr std::uint32_t mostDecimalBytes = 8;

class NothingToInclude : public ICryptoIncludeLoader {
public:
    bool Load(const CCryptoString&, element&) override { return false; }
};

CCryptoString Hex(std::span<const std::uint8_t> bytes)
{
    return CCryptoString("#") + HexText(bytes);
}

CCryptoString Quoted(std::string_view text)
{
    const bool escapeHighBytes = !IsUtf8(text);
    CCryptoString quoted("\"");
    for (const char character : text) {
        const auto byte = static_cast<std::uint8_t>(character);
        if (character == '"' || character == '\\') {
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
    return quoted += "\"";
}

/// Whether the bytes read back from quotes, and so classified anew, are written by the owner as they stood.
bool SurvivesQuotes(const element& value, ElementType owner)
{
    const bool readBackUtf8 = CCryptoString(value.view()).kind() == TextKind::Utf8;
    if (owner == ElementType::utf8String)
        return IsAscii(value.view()) || readBackUtf8 == (value.type() == ElementType::utf8Text);
    if (owner == ElementType::bmpString)
        return readBackUtf8 == (value.type() == ElementType::utf8Text);
    return true;
}

CCryptoString TextNotation(const element& value, ElementType owner)
{
    if (value.type() == ElementType::quotedText && IsUtf8(value.view())) {
        const bool plain = std::ranges::all_of(value.bytes(), [](std::uint8_t byte) { return byte >= 0x20 && byte != '\''; });
        if (plain)
            return CCryptoString("'").append(value.view()).append("'");
    }
    return SurvivesQuotes(value, owner) ? Quoted(value.view()) : Hex(value.bytes());
}

/// A number reads back as its shortest magnitude, so the bytes must be just that.
CCryptoString IntegerNotation(const element& value, ElementType owner)
{
    const std::uint32_t length = value.length();
    const bool shortest = length == 1 || (length > 1 && value.data()[0] != 0);
    if (!value.negative() && shortest && length <= mostDecimalBytes)
        return value.toString();
    const bool isInteger = owner == ElementType::asn1Integer || owner == ElementType::enumerated;
    const bool magnitude = !value.negative() && length != 0 && value.data()[0] >= 0x80;
    if (!isInteger || !magnitude)
        return Hex(value.bytes());
    // The sign octet, which an INTEGER of a magnitude gets and raw bytes do not.
    element octets("\0", 1);
    octets.append(value.data(), length);
    return Hex(octets.bytes());
}

/// A name that the lexical analyzer does not read as one word, from a JSON document for example, goes into quotes.
CCryptoString WordNotation(std::string_view name)
{
    CCryptoLexicalAnalyzer lexer(name);
    element word;
    const bool isWord = IsUtf8(name) && lexer.scan(word) && word.type() == ElementType::identifier && word.view() == name;
    return isWord ? CCryptoString(name) : Quoted(name);
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
        return token.toTruth() ? "#ff" : "#00";
    case ElementType::bytes:
        return Hex(token.bytes());
    default:
        return token.toString();
    }
}

bool AppendList(const elementNode* first, const elementNode* owner, const char* separator, CCryptoString& text, std::uint32_t depth)
{
    if (depth >= deepestItem)
        return false;
    for (const elementNode* node = first; node != nullptr; node = node->next()) {
        if (!AppendHead(*node, owner, text, depth))
            return false;
        if (node->content() != nullptr) {
            text += " {";
            if (!AppendList(node->content(), node, ",", text, depth + 1))
                return false;
            text += "}";
        }
        if (!AppendTail(*node, true, text, depth))
            return false;
        text += node->next() != nullptr ? separator : "";
    }
    return true;
}

bool AppendHead(const elementNode& item, const elementNode* owner, CCryptoString& text, std::uint32_t depth)
{
    struct Block {
        LinkKind kind;
        const char *before, *after;
    };
    constexpr Block blocks[] = {{LinkKind::brackets, "[", "]"}, {LinkKind::modifiers, " (", ")"}};
    text += TokenNotation(item.token(), owner);
    for (const Block& block : blocks) {
        if (item.slot(block.kind) == nullptr)
            continue;
        text += block.before;
        // What stands in brackets and parentheses is not the node's value.
        if (!AppendList(item.slot(block.kind), nullptr, ",", text, depth + 1))
            return false;
        text += block.after;
    }
    return true;
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

ElementNodePtr ParseList(std::string_view text)
{
    NothingToInclude loader;
    return CCryptoGENParser(&loader).TryParse(text);
}

ElementNodePtr ParseHead(std::string_view text)
{
    const ElementType keyword = KeywordType(text);
    if (keyword != ElementType::identifier && keyword != ElementType::include)
        return elementNode::Make(keyword);
    ElementNodePtr item = ParseList(text);
    return item != nullptr && item->next() == nullptr && item->content() == nullptr ? std::move(item) : nullptr;
}
