#pragma once

#include "core/containers/array.h"
#include "core/containers/critical_section.h"
#include "core/memory/out_of_memory.h"

#include <algorithm>
#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

/// A node of CAvlTree with the subtree below it.
template <typename K, typename V>
class CAvlNode {
public:
    using Slot = std::unique_ptr<CAvlNode>;

    CAvlNode(K nodeKey, V nodeValue) : key(std::move(nodeKey)), value(std::move(nodeValue)) {}
    CAvlNode(const CAvlNode&) = delete;
    CAvlNode& operator=(const CAvlNode&) = delete;
    /// Destroys both subtrees, as deep as the tree is high. Inlined, level into level, it would make each move of a slot thousands
    /// of bytes long.
    [[gnu::noinline]] ~CAvlNode() {}

    /// Brings the subtree in `slot` back into balance, when one of its sides has just grown by one.
    static void Rebalance(Slot& slot)
    {
        slot->updateHeight();
        if (slot->balance() == 2) {
            if (slot->right->balance() < 0)
                RotateRight(slot->right);
            RotateLeft(slot);
        } else if (slot->balance() == -2) {
            if (slot->left->balance() > 0)
                RotateLeft(slot->left);
            RotateRight(slot);
        }
    }

    /// 1 for a leaf; an empty subtree counts 0.
    std::uint32_t height = 1;
    Slot left;
    Slot right;
    K key;
    V value;

private:
    static std::uint32_t HeightOf(const Slot& slot) { return slot ? slot->height : 0; }

    void updateHeight() { height = std::max(HeightOf(left), HeightOf(right)) + 1; }
    std::int64_t balance() const { return std::int64_t{HeightOf(right)} - std::int64_t{HeightOf(left)}; }

    static void RotateLeft(Slot& slot)
    {
        Slot lower = std::move(slot);
        slot = std::move(lower->right);
        lower->right = std::move(slot->left);
        lower->updateHeight();
        slot->left = std::move(lower);
        slot->updateHeight();
    }

    static void RotateRight(Slot& slot)
    {
        Slot lower = std::move(slot);
        slot = std::move(lower->left);
        lower->left = std::move(slot->right);
        lower->updateHeight();
        slot->right = std::move(lower);
        slot->updateHeight();
    }
};

/// A map ordered by key, in a balanced tree that carries its own lock: every operation holds it from beginning to end, so any
/// number of threads may use one tree. Keys are ordered by `<=>`, or by `<` and `==` where they have no more. Nodes are never
/// removed. Without memory for a node the process ends.
///
/// A value found stays where it is until the tree is destroyed, but is used outside the lock: threads that share the value of one
/// key, and of which one changes it, go through WithValue.
///
/// Once the tree is destroyed, as a static one is at the end of the process, its lock cannot be had: Insert, Find, WithValue,
/// Traverse and CopyTo then do nothing and say so by their result.
template <typename K, typename V>
class CAvlTree {
public:
    using Node = CAvlNode<K, V>;

    /// `name` is not copied; the lock names itself with it in the log.
    explicit CAvlTree(const char* name = "avlTree") : section_(name) {}
    virtual ~CAvlTree() = default;
    CAvlTree(const CAvlTree&) = delete;
    CAvlTree& operator=(const CAvlTree&) = delete;

    /// Stores the pair beside those that have the same key already. \return true when it is stored.
    bool Insert(K key, V value)
    {
        const CCryptoCSLock lock(&section_);
        if (!lock.held())
            return false;
        Path path(root_);
        while (const Node* node = path.node())
            path.descend(key < node->key);
        addLeaf(path, std::move(key), std::move(value));
        return true;
    }

    /// The value of `key`, the topmost in the tree where the key is there several times; null when there is none.
    V* Find(const K& key) { return const_cast<V*>(std::as_const(*this).Find(key)); }
    const V* Find(const K& key) const
    {
        const CCryptoCSLock lock(&section_);
        if (!lock.held())
            return nullptr;
        const Node* node = root_.get();
        while (node != nullptr) {
            const auto order = std::compare_weak_order_fallback(key, node->key);
            if (order == 0)
                return &node->value;
            node = order < 0 ? node->left.get() : node->right.get();
        }
        return nullptr;
    }

