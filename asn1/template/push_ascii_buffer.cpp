#include "asn1/template/push_ascii_buffer.h"

#include "asn1/template/item_notation.h"

using namespace ccrypto;

bool CPushAsciiBuffer::pushHead(const Place& place)
{
    CCryptoString head;
    if (!AppendHead(place.node, place.owner, ItemPlace::inList, head))
        return fail(tooDeep);
    pushIndent(place.depth);
    PushText(head.view());
    return true;
}

bool CPushAsciiBuffer::pushValue(const Place& place)
{
    if (place.node.content() != nullptr)
        PushText(listOf(place) != nullptr ? " {\n" : " { ... ");
    return true;
}

const elementNode* CPushAsciiBuffer::listOf(const Place& place) const
{
    return place.depth < maxDepth_ ? place.node.content() : nullptr;
}

bool CPushAsciiBuffer::pushEnd(const Place& place)
{
    if (listOf(place) != nullptr)
        pushIndent(place.depth);
    if (place.node.content() != nullptr)
        PushByte('}');
    CCryptoString tail;
    if (!AppendTail(place.node, true, tail))
        return fail(tooDeep);
    PushText(tail.view());
    PushText(place.node.next() != nullptr ? ",\n" : "\n");
    return true;
}
