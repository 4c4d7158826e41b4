#include "core/diagnostics/failure.h"

#include "core/base/never_destroyed.h"
#include "core/containers/critical_section.h"
#include "core/memory/out_of_memory.h"
#include "core/platform/process.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <utility>
#include <vector>

using namespace ccrypto;

namespace ccrypto {

namespace {

constexpr std::size_t maxRememberedThreads = 64;
constexpr const char* failureLockName = "failures";

struct FailureOfThread {
    std::uint32_t thread;
    Failure failure;
    std::size_t number; ///< counted from 1 over all threads
};

struct FailureTable {
    CCryptoCS guard{failureLockName};
    /// The thread that failed last comes last.
    std::vector<FailureOfThread> threads;
    /// Not a std::string: clang 14 cannot initialise one of libstdc++ before the program runs.
    std::vector<char> lastErrorText;
};

constinit NeverDestroyed<FailureTable> failures;
/// Read without the guard, so that taking a moment costs no lock.
constinit std::atomic<std::size_t> failureCount = 0;

// The three below need the guard held. A record per thread is kept here rather than in a thread_local object, whose destructor
// would have to run in threads of the host that outlive the library.

std::vector<FailureOfThread>::iterator FindFailure(std::uint32_t thread)
{
    return std::find_if(failures->threads.begin(), failures->threads.end(),
                        [thread](const FailureOfThread& entry) { return entry.thread == thread; });
}

void DropFailure(std::uint32_t thread)
{
    if (const auto found = FindFailure(thread); found != failures->threads.end())
        failures->threads.erase(found);
}

void PutFailure(Failure failure)
{
    const std::uint32_t thread = platform::CurrentThreadId();
    DropFailure(thread);
    if (failures->threads.size() == maxRememberedThreads)
        failures->threads.erase(failures->threads.begin());
    failures->threads.push_back({thread, std::move(failure), ++failureCount});
}

} // namespace

std::optional<Failure> LastFailure()
{
    const CCryptoCSLock lock(&failures->guard, LockMode::quiet);
    const auto found = FindFailure(platform::CurrentThreadId());
    return found != failures->threads.end() ? std::optional(found->failure) : std::nullopt;
}

std::size_t FailureCount()
{
    return failureCount.load(std::memory_order_relaxed);
}

std::optional<Failure> LastFailureSince(std::size_t count)
{
    const CCryptoCSLock lock(&failures->guard, LockMode::quiet);
    const auto found = FindFailure(platform::CurrentThreadId());
    const bool isNew = found != failures->threads.end() && found->number > count && !found->failure.text.empty();
    return isNew ? std::optional(found->failure) : std::nullopt;
}

void ForgetFailure()
{
    const CCryptoCSLock lock(&failures->guard, LockMode::quiet);
    DropFailure(platform::CurrentThreadId());
}

void internal::RecordFailure(std::string_view operation, std::string_view text, std::uint32_t windowsError) noexcept
{
    OrEndOutOfMemory([&] {
        Failure failure{std::string(operation), std::string(text), windowsError};
        const CCryptoCSLock lock(&failures->guard, LockMode::quiet);
        PutFailure(std::move(failure));
    });
}

void internal::AddWindowsError(std::uint32_t code) noexcept
{
    const CCryptoCSLock lock(&failures->guard, LockMode::quiet);
    if (const auto found = FindFailure(platform::CurrentThreadId()); found != failures->threads.end())
        found->failure.windowsError = code;
}

void internal::RecordFailureWithoutReason(std::string_view operation) noexcept
{
    OrEndOutOfMemory([&] {
        const CCryptoCSLock lock(&failures->guard, LockMode::quiet);
        if (FindFailure(platform::CurrentThreadId()) == failures->threads.end())
            PutFailure({std::string(operation), {}, 0});
    });
}

std::string internal::LastErrorText()
{
    const CCryptoCSLock lock(&failures->guard, LockMode::quiet);
    return {failures->lastErrorText.begin(), failures->lastErrorText.end()};
}

void internal::SetLastErrorText(std::string_view text) noexcept
{
    OrEndOutOfMemory([&] {
        const CCryptoCSLock lock(&failures->guard, LockMode::quiet);
        failures->lastErrorText.assign(text.begin(), text.end());
    });
}

void internal::StartLastErrorText(std::string_view text) noexcept
{
    OrEndOutOfMemory([&] {
        const CCryptoCSLock lock(&failures->guard, LockMode::quiet);
        if (failures->lastErrorText.empty())
            failures->lastErrorText.assign(text.begin(), text.end());
    });
}

bool internal::EndByForceOutsideOfFailures(std::uint32_t threadId, const std::function<bool()>& end)
{
    const CCryptoCSLock lock(&failures->guard, LockMode::quiet);
    const bool ended = end();
    if (ended)
        DropFailure(threadId);
    return ended;
}

void internal::ReleaseFailureLock()
{
    std::destroy_at(&failures->guard);
    std::construct_at(&failures->guard, failureLockName);
}

void internal::ForgetFailures()
{
    const CCryptoCSLock lock(&failures->guard, LockMode::quiet);
    failures->threads = {};
    failures->lastErrorText = {};
}

} // namespace ccrypto
