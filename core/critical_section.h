#pragma once

#include "core/platform/recursive_lock.h"

#include <atomic>
#include <cstdint>

/// The library's lock: recursive, named for diagnostics. A zero-filled one, whose constructor has not yet run, is initialised by
/// the first lock, so that locks taken during static initialisation work.
class CCryptoCS {
public:
    /// `name` is not copied.
    explicit CCryptoCS(const char* name);
    ~CCryptoCS();
    CCryptoCS(const CCryptoCS&) = delete;
    CCryptoCS& operator=(const CCryptoCS&) = delete;

    const char* name() const { return name_ != nullptr ? name_ : ""; }

private:
    friend class CCryptoCSLock;

    bool enter(bool blocking);
    void leave();

    std::atomic<std::uint32_t> state_;
    const char* name_;
    platform::RecursiveLock section_;
    std::atomic<bool> entered_;
};

enum class LockMode { blocking, trying };

/// Holds a CCryptoCS for its scope, when it could be had.
class CCryptoCSLock {
public:
    /// \param section may be null; the lock is then not held.
    explicit CCryptoCSLock(CCryptoCS* section, LockMode mode = LockMode::blocking);
    ~CCryptoCSLock();
    CCryptoCSLock(const CCryptoCSLock&) = delete;
    CCryptoCSLock& operator=(const CCryptoCSLock&) = delete;

    bool held() const { return section_ != nullptr; }

private:
    CCryptoCS* section_;
};
