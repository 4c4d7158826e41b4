#include "asn1/template/value_octets.h"

#include "asn1/template/push_der_buffer.h"

namespace ccrypto {

namespace {

bool WriteOctets(ElementType type, ElementNodePtr value, element& octets)
{
    // A wrapper that is left out leaves what its type makes of the value.
    const ElementNodePtr wrapper = elementNode::Make(type);
    wrapper->set(LinkKind::brackets, element("EXCLUDE"));
    wrapper->set(LinkKind::content, std::move(value));
    CPushDerBuffer buffer;
    if (!buffer.Push(wrapper.get()))
        return false;
    octets = buffer.takeBuffer();
    return true;
}

} // namespace

bool ValueOctets(const elementNode& owner, const elementNode* value, element& octets)
{
    return WriteOctets(owner.type(), value != nullptr ? value->clone(true) : nullptr, octets);
}

bool SingleValueOctets(const elementNode& owner, const elementNode& value, element& octets)
{
    return WriteOctets(owner.type(), value.clone(), octets);
}

} // namespace ccrypto
