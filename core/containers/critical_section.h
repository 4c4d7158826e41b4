#pragma once

#include "core/platform/recursive_lock.h"

#include <atomic>
#include <cstdint>

namespace ccrypto {

enum class LockMode {
    blocking, ///< waits for the owner, after a line in the log
    quiet,    ///< waits without logging: for the sections that the log itself needs
    trying,   ///< fails, after a line in the log, when another thread owns the section
};

} // namespace ccrypto

/// The library's lock: recursive, named for diagnostics, which go through WriteLog_G and WriteErrorEx_G.
///
/// The first lock makes the system's section ready, whoever comes first; its state is 0 until then, 0x12345678 while alive and
/// 0x87654321 after destruction. So a section in static memory needs no constructor to run, and may be locked during static
/// initialisation while its bytes are constant or still zero. A constructor that runs later makes a new, free section of it,
/// whoever holds the old one: declare sections in static memory `constinit`, with a literal name.
class CCryptoCS {
public:
    /// `name` is not copied.
    explicit constexpr CCryptoCS(const char* name) : name_(name) {}
    /// A section that is still owned is reported, and its owner may still leave it as long as its memory is there. A lock on a
    /// destroyed section fails.
    ~CCryptoCS();
    CCryptoCS(const CCryptoCS&) = delete;
    CCryptoCS& operator=(const CCryptoCS&) = delete;

    const char* name() const { return name_ != nullptr ? name_ : ""; }

private:
    friend class CCryptoCSLock;

    [[nodiscard]] bool enter(ccrypto::LockMode mode);
    void leave();
    bool makeReady();
    void reportOwner(const char* action) const;

    std::atomic<std::uint32_t> state_{0};
    const char* name_;
    ccrypto::platform::RecursiveLock section_{};
    std::atomic<bool> entered_{false};
};

/// Holds a CCryptoCS for its scope, when it could be had.
class CCryptoCSLock {
public:
    /// \param section may be null; the lock is then not held.
    [[nodiscard]] explicit CCryptoCSLock(CCryptoCS* section, ccrypto::LockMode mode = ccrypto::LockMode::blocking);
    ~CCryptoCSLock();
    CCryptoCSLock(const CCryptoCSLock&) = delete;
    CCryptoCSLock& operator=(const CCryptoCSLock&) = delete;

    bool held() const { return section_ != nullptr; }

private:
    CCryptoCS* section_;
};