    /// The value of `key`, which is stored with a default value when it is missing. Not for a tree that may be destroyed already:
    /// WithValue is.
    V& FindOrInsert(const K& key)
    {
        const CCryptoCSLock lock(&section_);
        return findOrInsert(key);
    }

    /// Calls `use` with the value of `key`, stored with a default value when it is missing, while the lock is held.
    template <typename Use>
    bool WithValue(const K& key, Use&& use)
    {
        const CCryptoCSLock lock(&section_);
        if (!lock.held())
            return false;
        std::forward<Use>(use)(findOrInsert(key));
        return true;
    }

    /// The number of pairs.
    std::uint32_t Count() const
    {
        const CCryptoCSLock lock(&section_);
        return count_;
    }

    /// Calls `visit` with every key and value, a node's left side first, then its right side, then the node. `visit` runs under the
    /// lock and must not insert.
    template <typename Visit>
    bool Traverse(Visit&& visit) const
    {
        const CCryptoCSLock lock(&section_);
        if (!lock.held())
            return false;
        VisitBelow(root_.get(), visit);
        return true;
    }

    /// Copies all keys and all values, each in the order of Traverse, to two arrays. \return false, and both arrays lose their
    /// contents, when there is no memory for them.
    [[nodiscard]] bool CopyTo(CCryptoArray<K>& keys, CCryptoArray<V>& values) const
    {
        const CCryptoCSLock lock(&section_);
        keys.clear();
        values.clear();
        if (!lock.held() || !keys.setSize(count_) || !values.setSize(count_)) {
            keys.clear();
            return false;
        }
        std::uint32_t index = 0;
        return Traverse([&](const K& key, const V& value) {
            keys[index] = key;
            values[index] = value;
            ++index;
        });
    }

    /// The topmost node, for a look at the shape; null when the tree is empty. It is read outside the lock.
    const Node* Root() const { return root_.get(); }

private:
    using Slot = typename Node::Slot;

    /// The way down from the root: the slots of the nodes passed, and the slot reached.
    class Path {
    public:
        explicit Path(Slot& root) : slots_{&root} {}

        Node* node() const { return slots_[depth_]->get(); }
        void descend(bool toLeft)
        {
            Node* const parent = node();
            slots_[++depth_] = toLeft ? &parent->left : &parent->right;
        }

        /// Puts the leaf into the empty slot reached, and balances the nodes above as far up as the growth is felt.
        void attach(Slot leaf)
        {
            *slots_[depth_] = std::move(leaf);
            while (depth_ > 0) {
                Slot& slot = *slots_[--depth_];
                const std::uint32_t height = slot->height;
                Node::Rebalance(slot);
                if (slot->height == height)
                    return;
            }
        }

    private:
        // 2^32 nodes are at most 46 high.
        std::array<Slot*, 48> slots_;
        std::size_t depth_ = 0;
    };

    V& addLeaf(Path& path, K key, V value)
    {
        Slot leaf(new (std::nothrow) Node(std::move(key), std::move(value)));
        if (!leaf)
            ccrypto::EndOutOfMemory();
        V& stored = leaf->value;
        path.attach(std::move(leaf));
        ++count_;
        return stored;
    }

    V& findOrInsert(const K& key)
    {
        Path path(root_);
        while (Node* node = path.node()) {
            const auto order = std::compare_weak_order_fallback(key, node->key);
            if (order == 0)
                return node->value;
            path.descend(order < 0);
        }
        return addLeaf(path, key, V());
    }

    // As deep as the tree is high.
    template <typename Visit>
    static void VisitBelow(const Node* node, Visit& visit)
    {
        if (node == nullptr)
            return;
        VisitBelow(node->left.get(), visit);
        VisitBelow(node->right.get(), visit);
        visit(node->key, node->value);
    }

    mutable CCryptoCS section_;
    Slot root_;
    std::uint32_t count_ = 0;
};
