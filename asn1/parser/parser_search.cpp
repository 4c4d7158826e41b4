#include "asn1/parser/parser_search.h"

using namespace ccrypto;

elementNode* CCryptoParserSearch::find(const std::function<bool(const elementNode&)>& matches)
{
    while (next_ != nullptr) {
        elementNode* const node = next_;
        next_ = nodeAfter(node);
        if (matches(*node))
            return node;
    }
    return nullptr;
}

elementNode* CCryptoParserSearch::nodeAfter(elementNode* node) const
{
    if (inDepth_ && node->firstPart() != nullptr)
        return node->firstPart();
    for (;;) {
        if (node->next() != nullptr && (node != start_ || followSiblings_))
            return node->next();
        // Back along the list, and up to its owner unless another slot of the owner comes first.
        for (bool isFirst = false; !isFirst; node = node->parent()) {
            if (node == start_)
                return nullptr;
            isFirst = node->linkKind() != LinkKind::sibling;
            if (isFirst && node->nextPart() != nullptr)
                return node->nextPart();
        }
    }
}
