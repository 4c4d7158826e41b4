#pragma once

#include <cstdint>

namespace platform {

/// A mutex that processes of every user share by its name. One object may be used by several threads at once.
class NamedMutex {
public:
    NamedMutex() = default;
    ~NamedMutex();
    NamedMutex(const NamedMutex&) = delete;
    NamedMutex& operator=(const NamedMutex&) = delete;

    /// Opens the mutex of that name, or creates it, not owned and open to everyone. `name` holds no path separator.
    /// \return false when neither is possible; LastError() tells why.
    bool open(const char* name);
    bool isOpen() const { return state_ != nullptr; }
    void close();

    /// Waits at most `milliseconds`. A mutex left behind by a dead owner counts as obtained. \return false on time-out or failure.
    bool lock(std::uint32_t milliseconds);
    void unlock();

private:
    void* state_ = nullptr;
};

} // namespace platform
