#include "asn1/tree/element_node.h"

#include "asn1/tree/node_pool.h"

#include <utility>

using namespace ccrypto;

namespace ccrypto {

void ElementNodeDeleter::operator()(elementNode* node) const noexcept
{
    // Down into the parts, then along the list; the rest of a list is kept by the node's parent until its turn.
    NodePool::Returned returned;
    elementNode* const top = node->parent_;
    for (;;) {
        if (elementNode* const part = node->firstPart_; part != nullptr) {
            node->firstPart_ = part->nextPart_;
            node = part;
            continue;
        }
        elementNode* const parent = node->parent_;
        elementNode* const next = node->next_;
        if (node->place_ == 0)
            delete node;
        else
            returned.add(*node);
        if (next != nullptr)
            next->parent_ = parent;
        else if (parent == top)
            return;
        node = next != nullptr ? next : parent;
    }
}

} // namespace ccrypto

elementNode* elementNode::first()
{
    elementNode* node = this;
    while (node->linkKind_ == LinkKind::sibling)
        node = node->parent_;
    return node;
}

elementNode* elementNode::last()
{
    elementNode* node = this;
    while (node->next() != nullptr)
        node = node->next();
    return node;
}

elementNode* elementNode::owner()
{
    return first()->parent_;
}

elementNode** elementNode::linkOf(LinkKind kind)
{
    if (kind == LinkKind::sibling)
        return &next_;
    elementNode** link = &firstPart_;
    while (*link != nullptr && (*link)->linkKind_ < kind)
        link = &(*link)->nextPart_;
    return link;
}

elementNode* elementNode::replace(LinkKind kind, ElementNodePtr node)
{
    const ElementNodePtr before = release(kind);
    elementNode* const adopted = node.release();
    if (adopted == nullptr)
        return nullptr;
    adopted->parent_ = this;
    adopted->linkKind_ = kind;
    elementNode** const link = linkOf(kind);
    if (kind != LinkKind::sibling)
        adopted->nextPart_ = *link;
    *link = adopted;
    return adopted;
}

ElementNodePtr elementNode::release(LinkKind kind)
{
    elementNode** const link = linkOf(kind);
    elementNode* const held = *link;
    if (held == nullptr || held->linkKind_ != kind)
        return nullptr;
    *link = kind == LinkKind::sibling ? nullptr : std::exchange(held->nextPart_, nullptr);
    held->parent_ = nullptr;
    held->linkKind_ = LinkKind::none;
    return ElementNodePtr(held);
}

ElementNodePtr elementNode::detach()
{
    return parent_ != nullptr ? parent_->release(linkKind_) : nullptr;
}

elementNode* elementNode::append(LinkKind kind, ElementNodePtr node)
{
    elementNode* const list = slot(kind);
    return list == nullptr ? set(kind, std::move(node)) : list->last()->set(LinkKind::sibling, std::move(node));
}

ElementNodePtr elementNode::clone(bool withSiblings) const
{
    NodePool pool;
    ElementNodePtr root = pool.make(token_);
    elementNode* target = root.get();
    const elementNode* source = this;
    const elementNode* down = firstPart_;
    for (;;) {
        // The parts first, then the sibling, then up to where the next of either is.
        if (down == nullptr && (source != this || withSiblings))
            down = source->next_;
        if (down != nullptr) {
            target = target->set(down->linkKind_, pool.make(down->token_));
            source = down;
            down = source->firstPart_;
            continue;
        }
        for (;;) {
            if (source == this)
                return root;
            const bool wasPart = source->linkKind_ != LinkKind::sibling;
            down = source->nextPart_;
            source = source->parent_;
            target = target->parent_;
            if (wasPart)
                break;
        }
    }
}

elementNode* elementNode::find(LinkKind kind, ElementType type) const
{
    elementNode* node = slot(kind);
    while (node != nullptr && node->type() != type)
        node = node->next();
    return node;
}
