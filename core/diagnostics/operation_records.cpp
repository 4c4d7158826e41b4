#include "core/diagnostics/operation_records.h"

#include "core/base/never_destroyed.h"
#include "core/containers/avl_tree.h"
#include "core/containers/critical_section.h"
#include "core/diagnostics/failure.h"
#include "core/platform/process.h"

#include <algorithm>
#include <memory>

namespace ccrypto::logging {

namespace {

constexpr std::uint32_t maxDepth = 255;
constexpr std::uint32_t minThreads = 64;

constexpr char lockName[] = "logNesting";

using DepthTree = CAvlTree<std::uint32_t, std::uint32_t>;

struct NestingTable {
    CCryptoCS guard{lockName};
    std::unique_ptr<DepthTree> depths;
    /// When there are as many counters, the idle ones are dropped.
    std::uint32_t capacity = minThreads;
};

constinit NeverDestroyed<NestingTable> nesting;

// The three below need the guard held.

void DropIdleThreads(NestingTable& table)
{
    auto busy = std::make_unique<DepthTree>();
    table.depths->Traverse([&](std::uint32_t thread, std::uint32_t depth) {
        if (depth != 0)
            busy->Insert(thread, depth);
    });
    table.depths = std::move(busy);
    table.capacity = std::max(minThreads, 2 * table.depths->Count());
}

std::uint32_t& DepthOfThisThread(NestingTable& table)
{
    const std::uint32_t thread = platform::CurrentThreadId();
    if (table.depths == nullptr)
        table.depths = std::make_unique<DepthTree>();
    if (std::uint32_t* const known = table.depths->Find(thread))
        return *known;
    if (table.depths->Count() >= table.capacity)
        DropIdleThreads(table);
    return table.depths->FindOrInsert(thread);
}

/// Null for a thread without a counter, such as one whose operation outlives the log.
std::uint32_t* KnownDepth(NestingTable& table, std::uint32_t thread)
{
    return table.depths != nullptr ? table.depths->Find(thread) : nullptr;
}

} // namespace

std::uint32_t EnterOperation()
{
    const CCryptoCSLock lock(&nesting->guard, LockMode::quiet);
    return std::min(DepthOfThisThread(*nesting)++, maxDepth);
}

void LeaveOperation()
{
    const CCryptoCSLock lock(&nesting->guard, LockMode::quiet);
    std::uint32_t* const depth = KnownDepth(*nesting, platform::CurrentThreadId());
    if (depth != nullptr && *depth > 0)
        --*depth;
}

bool EndByForce(std::uint32_t threadId, const std::function<bool()>& end)
{
    const CCryptoCSLock lock(&nesting->guard, LockMode::quiet);
    const bool ended = ccrypto::internal::EndByForceOutsideOfFailures(threadId, end);
    if (std::uint32_t* const depth = KnownDepth(*nesting, threadId); ended && depth != nullptr)
        *depth = 0;
    return ended;
}

void ForgetNesting()
{
    const CCryptoCSLock lock(&nesting->guard, LockMode::quiet);
    nesting->depths.reset();
    nesting->capacity = minThreads;
}

void ReleaseNestingLock()
{
    std::destroy_at(&nesting->guard);
    std::construct_at(&nesting->guard, lockName);
    internal::ReleaseFailureLock();
}

std::uint32_t CountedThreads()
{
    const CCryptoCSLock lock(&nesting->guard, LockMode::quiet);
    return nesting->depths != nullptr ? nesting->depths->Count() : 0;
}

} // namespace ccrypto::logging
