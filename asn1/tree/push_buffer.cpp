#include "asn1/tree/push_buffer.h"

#include "asn1/tree/item_list.h"
#include "core/log/log_writers.h"

#include <algorithm>

bool CPushBuffer::CheckLength(std::uint32_t expected) const
{
    if (expected <= buffer_.length())
        return true;
    WriteErrorEx_G("expected length %d > buffer length%d", static_cast<int>(expected), static_cast<int>(buffer_.length()));
    return false;
}

namespace ccrypto {

bool TextPushBuffer::Push(const elementNode* first)
{
    const std::uint32_t before = buffer_.length();
    if (first == nullptr || pushDocument(first))
        return true;
    buffer_.resize(before);
    WriteErrorEx_G("%s::Push: %s", name(), reason_);
    return false;
}

bool TextPushBuffer::pushList(const elementNode* first, const elementNode* owner, std::uint32_t depth)
{
    if (depth >= maxTreeDepth)
        return fail(tooDeep);
    for (const elementNode* node = first; node != nullptr; node = node->next()) {
        if (!pushNode({*node, owner, depth}))
            return false;
    }
    return true;
}

bool TextPushBuffer::pushNode(const Place& place)
{
    return pushHead(place) && pushValue(place) && pushList(listOf(place), &place.node, place.depth + 1) && pushEnd(place);
}

void TextPushBuffer::pushIndent(std::uint32_t depth)
{
    constexpr std::string_view blanks = "                                                                ";
    constexpr std::uint32_t indentWidth = 4;
    PushText(blanks.substr(0, std::min<std::size_t>(std::size_t{depth} * indentWidth, blanks.size())));
}

bool TextPushBuffer::fail(const char* reason)
{
    reason_ = reason;
    return false;
}

} // namespace ccrypto
