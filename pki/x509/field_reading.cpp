#include "pki/x509/field_reading.h"

#include "asn1/parser/parser.h"
#include "asn1/tree/node_parts.h"

#include <algorithm>

namespace ccrypto {

namespace {

/// The value of a primitive BIT STRING that has bits; null for any other.
const elementNode* BitsOf(const elementNode* bitString)
{
    const elementNode* const value = bitString != nullptr ? bitString->value() : nullptr;
    return value != nullptr && bitString->type() == ElementType::bitString && value->type() == ElementType::bytes ? value : nullptr;
}

} // namespace

const element* WholeBytes(const elementNode* bitString)
{
    const elementNode* const value = BitsOf(bitString);
    const element* const unusedBits = value != nullptr ? BracketNumber(*bitString) : nullptr;
    return unusedBits != nullptr && unusedBits->toWord32() == 0 ? &value->token() : nullptr;
}

std::optional<element> SignatureOctets(const elementNode* bitString)
{
    if (const element* const octets = WholeBytes(bitString); octets != nullptr)
        return element(octets->data(), octets->length());
    const element* const unusedBits = BitsOf(bitString) != nullptr ? BracketNumber(*bitString) : nullptr;
    return unusedBits != nullptr && unusedBits->toWord32() < 8 ? std::optional(element()) : std::nullopt;
}

const element* MinimalInteger(const elementNode* value)
{
    const element* const octets = value != nullptr && value->type() == ElementType::integer ? &value->token() : nullptr;
    return octets != nullptr && IsMinimalInteger(octets->bytes()) ? octets : nullptr;
}

bool IsIdentifierContent(std::span<const std::uint8_t> octets)
{
    bool isFirstOctet = true;
    for (const std::uint8_t octet : octets) {
        if (isFirstOctet && octet == 0x80)
            return false;
        isFirstOctet = (octet & 0x80) == 0;
    }
    return !octets.empty() && isFirstOctet;
}

element OctetsOfList(const TemplateBinding& items)
{
    const ElementNodePtr list = elementNode::Make(ElementType::sequence);
    if (items.node != nullptr)
        list->set(LinkKind::content, items.node->clone(true));
    return CCryptoParser::ToDer(list.get());
}

const element* PublicKeyBits(const elementNode& publicKeyInfo)
{
    const elementNode* const algorithm = publicKeyInfo.content();
    const elementNode* const key = algorithm != nullptr ? algorithm->next() : nullptr;
    const bool isStructure = publicKeyInfo.type() == ElementType::sequence && key != nullptr &&
                             algorithm->type() == ElementType::sequence && key->next() == nullptr;
    return isStructure ? WholeBytes(key) : nullptr;
}

element IntegerOctets(const element& magnitude)
{
    const auto octets = magnitude.bytes();
    const auto first = std::ranges::find_if(octets, [](std::uint8_t octet) { return octet != 0; });
    element contents;
    if (first != octets.end() ? *first >= 0x80 : !octets.empty())
        contents.append(std::uint8_t{0});
    const auto rest = octets.subspan(static_cast<std::size_t>(first - octets.begin()));
    contents.append(rest.data(), static_cast<std::uint32_t>(rest.size()));
    return contents;
}

} // namespace ccrypto
