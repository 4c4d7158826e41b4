#include "asn1/types/oid.h"

#include "asn1/der/object_identifier.h"
#include "asn1/tree/element_node.h"

#include <algorithm>

namespace ccrypto {

Oid::Oid(std::span<const std::uint8_t> octets) : octets_(octets.data(), static_cast<std::uint32_t>(octets.size())) {}

Oid Oid::FromDotted(std::string_view dotted)
{
    element octets;
    return DerFromDotted(dotted, octets) ? Oid(octets.bytes()) : Oid();
}

Oid Oid::OfNode(const elementNode* node)
{
    if (node == nullptr || node->type() != ElementType::objectIdentifier || node->value() == nullptr)
        return {};
    // The decoder keeps dotted text where there is one, and the octets otherwise.
    const element& value = node->value()->token();
    return value.type() == ElementType::bytes ? Oid(value.bytes()) : FromDotted(value.view());
}

CCryptoString Oid::dotted() const
{
    element text;
    if (isNone() || DottedFromDer(octets(), text))
        return CCryptoString(text.view());
    return octets_.toString();
}

bool Oid::operator==(const Oid& other) const
{
    return !isNone() && *this == other.octets();
}

bool Oid::operator==(std::span<const std::uint8_t> octets) const
{
    return std::ranges::equal(this->octets(), octets);
}

std::strong_ordering Oid::operator<=>(const Oid& other) const
{
    return std::lexicographical_compare_three_way(octets().begin(), octets().end(), other.octets().begin(), other.octets().end());
}

} // namespace ccrypto
