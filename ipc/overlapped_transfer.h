#pragma once

#include "core/platform/win32/scoped_handle.h"

#include <atomic>
#include <cstdint>

namespace ccrypto {

/// Ends waits from another thread; once raised it stays raised.
class StopSignal {
public:
    StopSignal() : event_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {}

    bool Raise()
    {
        raised_ = true;
        return SetEvent(event_.get()) != FALSE;
    }

    /// Reads memory only, for what does not wait.
    bool isRaised() const { return raised_; }
    /// For a wait.
    HANDLE event() const { return event_.get(); }

private:
    platform::ScopedHandle event_;
    std::atomic<bool> raised_ = false;
};

/// One overlapped operation on a pipe: its OVERLAPPED, and the wait for the first of stop, completion and time-out.
///
/// An operation that is abandoned is cancelled and awaited before the object is destroyed, so the system never writes into an
/// OVERLAPPED or a buffer that is no longer there. Declare it after the buffer it transfers.
class OverlappedTransfer {
public:
    enum class Outcome { done, stopped, timedOut, failed };

    /// \param pipe must stay open as long as the object lives. \param event a manual-reset event that nothing else uses meanwhile.
    OverlappedTransfer(HANDLE pipe, HANDLE event);
    ~OverlappedTransfer();
    OverlappedTransfer(const OverlappedTransfer&) = delete;
    OverlappedTransfer& operator=(const OverlappedTransfer&) = delete;

    /// Each starts the operation; once per object. \return false when it failed at once; error() says why.
    [[nodiscard]] bool Read(void* buffer, std::uint32_t count);
    [[nodiscard]] bool Write(const void* buffer, std::uint32_t count);
    /// A client that connected before the call, even one that left again, counts as connected: what it wrote is still there to
    /// read.
    [[nodiscard]] bool Connect();

    /// \param stop ends the wait; it wins over a completion at the same moment.
    Outcome Wait(const StopSignal& stop, std::uint32_t milliseconds);

    /// Cancels what Wait left pending. \return true when it had completed all the same.
    bool Cancel();

    /// Bytes transferred, once the outcome is `done` or Cancel gave true.
    std::uint32_t transferred() const { return transferred_; }
    /// The system's code for a failed start, or for the outcome `failed`.
    std::uint32_t error() const { return error_; }
    /// True when the wait itself failed, and not the operation.
    bool waitFailed() const { return waitFailed_; }

private:
    bool Started(BOOL completed);
    Outcome Result();

    HANDLE pipe_;
    OVERLAPPED overlapped_ = {};
    DWORD transferred_ = 0;
    DWORD error_ = ERROR_SUCCESS;
    bool pending_ = false;
    bool completed_ = false;
    bool waitFailed_ = false;
};

} // namespace ccrypto
