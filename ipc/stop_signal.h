#pragma once

#include "core/platform/win32/scoped_handle.h"

#include <atomic>

/// Ends waits from another thread, for good: once raised it stays so.
class StopSignal {
public:
    StopSignal() : event_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {}

    bool Raise()
    {
        raised_ = true;
        return SetEvent(event_.get()) != FALSE;
    }

    /// Asks no more than memory, for what needs no wait.
    bool isRaised() const { return raised_; }
    /// For a wait.
    HANDLE event() const { return event_.get(); }

private:
    platform::ScopedHandle event_;
    std::atomic<bool> raised_ = false;
};
