#include "core/platform/thread.h"

#include "core/platform/clock.h"
#include "core/platform/process.h"

#include <errno.h>
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <memory>

namespace ccrypto::platform {

namespace {

/// What owner and thread share.
struct ThreadState {
    pthread_t handle{};
    bool isSignalled = false;
    std::atomic<bool (*)()> mayEndNow = nullptr;
    /// Set by the thread when it leaves by force.
    std::atomic<bool> leaves = false;
    /// Joined, or ended by force: the handle is no longer valid.
    bool gone = false;
};

/// Of a thread that was started here, for the handler of the signal.
thread_local ThreadState* stateOfThisThread = nullptr;

/// Lives on the starter's stack until the new thread has taken what it needs.
struct Start {
    Thread::Entry entry = nullptr;
    void* argument = nullptr;
    ThreadState* state = nullptr;
    std::uint32_t id = 0;
    sem_t taken;
};

// Cancellation would unwind the stack from wherever the thread is, and end the process in any noexcept function on the way.
// Leaving by the system call stops the thread where it is, as TerminateThread does.
void LeaveAtOnce(int)
{
    if (stateOfThisThread == nullptr)
        return;
    if (bool (*const mayEndNow)() = stateOfThisThread->mayEndNow; mayEndNow != nullptr && !mayEndNow())
        return;
    stateOfThisThread->leaves = true;
    syscall(SYS_exit, 0);
}

int TerminationSignal()
{
    static const int number = [] {
        const int chosen = SIGRTMAX - 3;
        struct sigaction action = {};
        action.sa_handler = LeaveAtOnce;
        sigaction(chosen, &action, nullptr);
        return chosen;
    }();
    return number;
}

/// A thread inherits what its starter holds off.
void AdmitTerminationSignal()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, TerminationSignal());
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

void* Run(void* pointer)
{
    Start& start = *static_cast<Start*>(pointer);
    const Thread::Entry entry = start.entry;
    void* const argument = start.argument;
    stateOfThisThread = start.state;
    AdmitTerminationSignal();
    start.id = CurrentThreadId();
    sem_post(&start.taken);
    entry(argument);
    return nullptr;
}

timespec Deadline(std::uint32_t milliseconds)
{
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    time.tv_sec += milliseconds / 1000;
    time.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000;
    if (time.tv_nsec >= 1000000000) {
        time.tv_nsec -= 1000000000;
        ++time.tv_sec;
    }
    return time;
}

/// Whether the thread has ended, found out without joining it.
bool HasLeftTheSystem(std::uint32_t id)
{
    return syscall(SYS_tgkill, getpid(), static_cast<pid_t>(id), 0) != 0 && errno == ESRCH;
}

/// Signals a thread to leave, again and again until it does.
bool AwaitLeaving(ThreadState& state, std::uint32_t id, std::uint32_t milliseconds)
{
    for (std::uint32_t waited = 0; !HasLeftTheSystem(id); ++waited) {
        if (waited == milliseconds && milliseconds != waitForever) {
            errno = ETIMEDOUT;
            return false;
        }
        if (!state.leaves)
            pthread_kill(state.handle, TerminationSignal());
        SleepMilliseconds(1);
    }
    // One that left by force is not joined: that would hand its stack, with the thread-specific values no one has cleared, to the
    // next thread.
    if (!state.leaves)
        pthread_join(state.handle, nullptr);
    state.gone = true;
    return true;
}

} // namespace

void Thread::Kind::close(Value value)
{
    std::unique_ptr<ThreadState> state(static_cast<ThreadState*>(value));
    if (state->gone)
        return;
    pthread_detach(state->handle);
    // A thread that was signalled to leave may still write to its state.
    if (state->isSignalled)
        static_cast<void>(state.release());
}

bool Thread::start(Entry entry, void* argument)
{
    close();
    auto state = std::make_unique<ThreadState>();
    Start start;
    start.entry = entry;
    start.argument = argument;
    start.state = state.get();
    sem_init(&start.taken, 0, 0);
    const int error = pthread_create(&state->handle, nullptr, Run, &start);
    if (error == 0) {
        while (sem_wait(&start.taken) != 0) {}
        id_ = start.id;
        state_.reset(state.release());
    }
    sem_destroy(&start.taken);
    errno = error;
    return error == 0;
}

bool Thread::wait(std::uint32_t milliseconds)
{
    auto* const state = static_cast<ThreadState*>(state_.get());
    if (state == nullptr || state->gone)
        return true;
    if (state->isSignalled)
        return AwaitLeaving(*state, id_, milliseconds);
    int error = 0;
    if (milliseconds == waitForever) {
        error = pthread_join(state->handle, nullptr);
    } else {
        const timespec deadline = Deadline(milliseconds);
        error = pthread_clockjoin_np(state->handle, nullptr, CLOCK_MONOTONIC, &deadline);
    }
    state->gone = error == 0;
    errno = error;
    return state->gone;
}

bool Thread::terminate(bool (*mayEndNow)())
{
    auto* const state = static_cast<ThreadState*>(state_.get());
    if (wait(0))
        return true;
    // A thread that is stuck in the kernel must not hold up the caller.
    constexpr std::uint32_t deliveryTime = 1000;
    state->mayEndNow = mayEndNow;
    state->isSignalled = true;
    return AwaitLeaving(*state, id_, deliveryTime);
}

} // namespace ccrypto::platform
