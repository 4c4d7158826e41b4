#pragma once

#include <cstddef>
#include <cstdint>

namespace ccrypto::platform {

/// A recursive lock that knows who owns it. It is plain storage: zero-filled memory may hold one before any constructor has run, so
/// its life is begun by `initialize` and ended by `destroy`, both called by the owner exactly once.
class RecursiveLock {
public:
    void initialize();
    /// Nobody may own the lock or wait for it.
    void destroy();

    void enter();
    /// \return false when another thread owns the lock.
    bool tryEnter();
    /// Only the owner may leave.
    void leave();

    /// 0 when nobody owns the lock.
    std::uint32_t ownerThreadId() const;
    /// -1 when free; else what the system counts, for diagnostics alone: on POSIX entries and waiters less one, on Windows the
    /// section's own field, which holds bits rather than a number in current versions.
    std::int32_t lockCount() const;
    /// How often the owner has entered.
    std::int32_t recursionCount() const;

private:
    alignas(std::max_align_t) unsigned char storage_[96];
};

} // namespace ccrypto::platform
