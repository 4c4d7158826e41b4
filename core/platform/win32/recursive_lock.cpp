#include "core/platform/recursive_lock.h"

#include <windows.h>

#include <new>

namespace ccrypto::platform {

namespace {

CRITICAL_SECTION* SectionIn(unsigned char* storage)
{
    return std::launder(reinterpret_cast<CRITICAL_SECTION*>(storage));
}

/// Volatile, since other threads change the counts while diagnostics read them.
const volatile CRITICAL_SECTION* SectionIn(const unsigned char* storage)
{
    return std::launder(reinterpret_cast<const CRITICAL_SECTION*>(storage));
}

} // namespace

void RecursiveLock::initialize()
{
    static_assert(sizeof(CRITICAL_SECTION) <= sizeof(storage_));
    InitializeCriticalSection(new (storage_) CRITICAL_SECTION);
}

void RecursiveLock::destroy()
{
    DeleteCriticalSection(SectionIn(storage_));
}

void RecursiveLock::enter()
{
    EnterCriticalSection(SectionIn(storage_));
}

bool RecursiveLock::tryEnter()
{
    return TryEnterCriticalSection(SectionIn(storage_)) != FALSE;
}

void RecursiveLock::leave()
{
    LeaveCriticalSection(SectionIn(storage_));
}

std::uint32_t RecursiveLock::ownerThreadId() const
{
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(SectionIn(storage_)->OwningThread));
}

std::int32_t RecursiveLock::lockCount() const
{
    return SectionIn(storage_)->LockCount;
}

std::int32_t RecursiveLock::recursionCount() const
{
    return SectionIn(storage_)->RecursionCount;
}

} // namespace ccrypto::platform
