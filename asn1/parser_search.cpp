#include "asn1/parser_search.h"

namespace {

constexpr LinkKind visitOrder[] = {LinkKind::modifiers, LinkKind::brackets, LinkKind::shortValue,
                                   LinkKind::operation, LinkKind::content,  LinkKind::sibling};

/// The first filled slot of `node` behind `kind` in the order of visits.
elementNode* SlotBehind(const elementNode& node, LinkKind kind, bool inDepth, bool withSibling)
{
    bool behind = kind == LinkKind::none;
    for (const LinkKind each : visitOrder) {
        const bool visited = each == LinkKind::sibling ? withSibling : inDepth;
        if (behind && visited && node.slot(each) != nullptr)
            return node.slot(each);
        behind = behind || each == kind;
    }
    return nullptr;
}

} // namespace

elementNode* CCryptoParserSearch::find(const std::function<bool(const elementNode&)>& matches)
{
    while (next_ != nullptr) {
        elementNode* const node = next_;
        next_ = behind(node);
        if (matches(*node))
            return node;
    }
    return nullptr;
}

elementNode* CCryptoParserSearch::behind(elementNode* node) const
{
    LinkKind kind = LinkKind::none;
    for (;;) {
        const bool mayFollow = node != start_ || followSiblings_;
        if (elementNode* const found = SlotBehind(*node, kind, inDepth_, mayFollow))
            return found;
        if (node == start_)
            return nullptr;
        kind = node->linkKind();
        node = node->parent();
    }
}
