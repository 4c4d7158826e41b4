#include "tools/cryptotool/asn1/value_text.h"

#include "asn1/der/object_identifier.h"
#include "asn1/oid/oid_names.h"
#include "asn1/parser/parser.h"
#include "asn1/template/value_notation.h"
#include "asn1/text/decimal.h"
#include "core/text/hex.h"
#include "core/text/utf8.h"
#include "tools/text/safe_text.h"

#include <algorithm>
#include <vector>

namespace ccrypto {

namespace {

constexpr std::size_t maxDecimal = 8;

std::string_view AsText(std::span<const std::uint8_t> value)
{
    return {reinterpret_cast<const char*>(value.data()), value.size()};
}

std::string Cut(const std::string& shown, std::size_t length, bool isCut)
{
    return isCut ? shown + "... (" + std::to_string(length) + " bytes)" : shown;
}

std::string Hexadecimal(std::span<const std::uint8_t> value, std::size_t most)
{
    const auto part = value.first(std::min(most, value.size()));
    return Cut("#" + std::string(HexText(part).view()), value.size(), part.size() < value.size());
}

std::string QuotedText(std::string_view text, std::size_t length, std::size_t most)
{
    const std::string_view part = text.size() > most ? Utf8Prefix(text, most) : text;
    return Cut(Quoted(part), length, part.size() < text.size());
}

/// Big-endian characters of two or four bytes as UTF-8. \return false when they are none.
bool DecodeWide(std::span<const std::uint8_t> value, std::size_t unit, std::string& text)
{
    if (value.size() % unit != 0)
        return false;
    std::u16string units;
    for (std::size_t place = 0; place < value.size(); place += unit) {
        std::uint32_t codePoint = 0;
        for (std::size_t byte = 0; byte < unit; ++byte)
            codePoint = codePoint << 8 | value[place + byte];
        if (codePoint > maxCodePoint)
            return false;
        if (codePoint > 0xFFFF)
            units.push_back(static_cast<char16_t>(0xD7C0 + (codePoint >> 10)));
        units.push_back(static_cast<char16_t>(codePoint > 0xFFFF ? 0xDC00 + (codePoint & 0x3FF) : codePoint));
    }
    text.resize(Utf8Length(units));
    EncodeUtf8(units, reinterpret_cast<std::uint8_t*>(text.data()));
    return true;
}

std::string DecodeLatin(std::span<const std::uint8_t> value)
{
    std::string text;
    for (const std::uint8_t byte : value) {
        if (byte >= 0x80)
            text += static_cast<char>(0xC0 | byte >> 6);
        text += static_cast<char>(byte >= 0x80 ? 0x80 | (byte & 0x3F) : byte);
    }
    return text;
}

std::string IntegerText(std::span<const std::uint8_t> value, std::size_t maxHex)
{
    element number(value.data(), static_cast<std::uint32_t>(value.size()), ElementType::integer);
    number.setNegative(!value.empty() && value[0] >= 0x80);
    const element magnitude = WithoutSignOctet(number, ElementType::asn1Integer);
    const CCryptoString decimal = magnitude.length() <= maxDecimal ? DecimalFromSigned(magnitude) : CCryptoString();
    return decimal.isEmpty() ? Hexadecimal(value, maxHex) : std::string(decimal.view());
}

/// The element whose value a node is; none for a node that stands by itself.
ElementType OwnerType(const elementNode& node)
{
    const elementNode* first = &node;
    while (first->previous() != nullptr)
        first = first->previous();
    const bool isValue = first->linkKind() == LinkKind::shortValue || first->linkKind() == LinkKind::content;
    return isValue ? first->parent()->type() : ElementType::none;
}

/// The encoding of an object identifier that is kept as dotted text. \return false for other values.
bool OctetsOfDotted(const elementNode& node, element& octets)
{
    const element& value = node.token();
    return OwnerType(node) == ElementType::objectIdentifier && value.type() != ElementType::bytes &&
           DerFromDotted(value.view(), octets);
}

} // namespace

std::string ValueText(ElementType type, std::span<const std::uint8_t> value, std::size_t maxText, std::size_t maxHex)
{
    std::string decoded;
    switch (type) {
    case ElementType::boolean:
        return value.size() != 1 ? Hexadecimal(value, maxHex) : value[0] != 0 ? "TRUE" : "FALSE";
    case ElementType::integer:
    case ElementType::asn1Integer:
    case ElementType::enumerated:
        return IntegerText(value, maxHex);
    case ElementType::bmpString:
    case ElementType::universalString:
        return DecodeWide(value, type == ElementType::bmpString ? 2 : 4, decoded) ? QuotedText(decoded, value.size(), maxText)
                                                                                  : Hexadecimal(value, maxHex);
    case ElementType::teletexString:
        return QuotedText(DecodeLatin(value), value.size(), maxText);
    case ElementType::utf8String:
    case ElementType::numericString:
    case ElementType::printableString:
    case ElementType::videotexString:
    case ElementType::ia5String:
    case ElementType::utcTime:
    case ElementType::generalizedType:
    case ElementType::graphicsString:
    case ElementType::visibleString:
    case ElementType::generalString:
    case ElementType::objectDescriptor:
        return QuotedText(AsText(value), value.size(), maxText);
    case ElementType::bitString:
        return Hexadecimal(value, maxHex);
    default:
        // What has no type of its own may be text all the same.
        return value.size() > 1 && IsSafeText(AsText(value)) ? QuotedText(AsText(value), value.size(), maxText)
                                                             : Hexadecimal(value, maxHex);
    }
}

std::string StandardDotted(std::span<const std::uint8_t> octets)
{
    constexpr std::uint64_t joint = 80; // 2.0, whose arcs have no upper end
    element dotted;
    if (!DottedFromDer(octets, dotted))
        return {};
    std::uint64_t first = 0;
    std::size_t place = 0;
    do {
        if (first >> 57 != 0)
            return {};
        first = first << 7 | (octets[place] & 0x7FU);
    } while ((octets[place++] & 0x80U) != 0 && place < octets.size());
    const bool isComplete = (octets[place - 1] & 0x80U) == 0;
    if (first < joint || !isComplete)
        return isComplete ? std::string(dotted.view()) : std::string();
    std::string text = "2." + std::to_string(first - joint);
    if (place == octets.size())
        return text;
    // The arcs that follow are the same after any first octet.
    std::vector<std::uint8_t> others = {0};
    others.insert(others.end(), octets.begin() + static_cast<std::ptrdiff_t>(place), octets.end());
    if (!DottedFromDer(others, dotted))
        return {};
    return text + std::string(dotted.view().substr(std::string_view("0.0").size()));
}

std::string NamedOid(std::string_view dotted)
{
    const char* const name = FindOidName(dotted);
    return name != nullptr ? std::string(dotted) + " " + OneLine(name) : std::string(dotted);
}

element OctetsOfNode(const elementNode& node)
{
    element octets;
    return OctetsOfDotted(node, octets) ? octets : node.token();
}

std::string NodeText(const elementNode& node, bool withSiblings)
{
    const element& value = node.token();
    if (IsBareValue(node) && (!withSiblings || node.next() == nullptr)) {
        element octets;
        if (OctetsOfDotted(node, octets))
            return NamedOid(StandardDotted(octets.bytes()));
        return ValueText(value.type() == ElementType::integer ? ElementType::integer : OwnerType(node), value.bytes());
    }
    const CCryptoParser part(node.clone(withSiblings));
    std::string text = EscapeDocument(part.ToText().view(), EscapeStyle::templateText);
    while (text.ends_with('\n'))
        text.pop_back();
    return text;
}

} // namespace ccrypto
