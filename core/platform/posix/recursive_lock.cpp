#include "core/platform/recursive_lock.h"

#include "core/platform/process.h"

#include <pthread.h>

#include <atomic>
#include <new>

namespace ccrypto::platform {

namespace {

/// The counts are atomic because diagnostics of other threads read them while the owner changes them.
struct Lock {
    pthread_mutex_t mutex;
    std::atomic<std::uint32_t> owner{0};
    std::atomic<std::int32_t> lockCount{-1};
    std::atomic<std::int32_t> recursionCount{0};

    void entered()
    {
        owner.store(CurrentThreadId(), std::memory_order_relaxed);
        recursionCount.fetch_add(1, std::memory_order_relaxed);
    }
};

Lock& LockIn(unsigned char* storage)
{
    return *std::launder(reinterpret_cast<Lock*>(storage));
}

const Lock& LockIn(const unsigned char* storage)
{
    return *std::launder(reinterpret_cast<const Lock*>(storage));
}

} // namespace

void RecursiveLock::initialize()
{
    static_assert(sizeof(Lock) <= sizeof(storage_));
    Lock* lock = new (storage_) Lock;
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&lock->mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

void RecursiveLock::destroy()
{
    pthread_mutex_destroy(&LockIn(storage_).mutex);
    LockIn(storage_).~Lock();
}

void RecursiveLock::enter()
{
    Lock& lock = LockIn(storage_);
    lock.lockCount.fetch_add(1, std::memory_order_relaxed);
    pthread_mutex_lock(&lock.mutex);
    lock.entered();
}

bool RecursiveLock::tryEnter()
{
    Lock& lock = LockIn(storage_);
    if (pthread_mutex_trylock(&lock.mutex) != 0)
        return false;
    lock.lockCount.fetch_add(1, std::memory_order_relaxed);
    lock.entered();
    return true;
}

void RecursiveLock::leave()
{
    Lock& lock = LockIn(storage_);
    if (lock.recursionCount.fetch_sub(1, std::memory_order_relaxed) == 1)
        lock.owner.store(0, std::memory_order_relaxed);
    lock.lockCount.fetch_sub(1, std::memory_order_relaxed);
    pthread_mutex_unlock(&lock.mutex);
}

std::uint32_t RecursiveLock::ownerThreadId() const
{
    return LockIn(storage_).owner.load(std::memory_order_relaxed);
}

std::int32_t RecursiveLock::lockCount() const
{
    return LockIn(storage_).lockCount.load(std::memory_order_relaxed);
}

std::int32_t RecursiveLock::recursionCount() const
{
    return LockIn(storage_).recursionCount.load(std::memory_order_relaxed);
}

} // namespace ccrypto::platform
