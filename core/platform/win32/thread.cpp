#include "core/platform/thread.h"

#include <windows.h>

#include <errno.h>
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

bool Thread::terminate()
{
    // The call only begins the end.
    constexpr std::uint32_t endingTime = 1000;
    return !isOpen() || (TerminateThread(state_.get(), 0) != FALSE && wait(endingTime)) || wait(0);
}

} // namespace ccrypto::platform
