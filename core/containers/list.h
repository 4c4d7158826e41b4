#pragma once

#include "core/memory/out_of_memory.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace ccrypto {

/// Walks the nodes of a list from its head; `Value` is const for a list that may not be changed.
template <typename Node, typename Value>
class ListIterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = std::remove_const_t<Value>;
    using difference_type = std::ptrdiff_t;
    using pointer = Value*;
    using reference = Value&;

    ListIterator() = default;
    explicit ListIterator(Node* node) : node_(node) {}
    /// An iterator converts to the one that leaves the values alone.
    template <typename Mutable>
    requires std::same_as<Value, const Mutable> ListIterator(const ListIterator<Node, Mutable>& other) : node_(other.node()) {}

    Value& operator*() const { return node_->value; }
    Value* operator->() const { return &node_->value; }
    ListIterator& operator++()
    {
        node_ = node_->next.get();
        return *this;
    }
    ListIterator operator++(int)
    {
        const ListIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const ListIterator& other) const = default;

    Node* node() const { return node_; }

private:
    Node* node_ = nullptr;
};

} // namespace ccrypto

/// The plain list: values chained from head to tail, with one link a value. It does not know its length.
///
/// It carries no lock. Values stay where they are until they are removed; a list of any length is copied and destroyed in constant
/// stack. Without memory for a node the process ends.
template <typename T>
class CList {
    struct Node {
        T value;
        std::unique_ptr<Node> next;
    };

public:
    using iterator = ccrypto::ListIterator<Node, T>;
    using const_iterator = ccrypto::ListIterator<Node, const T>;

    CList() = default;
    CList(const CList& other)
    {
        for (const T& value : other)
            append(value);
    }
    CList(CList&& other) noexcept { swap(other); }
    CList& operator=(CList other) noexcept
    {
        swap(other);
        return *this;
    }
    virtual ~CList() { clear(); }

    bool isEmpty() const { return !head_; }

    /// Adds a value at the tail. \return where it lies.
    T& append(T value)
    {
        std::unique_ptr<Node>& slot = last_ != nullptr ? last_->next : head_;
        slot.reset(new (std::nothrow) Node{std::move(value), nullptr});
        if (!slot)
            ccrypto::EndOutOfMemory();
        last_ = slot.get();
        return last_->value;
    }

    /// Removes the value at `position`, counted from 0. \return false when the list is not that long.
    bool removeAt(std::uint32_t position)
    {
        return removeFirst([&position](const T&) { return position-- == 0; });
    }
    /// Removes the first value that equals `value`. \return false when there is none.
    bool remove(const T& value)
    {
        return removeFirst([&value](const T& candidate) { return candidate == value; });
    }

    void clear()
    {
        while (head_)
            head_ = std::move(head_->next);
        last_ = nullptr;
    }

    iterator begin() { return iterator(head_.get()); }
    iterator end() { return iterator(); }
    const_iterator begin() const { return const_iterator(head_.get()); }
    const_iterator end() const { return const_iterator(); }

private:
    template <typename Predicate>
    bool removeFirst(Predicate isWanted)
    {
        Node* previous = nullptr;
        for (std::unique_ptr<Node>* slot = &head_; *slot; slot = &previous->next) {
            if (isWanted((*slot)->value)) {
                if (slot->get() == last_)
                    last_ = previous;
                *slot = std::move((*slot)->next);
                return true;
            }
            previous = slot->get();
        }
        return false;
    }

    void swap(CList& other) noexcept
    {
        std::swap(head_, other.head_);
        std::swap(last_, other.last_);
    }

    std::unique_ptr<Node> head_;
    Node* last_ = nullptr;
};

/// The list the library's collections and queues are made of: counted, and linked both ways, so that it takes values at either end
/// and gives up a value met while walking without looking for it again.
///
/// It carries no lock. Values stay where they are until they are removed; a list of any length is copied and destroyed in constant
/// stack. Without memory for a node the process ends.
template <typename T>
class CCryptoList {
    struct Node {
        T value;
        std::unique_ptr<Node> next;
        Node* previous;
    };

public:
    using iterator = ccrypto::ListIterator<Node, T>;
    using const_iterator = ccrypto::ListIterator<Node, const T>;

