#include "core/log_nesting.h"

#include "core/avl_tree.h"
#include "core/critical_section.h"
#include "core/never_destroyed.h"
#include "core/platform/process.h"

#include <algorithm>
#include <optional>

namespace logging {

namespace {

constexpr std::uint32_t deepest = 255;

struct NestingTable {
    CCryptoCS guard{"logNesting"};
    std::optional<CAvlTree<std::uint32_t, std::uint32_t>> depths;
};

NestingTable& Table()
{
    static NeverDestroyed<NestingTable> table;
    return *table;
}

/// Call with the guard held.
std::uint32_t& DepthOfThisThread(NestingTable& table)
{
    if (!table.depths)
        table.depths.emplace();
    return table.depths->FindOrInsert(platform::CurrentThreadId());
}

} // namespace

std::uint32_t EnterOperation()
{
    NestingTable& table = Table();
    const CCryptoCSLock lock(&table.guard, LockMode::quiet);
    return std::min(DepthOfThisThread(table)++, deepest);
}

void LeaveOperation()
{
    NestingTable& table = Table();
    const CCryptoCSLock lock(&table.guard, LockMode::quiet);
    // An operation that outlives the log finds its counter forgotten.
    if (!table.depths)
        return;
    if (std::uint32_t& depth = DepthOfThisThread(table); depth > 0)
        --depth;
}

void ForgetNesting()
{
    NestingTable& table = Table();
    const CCryptoCSLock lock(&table.guard, LockMode::quiet);
    table.depths.reset();
}

} // namespace logging
