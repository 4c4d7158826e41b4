#include "tools/cryptotool/io/depth_limit.h"

#include "asn1/der/der_analyzer.h"
#include "asn1/parser/parser.h"
#include "asn1/template/bracket_list.h"

namespace ccrypto {

namespace {

void CloseNode(elementNode& node)
{
    const bool isPrimitive = HasBracket(node, ElementType::primitive) || HasBracket(node, ElementType::implicit);
    node.set(LinkKind::content, CCryptoParser::ToDer(node.content()));
    if (!isPrimitive && !HasBracket(node, ElementType::constructed))
        node.append(LinkKind::brackets, elementNode::Make(ElementType::constructed));
}

} // namespace

void LimitDepth(elementNode* first, std::uint32_t levels)
{
    for (elementNode* node = first; node != nullptr; node = node->next()) {
        const elementNode* const content = node->content();
        if (content == nullptr || !IsAsn1Type(content->type()))
            continue;
        if (levels > 1)
            LimitDepth(node->content(), levels - 1);
        else
            CloseNode(*node);
    }
}

} // namespace ccrypto
