// What keeps the C++ runtime from leaving anything in a host that loads and unloads the library all day, as Explorer does.

#include "core/diagnostics/operation_records.h"
#include "core/platform/process.h"

#include <windows.h>

#include <cxxabi.h>

#include <atomic>
#include <cstdint>

using namespace ccrypto;

namespace __gnu_cxx {

/// Frees the memory that the runtime keeps for exceptions thrown without memory. Declared in no header.
void __freeres();

} // namespace __gnu_cxx

namespace {

/// The static object that is built first, so that its destructor runs after all others.
class LastDestroyed {
public:
    constexpr LastDestroyed() = default;
    ~LastDestroyed()
    {
        // The memory of a process that ends is nobody's concern, and a thread that was ended may hold its locks.
        if (platform::ProcessIsEnding())
            return;
        logging::ReleaseNestingLock();
        __gnu_cxx::__freeres();
    }
    LastDestroyed(const LastDestroyed&) = delete;
    LastDestroyed& operator=(const LastDestroyed&) = delete;
};

[[gnu::init_priority(101)]] LastDestroyed lastDestroyed;

// How the compiler's code makes sure that a function's static object is built once (Itanium C++ ABI, 3.3.3), in place of the
// runtime's own answer. That one draws in the runtime's thread library, which takes a thread-local slot of the process and a record
// for each thread, and gives neither back when the library is unloaded; a process has a thousand slots. Without the runtime's
// answer nothing of it is used until an exception is thrown.

constinit SRWLOCK lock = SRWLOCK_INIT;
constinit CONDITION_VARIABLE ended = CONDITION_VARIABLE_INIT;

/// The guard's first byte, which the compiler's code reads by itself: not 0 once the object is built.
std::atomic_ref<std::uint8_t> IsBuilt(abi::__guard* guard)
{
    return std::atomic_ref<std::uint8_t>(*reinterpret_cast<std::uint8_t*>(guard));
}

/// Whether a thread is building the object; under the lock.
std::uint8_t& IsBeingBuilt(abi::__guard* guard)
{
    return reinterpret_cast<std::uint8_t*>(guard)[1];
}

void End(abi::__guard* guard, bool built)
{
    AcquireSRWLockExclusive(&lock);
    IsBeingBuilt(guard) = 0;
    IsBuilt(guard).store(built, std::memory_order_release);
    ReleaseSRWLockExclusive(&lock);
    WakeAllConditionVariable(&ended);
}

} // namespace

/// \return 1 when the caller is to build the object and then call one of the other two; 0 when it is built.
extern "C" int abi::__cxa_guard_acquire(abi::__guard* guard)
{
    if (IsBuilt(guard).load(std::memory_order_acquire) != 0)
        return 0;
    AcquireSRWLockExclusive(&lock);
    while (IsBeingBuilt(guard) != 0)
        SleepConditionVariableSRW(&ended, &lock, INFINITE, 0);
    const bool build = IsBuilt(guard).load(std::memory_order_relaxed) == 0;
    IsBeingBuilt(guard) = build;
    ReleaseSRWLockExclusive(&lock);
    return build;
}

extern "C" void abi::__cxa_guard_release(abi::__guard* guard) noexcept
{
    End(guard, true);
}

/// The construction ended with an exception; the next thread tries again.
extern "C" void abi::__cxa_guard_abort(abi::__guard* guard) noexcept
{
    End(guard, false);
}
