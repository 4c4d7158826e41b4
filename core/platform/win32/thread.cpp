#include "core/platform/thread.h"

#include <windows.h>

#include <errno.h>
#include <malloc.h>
#include <process.h>

#include <memory>

namespace ccrypto::platform {

namespace {

struct Start {
    Thread::Entry entry;
    void* argument;
};

unsigned __stdcall Run(void* pointer)
{
    const std::unique_ptr<Start> owned(static_cast<Start*>(pointer));
    const Start start = *owned;
    start.entry(start.argument);
    return 0;
}

/// Keeps other threads out of the runtime's heap, whose lock must not stay with a thread that is ended.
class HeapHeld {
public:
    HeapHeld() { HeapLock(heap_); }
    ~HeapHeld() { HeapUnlock(heap_); }
    HeapHeld(const HeapHeld&) = delete;
    HeapHeld& operator=(const HeapHeld&) = delete;

private:
    const HANDLE heap_ = reinterpret_cast<HANDLE>(_get_heap_handle()); // the runtime returns the handle as a number
};

/// Suspends the thread, again and again, until it is where it may end, and ends it.
bool EndWhereItMay(HANDLE thread, bool (*mayEndNow)())
{
    // Counted by the clock: a wait of a millisecond takes a tick of the system, up to 16.
    constexpr ULONGLONG patience = 1000;
    for (const ULONGLONG start = GetTickCount64(); GetTickCount64() - start < patience;) {
        {
            const HeapHeld heap;
            if (SuspendThread(thread) == static_cast<DWORD>(-1))
                return false;
            // Asking for the context waits until the thread is suspended.
            CONTEXT context{};
            context.ContextFlags = CONTEXT_CONTROL;
            GetThreadContext(thread, &context);
            if (mayEndNow == nullptr || mayEndNow())
                return TerminateThread(thread, 0) != FALSE;
            ResumeThread(thread);
        }
        if (WaitForSingleObject(thread, 1) == WAIT_OBJECT_0)
            return true;
    }
    return false;
}

} // namespace

void Thread::Kind::close(Value value)
{
    CloseHandle(value);
}

bool Thread::start(Entry entry, void* argument)
{
    close();
    auto start = std::make_unique<Start>(Start{entry, argument});
    unsigned id = 0;
    const std::uintptr_t handle = _beginthreadex(nullptr, 0, Run, start.get(), 0, &id);
    if (handle == 0) {
        // The runtime keeps the reason to itself.
        SetLastError(errno == EAGAIN ? ERROR_MAX_THRDS_REACHED : ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }
    static_cast<void>(start.release());
    state_.reset(reinterpret_cast<void*>(handle)); // the runtime returns the handle as a number
    id_ = id;
    return true;
}

bool Thread::wait(std::uint32_t milliseconds)
{
    if (!isOpen())
        return true;
    const DWORD result = WaitForSingleObject(state_.get(), milliseconds);
    if (result == WAIT_TIMEOUT)
        SetLastError(WAIT_TIMEOUT);
    return result == WAIT_OBJECT_0;
}

bool Thread::terminate(bool (*mayEndNow)())
{
    // The call only begins the end.
    constexpr std::uint32_t endingTime = 1000;
    return !isOpen() || (EndWhereItMay(state_.get(), mayEndNow) && wait(endingTime)) || wait(0);
}

} // namespace ccrypto::platform
