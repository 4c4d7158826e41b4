#include "asn1/template/push_ascii_buffer.h"

#include "asn1/template/item_notation.h"

using namespace ccrypto;

bool CPushAsciiBuffer::pushHead(const Place& place)
{
    CCryptoString head;
    if (!AppendHead(place.node, place.owner, ItemPlace::inList, head))
        return fail(noNotation);
    pushIndent(place.depth);
    PushText(head.view());
    return true;
}

bool CPushAsciiBuffer::pushValue(const Place& place)
{
    if (BlockOf(place.node) != nullptr)
        PushText(listOf(place) != nullptr ? " {\n" : " { ... ");
    return true;
}

const elementNode* CPushAsciiBuffer::listOf(const Place& place) const
{
    return place.depth < maxDepth_ ? BlockOf(place.node) : nullptr;
}

bool CPushAsciiBuffer::pushEnd(const Place& place)
{
    if (listOf(place) != nullptr)
        pushIndent(place.depth);
    if (BlockOf(place.node) != nullptr)
        PushByte('}');
    CCryptoString tail;
    if (!AppendTail(place.node, true, tail))
        return fail(noNotation);
    PushText(tail.view());
    PushText(place.node.next() != nullptr ? ",\n" : "\n");
    return true;
}
