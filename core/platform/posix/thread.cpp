#include "core/platform/thread.h"

#include "core/platform/process.h"

#include <errno.h>
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <memory>
#include <mutex>

namespace platform {

namespace {

struct State {
    pthread_t handle{};
    /// Joined, or ended by force; there is no handle any more.
    bool gone = false;
};

/// Lives on the starter's stack until the new thread has taken what it needs.
struct Start {
    Thread::Entry entry = nullptr;
    void* argument = nullptr;
    std::uint32_t id = 0;
    sem_t taken;
};

void* Run(void* pointer)
{
    Start& start = *static_cast<Start*>(pointer);
    const Thread::Entry entry = start.entry;
    void* const argument = start.argument;
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

/// One forced end at a time: the handler of the signal has no other way to know whom to answer.
std::mutex terminating;
sem_t leaving;

// Cancellation would unwind the stack from wherever the thread stands, and end the process in any noexcept function on the way.
// Leaving by the system call stops the thread where it is, as TerminateThread does.
void LeaveAtOnce(int)
{
    sem_post(&leaving);
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

} // namespace

Thread::~Thread()
{
    close();
}

bool Thread::start(Entry entry, void* argument)
{
    close();
    auto state = std::make_unique<State>();
    Start start;
    start.entry = entry;
    start.argument = argument;
    sem_init(&start.taken, 0, 0);
    const int error = pthread_create(&state->handle, nullptr, Run, &start);
    if (error == 0) {
        while (sem_wait(&start.taken) != 0) {}
        id_ = start.id;
        state_ = state.release();
    }
    sem_destroy(&start.taken);
    errno = error;
    return error == 0;
}

bool Thread::wait(std::uint32_t milliseconds)
{
    auto* const state = static_cast<State*>(state_);
    if (state == nullptr || state->gone)
        return true;
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

void Thread::terminate()
{
    auto* const state = static_cast<State*>(state_);
    if (state == nullptr || state->gone)
        return;
    const std::lock_guard lock(terminating);
    sem_init(&leaving, 0, 0);
    pthread_kill(state->handle, TerminationSignal());
    // A thread that is stuck in the kernel must not hold up the caller.
    constexpr std::uint32_t deliveryTime = 1000;
    const timespec deadline = Deadline(deliveryTime);
    while (sem_clockwait(&leaving, CLOCK_MONOTONIC, &deadline) != 0 && errno == EINTR) {}
    // It is not joined: that would hand its stack, with the thread-specific values no one has cleared, to the next thread.
    state->gone = true;
}

void Thread::close()
{
    const std::unique_ptr<State> state(static_cast<State*>(state_));
    state_ = nullptr;
    if (state != nullptr && !state->gone)
        pthread_detach(state->handle);
}

} // namespace platform
