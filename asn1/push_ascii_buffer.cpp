#include "asn1/push_ascii_buffer.h"

#include "asn1/der_analyzer.h"
#include "core/log_writers.h"
#include "core/string.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr std::uint32_t deepestTree = 256;
constexpr std::uint32_t mostDecimalBytes = 8;
constexpr std::uint32_t indentWidth = 4;

CCryptoString Hex(const element& value)
{
    CCryptoString text("#");
    const element plain(value.data(), value.length());
    return text + plain.toString();
}

CCryptoString Quoted(std::string_view text, bool escapeHighBytes)
{
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
bool SurvivesQuotes(const element& value, TextKind readBack, ElementType owner)
{
    const bool ascii = std::ranges::all_of(value.bytes(), [](std::uint8_t byte) { return byte < 0x80; });
    if (owner == ElementType::utf8String)
        return ascii || (readBack == TextKind::Utf8) == (value.type() == ElementType::utf8Text);
    if (owner == ElementType::bmpString)
        return (readBack == TextKind::Utf8) == (value.type() == ElementType::utf8Text);
    return true;
}

CCryptoString TextNotation(const element& value, ElementType owner)
{
    const TextKind readBack = CCryptoString(value.view()).kind();
    if (value.type() == ElementType::quotedText) {
        const bool plain = std::ranges::all_of(value.bytes(), [](std::uint8_t byte) { return byte >= 0x20 && byte != '\''; });
        if (plain)
            return CCryptoString("'") + CCryptoString(value.view()) + "'";
    }
    return SurvivesQuotes(value, readBack, owner) ? Quoted(value.view(), readBack == TextKind::Plain) : Hex(value);
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
        return Hex(value);
    // The sign octet, which an INTEGER of a magnitude gets and raw bytes do not.
    element octets("\0", 1);
    octets.append(value.data(), length);
    return Hex(octets);
}

} // namespace

CCryptoString TokenNotation(const element& token, const elementNode* owner)
{
    const ElementType type = owner != nullptr ? owner->type() : ElementType::none;
    switch (token.type()) {
    case ElementType::none:
        return {};
    case ElementType::identifier:
        return CCryptoString(token.view());
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
        return Hex(token);
    default:
        return token.toString();
    }
}

bool CPushAsciiBuffer::Push(const elementNode* first)
{
    const std::uint32_t before = buffer_.length();
    if (pushList(first, nullptr, 0))
        return true;
    buffer_.resize(before);
    WriteErrorEx_G("CPushAsciiBuffer::Push: The tree is more than %u levels deep", deepestTree);
    return false;
}

void CPushAsciiBuffer::pushIndent(std::uint32_t depth)
{
    for (std::uint32_t column = 0; column < depth * indentWidth; ++column)
        PushByte(' ');
}

bool CPushAsciiBuffer::pushList(const elementNode* first, const elementNode* owner, std::uint32_t depth)
{
    if (depth >= deepestTree)
        return false;
    for (const elementNode* node = first; node != nullptr; node = node->next()) {
        pushIndent(depth);
        if (!pushItem(*node, owner, depth))
            return false;
        PushText(node->next() != nullptr ? ",\n" : "\n");
    }
    return true;
}

bool CPushAsciiBuffer::pushInLine(const elementNode* first, const elementNode* owner, const char* separator, std::uint32_t depth)
{
    if (depth >= deepestTree)
        return false;
    for (const elementNode* node = first; node != nullptr; node = node->next()) {
        if (!pushItem(*node, owner, depth))
            return false;
        if (node->next() != nullptr)
            PushText(separator);
    }
    return true;
}

bool CPushAsciiBuffer::pushItem(const elementNode& node, const elementNode* owner, std::uint32_t depth)
{
    PushText(TokenNotation(node.token(), owner).view());
    return pushParts(node, depth);
}

bool CPushAsciiBuffer::pushParts(const elementNode& node, std::uint32_t depth)
{
    const struct {
        LinkKind kind;
        const char *before, *between, *after;
    } inLineParts[] = {
        {LinkKind::brackets, "[", ",", "]"}, {LinkKind::modifiers, " (", ",", ")"}, {LinkKind::shortValue, " = ", " ", ""}};
    for (const auto& [kind, before, between, after] : inLineParts) {
        if (node.slot(kind) == nullptr)
            continue;
        PushText(before);
        // What stands in brackets and parentheses is not the node's value.
        if (!pushInLine(node.slot(kind), kind == LinkKind::shortValue ? &node : nullptr, between, depth + 1))
            return false;
        PushText(after);
    }
    if (const elementNode* const operation = node.operation()) {
        PushText(" ");
        PushText(TokenNotation(operation->token(), nullptr).view());
        PushText(" ");
        if (!pushInLine(operation->content(), &node, " ", depth + 1))
            return false;
    }
    if (node.content() == nullptr)
        return true;
    if (depth >= deepest_) {
        PushText(" { ... }");
        return true;
    }
    PushText(" {\n");
    if (!pushList(node.content(), &node, depth + 1))
        return false;
    pushIndent(depth);
    PushText("}");
    return true;
}
