#include "asn1/element_node.h"

#include <utility>

void ElementNodeDeleter::operator()(elementNode* node) const noexcept
{
    // Goes down into any slot still filled, and back up by the parent once all are empty.
    elementNode* const top = node->parent_;
    std::size_t slot = 0;
    while (node != top) {
        while (slot < elementNode::slotCount && node->slots_[slot] == nullptr)
            ++slot;
        if (slot < elementNode::slotCount) {
            node = std::exchange(node->slots_[slot], nullptr);
            slot = 0;
        } else {
            elementNode* const parent = node->parent_;
            slot = elementNode::indexOf(node->linkKind_);
            delete node;
            node = parent;
        }
    }
}

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

elementNode* elementNode::set(LinkKind kind, ElementNodePtr node)
{
    elementNode*& held = slots_[indexOf(kind)];
    const ElementNodePtr before = release(kind);
    held = node.release();
    if (held != nullptr) {
        held->parent_ = this;
        held->linkKind_ = kind;
    }
    return held;
}

elementNode* elementNode::set(LinkKind kind, element value)
{
    return set(kind, Make(std::move(value)));
}

ElementNodePtr elementNode::release(LinkKind kind)
{
    elementNode* const held = std::exchange(slots_[indexOf(kind)], nullptr);
    if (held != nullptr) {
        held->parent_ = nullptr;
        held->linkKind_ = LinkKind::none;
    }
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
    ElementNodePtr root = Make(token_);
    elementNode* target = root.get();
    const elementNode* source = this;
    std::size_t slot = 0;
    for (;;) {
        const bool mayFollow = source != this || withSiblings;
        const std::size_t end = mayFollow ? slotCount : slotCount - 1;
        while (slot < end && source->slots_[slot] == nullptr)
            ++slot;
        if (slot < end) {
            source = source->slots_[slot];
            target = target->set(static_cast<LinkKind>(slot + 1), source->token_);
            slot = 0;
            continue;
        }
        if (source == this)
            return root;
        slot = indexOf(source->linkKind_) + 1;
        source = source->parent_;
        target = target->parent_;
    }
}

elementNode* elementNode::find(LinkKind kind, ElementType type) const
{
    elementNode* node = slot(kind);
    while (node != nullptr && node->type() != type)
        node = node->next();
    return node;
}
