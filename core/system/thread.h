#pragma once

#include "core/platform/thread.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <utility>

/// A thread that runs a function, or what a derived class puts in its place. It can be started again once it has ended.
///
/// `start` and `wait` are called by one thread, the owner; the thread itself must neither wait for its end nor destroy its object,
/// which is reported, without waiting. The destructor waits without limit for a thread that still runs. A derived class therefore
/// ends its thread in its own destructor, before the members that `run` uses are gone. It cannot be moved, since its thread works
/// on it.
///
/// An exception that leaves `run` ends the thread and is logged, except that a failed allocation ends the process as everywhere
/// else.
class CCryptoThread {
public:
    static constexpr std::uint32_t waitForever = ccrypto::platform::waitForever;

    CCryptoThread() = default;
    explicit CCryptoThread(std::function<void()> body) : body_(std::move(body)) {}
    virtual ~CCryptoThread();
    CCryptoThread(const CCryptoThread&) = delete;
    CCryptoThread& operator=(const CCryptoThread&) = delete;

    /// \return false, logged, when the thread runs already or the system refuses.
    [[nodiscard]] bool start();

    /// Waits for the end of the thread, which should have been asked to end: first `responseTime` milliseconds, unless that is 0,
    /// then what remains of `totalTimeout`, which may be `waitForever`. A thread that still runs is then ended by force, but
    /// not while a line of the log is being written: it gets a second to leave such a place. Elsewhere it ends
    /// wherever it stands: what it owned is lost and locks that it held stay locked, the runtime's heap among them. So force is a
    /// last resort, and a process that used it should end soon.
    ///
    /// A thread whose `run` has returned gets at least a second for the destructors of its thread_local objects.
    /// \return true when the thread ended by itself or was not running. After false isRunning() is true of a thread that force
    /// could not end either; `wait` may be called again for it.
    bool wait(std::uint32_t totalTimeout, std::uint32_t responseTime);

    /// Until `run` has returned or the thread was found to have ended otherwise. Any thread may ask.
    bool isRunning() const { return running_; }

    /// The number of the thread as the log shows it; 0 before the first start. Any thread may ask.
    std::uint32_t id() const { return id_; }

protected:
    /// The work of the thread: the function given at construction.
    virtual void run();

private:
    static void Enter(void* argument);
    void runToItsEnd();
    bool isThisThread() const;
    bool awaitEnd(std::uint32_t milliseconds);

    ccrypto::platform::Thread thread_;
    std::atomic<bool> running_ = false;
    std::atomic<std::uint32_t> id_ = 0;
    std::function<void()> body_;
};
