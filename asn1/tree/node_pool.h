#pragma once

#include "asn1/tree/element_node.h"

#include <cstdint>
#include <new>
#include <utility>

namespace ccrypto {

/// Makes the nodes of a tree in a few large blocks. The nodes outlive the pool: a block goes with the last of its nodes, which any
/// thread may destroy, and a tree may mix nodes of several pools.
class NodePool {
public:
    /// \param expected how many nodes there will be, roughly.
    explicit NodePool(std::size_t expected = 0);
    ~NodePool() { closeBlock(); }
    NodePool(const NodePool&) = delete;
    NodePool& operator=(const NodePool&) = delete;

    /// A node with this token, or with an empty one of this type.
    template <typename Token>
    ElementNodePtr make(Token&& token)
    {
        if (used_ == capacity_)
            openBlock();
        elementNode* const node = new (&nodes_[used_]) elementNode(std::forward<Token>(token));
        node->place_ = ++used_;
        return ElementNodePtr(node);
    }

    /// How many more nodes there will be, roughly: the size of the next block. Without it a pool doubles its blocks.
    void expect(std::size_t more) { expected_ = more; }

    /// How many nodes it made, or has storage for, without those that rewind() gave back.
    std::uint64_t made() const { return made_; }

    /// A point to which the pool can return, as long as the block is the same.
    struct Mark {
        const void* block;
        std::uint32_t used;
    };
    Mark mark() const { return {block_, used_}; }
    /// Uses the storage of all nodes made since the mark again; they have been destroyed.
    void rewind(const Mark& mark);

private:
    friend struct ElementNodeDeleter;

    /// Precedes its nodes. Counts those alive and those not yet made, and the pool.
    struct Block;
    /// Destroys nodes, and updates the count of a block once for a run of its nodes.
    class Returned {
    public:
        Returned() = default;
        ~Returned() { settle(); }
        Returned(const Returned&) = delete;
        Returned& operator=(const Returned&) = delete;
        void add(elementNode& node);

    private:
        void settle();

        Block* block_ = nullptr;
        std::uint32_t count_ = 0;
    };

    static void Settle(Block* block, std::uint32_t count);
    void openBlock();
    void closeBlock();

    Block* block_ = nullptr;
    elementNode* nodes_ = nullptr;
    std::uint32_t used_ = 0;
    std::uint32_t capacity_ = 0;
    std::size_t expected_;
    std::uint64_t made_ = 0;
};

} // namespace ccrypto