    CCryptoList() = default;
    CCryptoList(const CCryptoList& other)
    {
        for (const T& value : other)
            append(value);
    }
    CCryptoList(CCryptoList&& other) noexcept { swap(other); }
    CCryptoList& operator=(CCryptoList other) noexcept
    {
        swap(other);
        return *this;
    }
    virtual ~CCryptoList() { clear(); }

    std::uint32_t count() const { return count_; }
    bool isEmpty() const { return count_ == 0; }

    /// Adds a value at the tail. \return where it lies.
    T& append(T value) { return insert(nullptr, std::move(value)); }
    /// Adds a value at the head.
    T& prepend(T value) { return insert(head_.get(), std::move(value)); }

    /// The value at `position`, counted from 0; null when the list is not that long.
    T* at(std::uint32_t position) { return const_cast<T*>(std::as_const(*this).at(position)); }
    const T* at(std::uint32_t position) const
    {
        const Node* node = nodeAt(position);
        return node != nullptr ? &node->value : nullptr;
    }

    /// Moves the first value to `value` and removes it. \return false, `value` untouched, when the list is empty.
    [[nodiscard]] bool takeFirst(T& value)
    {
        if (isEmpty())
            return false;
        value = std::move(head_->value);
        unlink(head_.get());
        return true;
    }

    /// Removes the value at `position`. \return false when the list is not that long.
    bool removeAt(std::uint32_t position)
    {
        Node* const node = nodeAt(position);
        if (node != nullptr)
            unlink(node);
        return node != nullptr;
    }
    /// Removes the first value that equals `value`. \return false when there is none.
    bool remove(const T& value)
    {
        for (iterator place = begin(); place != end(); ++place) {
            if (*place == value) {
                erase(place);
                return true;
            }
        }
        return false;
    }
    /// Removes the value at `place`, which is not the end. \return the place after it.
    iterator erase(iterator place) { return iterator(unlink(place.node())); }

    void clear()
    {
        while (head_)
            head_ = std::move(head_->next);
        last_ = nullptr;
        count_ = 0;
    }

    iterator begin() { return iterator(head_.get()); }
    iterator end() { return iterator(); }
    const_iterator begin() const { return const_iterator(head_.get()); }
    const_iterator end() const { return const_iterator(); }

private:
    /// The slot that owns the node after `previous`; null stands for the place before the head.
    std::unique_ptr<Node>& slotAfter(Node* previous) { return previous != nullptr ? previous->next : head_; }
    /// The link that leads back from `node`; null stands for the place after the tail.
    Node*& linkBackFrom(Node* node) { return node != nullptr ? node->previous : last_; }

    T& insert(Node* before, T value)
    {
        Node* const previous = linkBackFrom(before);
        std::unique_ptr<Node>& slot = slotAfter(previous);
        std::unique_ptr<Node> node(new (std::nothrow) Node{std::move(value), nullptr, previous});
        if (!node)
            ccrypto::EndOutOfMemory();
        node->next = std::move(slot);
        slot = std::move(node);
        linkBackFrom(before) = slot.get();
        ++count_;
        return slot->value;
    }

    Node* unlink(Node* node)
    {
        Node* const previous = node->previous;
        Node* const next = node->next.get();
        linkBackFrom(next) = previous;
        std::unique_ptr<Node>& slot = slotAfter(previous);
        const std::unique_ptr<Node> removed = std::move(slot);
        slot = std::move(removed->next);
        --count_;
        return next;
    }

    Node* nodeAt(std::uint32_t position) const
    {
        Node* node = position < count_ ? head_.get() : nullptr;
        while (node != nullptr && position-- > 0)
            node = node->next.get();
        return node;
    }

    void swap(CCryptoList& other) noexcept
    {
        std::swap(head_, other.head_);
        std::swap(last_, other.last_);
        std::swap(count_, other.count_);
    }

    std::unique_ptr<Node> head_;
    Node* last_ = nullptr;
    std::uint32_t count_ = 0;
};
