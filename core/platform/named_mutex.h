#pragma once

#include "core/platform/system_handle.h"

#include <cstdint>
#include <string_view>

namespace ccrypto::platform {

/// A mutex that processes of every user share by its name. One object may be used by several threads at once; the thread that owns
/// the mutex may lock it again and unlocks it as often. On POSIX it is a lock on the file NAME.mutex in /tmp; when that file is
/// removed the next lock makes it again, and a forked child owns none of its parent's mutexes.
class NamedMutex {
public:
    /// Opens the mutex of that name, or creates it, not owned and open to everyone. `name` has 1 to 200 bytes and
    /// holds neither "/" nor "\".
    /// \return false when neither is possible; LastError() says why.
    [[nodiscard]] bool open(const char* name);
    bool isOpen() const { return static_cast<bool>(state_); }
    void close() { state_.reset(); }

    /// Waits at most `milliseconds`. A mutex whose owner has died counts as obtained. \return false on time-out or failure.
    [[nodiscard]] bool lock(std::uint32_t milliseconds);
    /// Does nothing when the calling thread is not the owner.
    void unlock();

private:
    struct Kind {
        using Value = void*;
        static Value none() { return nullptr; }
        static void close(Value value);
    };

    static bool isUsable(std::string_view name)
    {
        return !name.empty() && name.size() <= 200 && name.find_first_of("/\\") == std::string_view::npos;
    }

    ccrypto::SystemHandle<Kind> state_;
};

} // namespace ccrypto::platform
