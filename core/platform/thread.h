#pragma once

#include "core/platform/system_handle.h"

#include <cstdint>

namespace ccrypto::platform {

constexpr std::uint32_t waitForever = 0xFFFFFFFF;

/// An operating-system thread. Owned by one thread at a time; it is not joined by the destructor, which only gives the handle back.
class Thread {
public:
    using Entry = void (*)(void* argument);

    /// Starts `entry(argument)`; a thread held so far is closed first. \return false when the system refuses; LastError() says
    /// why.
    [[nodiscard]] bool start(Entry entry, void* argument);

    /// \return true when the thread has ended within `milliseconds` (`waitForever` waits without limit), or none was started.
    /// Otherwise LastError() says why: the system's code for a time-out, as a rule.
    [[nodiscard]] bool wait(std::uint32_t milliseconds);

    /// Ends the thread by force; what it owned is lost. On POSIX the real-time signal SIGRTMAX - 3 is used for it, and the thread's
    /// stack is lost, too.
    /// \param mayEndNow asked while the thread is suspended, and again each millisecond while it answers false: whether the thread
    /// holds nothing that others need. It must not lock or allocate. Null for always.
    /// \return whether the thread has ended; false, after a second, of one that is stuck in the system, holds off the signal, or
    /// may not end: it may still end later.
    [[nodiscard]] bool terminate(bool (*mayEndNow)() = nullptr);

    /// Gives the handle back; a thread that still runs goes on by itself.
    void close() { state_.reset(); }

    bool isOpen() const { return static_cast<bool>(state_); }

    /// The number that CurrentThreadId() gives inside the thread; 0 before the start.
    std::uint32_t id() const { return id_; }

private:
    struct Kind {
        using Value = void*;
        static Value none() { return nullptr; }
        static void close(Value value);
    };

    ccrypto::SystemHandle<Kind> state_;
    std::uint32_t id_ = 0;
};

} // namespace ccrypto::platform
