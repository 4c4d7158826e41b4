#pragma once

#include <windows.h>

#include <utility>

namespace platform {

/// Owns one kernel handle. The two ways Windows says "none", null and INVALID_HANDLE_VALUE, are both empty here.
class ScopedHandle {
public:
    ScopedHandle() = default;
    explicit ScopedHandle(HANDLE handle) : handle_(handle) {}
    ScopedHandle(ScopedHandle&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
    ScopedHandle& operator=(ScopedHandle&& other) noexcept
    {
        if (this != &other)
            reset(std::exchange(other.handle_, INVALID_HANDLE_VALUE));
        return *this;
    }
    ~ScopedHandle() { reset(); }

    HANDLE get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }

    void reset(HANDLE handle = INVALID_HANDLE_VALUE)
    {
        if (*this)
            CloseHandle(handle_);
        handle_ = handle;
    }

private:
    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

} // namespace platform
