#include "asn1/tree/node_pool.h"

#include "core/memory/out_of_memory.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>

// A destroyed node's storage stays in its block; the address sanitizer must report any access to it.
#if __has_include(<sanitizer/asan_interface.h>)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) (static_cast<void>(address), static_cast<void>(size))
#define ASAN_UNPOISON_MEMORY_REGION(address, size) (static_cast<void>(address), static_cast<void>(size))
#endif

namespace ccrypto {

namespace {

constexpr std::uint32_t minNodes = 8;
constexpr std::uint32_t maxNodes = 700;

} // namespace

struct NodePool::Block {
    std::atomic<std::uint32_t> count;

    static constexpr std::size_t headSize = 16;
    static_assert(headSize >= sizeof(count) && headSize % alignof(elementNode) == 0);

    elementNode* nodes() { return reinterpret_cast<elementNode*>(reinterpret_cast<unsigned char*>(this) + headSize); }
    static Block* Of(elementNode& node)
    {
        return reinterpret_cast<Block*>(reinterpret_cast<unsigned char*>(&node - (node.place_ - 1)) - headSize);
    }
};

NodePool::NodePool(std::size_t expected) : expected_(expected) {}

void NodePool::openBlock()
{
    closeBlock();
    const auto capacity = static_cast<std::uint32_t>(std::clamp<std::size_t>(expected_, minNodes, maxNodes));
    void* const storage = std::malloc(Block::headSize + capacity * sizeof(elementNode));
    if (storage == nullptr)
        EndOutOfMemory();
    block_ = new (storage) Block{capacity + 1};
    nodes_ = block_->nodes();
    used_ = 0;
    capacity_ = capacity;
    made_ += capacity;
    expected_ = 2 * std::size_t{capacity};
}

void NodePool::closeBlock()
{
    if (block_ != nullptr)
        Settle(std::exchange(block_, nullptr), capacity_ - used_ + 1);
}

void NodePool::Settle(Block* block, std::uint32_t count)
{
    if (block->count.fetch_sub(count, std::memory_order_acq_rel) == count)
        std::free(block);
}

void NodePool::rewind(const Mark& mark)
{
    if (mark.block != block_ || block_ == nullptr)
        return;
    const std::uint32_t again = used_ - mark.used;
    block_->count.fetch_add(again, std::memory_order_relaxed);
    ASAN_UNPOISON_MEMORY_REGION(nodes_ + mark.used, again * sizeof(elementNode));
    used_ = mark.used;
}

void NodePool::Returned::add(elementNode& node)
{
    Block* const block = Block::Of(node);
    if (block != block_) {
        settle();
        block_ = block;
    }
    ++count_;
    node.~elementNode();
    ASAN_POISON_MEMORY_REGION(&node, sizeof node);
}

void NodePool::Returned::settle()
{
    if (count_ != 0)
        Settle(block_, std::exchange(count_, 0));
}

} // namespace ccrypto
