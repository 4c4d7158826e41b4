#pragma once

#include <cstddef>
#include <cstdint>

namespace platform {

/// A recursive lock that knows who owns it. It is plain storage: zero-filled memory may hold one before any constructor has run, so
/// its life is begun by `initialize` and ended by `destroy`, both called by the owner exactly once.
class RecursiveLock {
public:
    void initialize();
    void destroy();

    void enter();
    /// \return false when another thread owns the lock.
    bool tryEnter();
    /// Only the owner may leave.
    void leave();

    /// 0 when nobody owns the lock.
    std::uint32_t ownerThreadId() const;
    /// The system's own count of entries and waiters, -1 when free, as Windows counts it; for diagnostics alone.
    std::int32_t lockCount() const;
    /// How often the owner has entered.
    std::int32_t recursionCount() const;

private:
    alignas(std::max_align_t) unsigned char storage_[96];
};

} // namespace platform
