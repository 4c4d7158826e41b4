#pragma once

#include "core/text/element.h"

#include <cstdint>
#include <memory>
#include <string_view>

class elementNode;

namespace ccrypto {

class NodePool;

/// Deletes a node with its parts and the siblings after it, in constant stack.
struct ElementNodeDeleter {
    void operator()(elementNode* node) const noexcept;
};

using ElementNodePtr = std::unique_ptr<elementNode, ElementNodeDeleter>;

/// Which slot of its parent holds a node.
enum class LinkKind : std::uint32_t {
    none = 0,
    modifiers = 1,  ///< in parentheses: "OPTIONAL"
    brackets = 2,   ///< in square brackets: a tag number, "CONSTRUCTED", "IMPLICIT", …
    shortValue = 3, ///< after "="; the decoder puts values shorter than 40 bytes here
    operation = 4,  ///< an operator; the expression to its right is the operator's content
    content = 5,    ///< in braces; the decoder puts children and longer values here
    sibling = 6,    ///< the next item of the same list
};

} // namespace ccrypto

/// One node of the tree that DER, template text, XML and JSON share: a token and six slots, each owning at most one node.
///
/// The parent of a node is the node whose slot holds it; the parent of a sibling is therefore the item before it. A list is walked
/// along its siblings and may be a million items long: nothing here recurses along a list, or to a depth that input decides.
class elementNode {
public:
    elementNode(const elementNode&) = delete;
    elementNode& operator=(const elementNode&) = delete;

    /// A node in storage of its own; NodePool makes the many nodes of a tree.
    static ccrypto::ElementNodePtr Make(element token) { return ccrypto::ElementNodePtr(new elementNode(std::move(token))); }
    static ccrypto::ElementNodePtr Make(ccrypto::ElementType type) { return ccrypto::ElementNodePtr(new elementNode(type)); }

    const element& token() const { return token_; }
    element& token() { return token_; }
    ccrypto::ElementType type() const { return token_.type(); }

    elementNode* parent() const { return parent_; }
    ccrypto::LinkKind linkKind() const { return linkKind_; }

    elementNode* slot(ccrypto::LinkKind kind) const
    {
        if (kind == ccrypto::LinkKind::sibling)
            return next_;
        elementNode* part = firstPart_;
        while (part != nullptr && part->linkKind_ < kind)
            part = part->nextPart_;
        return part != nullptr && part->linkKind_ == kind ? part : nullptr;
    }
    elementNode* modifiers() const { return slot(ccrypto::LinkKind::modifiers); }
    elementNode* brackets() const { return slot(ccrypto::LinkKind::brackets); }
    elementNode* shortValue() const { return slot(ccrypto::LinkKind::shortValue); }
    elementNode* operation() const { return slot(ccrypto::LinkKind::operation); }
    elementNode* content() const { return slot(ccrypto::LinkKind::content); }
    elementNode* next() const { return next_; }

    /// The filled slots except the sibling's, in the order of their kinds.
    elementNode* firstPart() const { return firstPart_; }
    elementNode* nextPart() const { return nextPart_; }

    /// What stands for the value wherever the decoder or the writer of a template put it: the content, else the short value.
    elementNode* value() const
    {
        elementNode* found = nullptr;
        for (elementNode* part = firstPart_; part != nullptr; part = part->nextPart_) {
            if (part->linkKind_ == ccrypto::LinkKind::shortValue || part->linkKind_ == ccrypto::LinkKind::content)
                found = part;
        }
        return found;
    }

    /// The item before this one in its list; null for the first.
    elementNode* previous() const { return linkKind_ == ccrypto::LinkKind::sibling ? parent_ : nullptr; }
    elementNode* first();
    elementNode* last();
    /// The node whose slot, other than the sibling slot, holds this node's list; null for a root.
    elementNode* owner();

    /// Destroys what the slot held, and adopts `node` with its siblings, or wraps `value` in a new node. An empty `node` empties
    /// the slot. \return the node adopted.
    elementNode* set(ccrypto::LinkKind kind, ccrypto::ElementNodePtr node)
    {
        elementNode*& link = kind == ccrypto::LinkKind::sibling ? next_ : firstPart_;
        if (link != nullptr || node == nullptr)
            return replace(kind, std::move(node));
        link = node.release();
        link->parent_ = this;
        link->linkKind_ = kind;
        return link;
    }
    elementNode* set(ccrypto::LinkKind kind, element value) { return set(kind, Make(std::move(value))); }
    /// Takes what the slot holds out of the tree.
    ccrypto::ElementNodePtr release(ccrypto::LinkKind kind);
    /// Takes this node out of its parent's slot, its siblings with it. A root cannot be detached: null.
    ccrypto::ElementNodePtr detach();

    /// Adopts `node`, with its siblings, at the end of the list in the slot. Walks the list; a builder of long lists keeps the last
    /// node and uses set(LinkKind::sibling, …) on it.
    elementNode* append(ccrypto::LinkKind kind, ccrypto::ElementNodePtr node);

    /// A deep copy without this node's siblings, or with those that follow it.
    ccrypto::ElementNodePtr clone(bool withSiblings = false) const;

    /// True for a token with this text of an identifier.
    bool isNamed(std::string_view name) const { return type() == ccrypto::ElementType::identifier && token_.view() == name; }
    /// The item of the slot's list that is of this type; null when none is.
    elementNode* find(ccrypto::LinkKind kind, ccrypto::ElementType type) const;
    bool has(ccrypto::LinkKind kind, ccrypto::ElementType type) const { return find(kind, type) != nullptr; }

private:
    friend struct ccrypto::ElementNodeDeleter;
    friend class ccrypto::NodePool;

    explicit elementNode(element&& token) : token_(std::move(token)) {}
    explicit elementNode(const element& token) : token_(token) {}
    explicit elementNode(ccrypto::ElementType type) : token_(type) {}
    ~elementNode() = default;

    elementNode* replace(ccrypto::LinkKind kind, ccrypto::ElementNodePtr node);
    /// The pointer that holds a part of this kind, or would hold it.
    elementNode** linkOf(ccrypto::LinkKind kind);

    elementNode* parent_ = nullptr;
    elementNode* next_ = nullptr;
    /// The filled slots except the sibling's, in the order of their kinds: few nodes have more than two.
    elementNode* firstPart_ = nullptr;
    elementNode* nextPart_ = nullptr;
    element token_;
    ccrypto::LinkKind linkKind_ = ccrypto::LinkKind::none;
    /// Counted from 1 in the block of a pool; 0 for a node in storage of its own.
    std::uint32_t place_ = 0;
};
