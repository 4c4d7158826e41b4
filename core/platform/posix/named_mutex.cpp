#include "core/platform/named_mutex.h"

#include "core/platform/clock.h"
#include "core/platform/posix/owned_descriptor.h"
#include "core/platform/process.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>

namespace ccrypto::platform {

namespace {

/// The file lock keeps processes (and other objects of the same name) apart, `threads` the threads that use this object.
struct MutexState {
    OwnedDescriptor file;
    std::recursive_timed_mutex threads;
    std::atomic<std::uint32_t> owner{0};
    std::uint32_t depth = 0;
};

bool IsUsableName(const char* name)
{
    if (name == nullptr)
        return false;
    const std::size_t length = std::strlen(name);
    return length >= 1 && length <= 200 && std::strpbrk(name, "/\\") == nullptr;
}

// Not TMPDIR: users whose variables differ would not meet. A planted link is not followed, a planted pipe does not block.
OwnedDescriptor OpenLockFile(const std::string& path)
{
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    // Opening comes first: in a sticky directory the system may refuse to "create" the file of another user, even where it exists.
    OwnedDescriptor file(open(path.c_str(), flags));
    if (!file && errno == ENOENT) {
        file.reset(open(path.c_str(), flags | O_CREAT | O_EXCL, 0666));
        if (file)
            fchmod(file.get(), 0666);
        else if (errno == EEXIST)
            file.reset(open(path.c_str(), flags));
    }
    struct stat status = {};
    if (file && (fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))) {
        file.reset();
        errno = EINVAL;
    }
    return file;
}

// A file lock has no timed wait, so the lock is tried in growing intervals. A mutex in shared memory would wait by itself, but any
// user could break its memory, and with it the processes of everybody else.
bool LockFile(int file, std::int64_t deadline, bool forever)
{
    if (forever) {
        while (flock(file, LOCK_EX) != 0) {
            if (errno != EINTR)
                return false;
        }
        return true;
    }
    constexpr std::int64_t longestInterval = 8;
    for (std::int64_t interval = 1;; interval = std::min(interval * 2, longestInterval)) {
        if (flock(file, LOCK_EX | LOCK_NB) == 0)
            return true;
        if (errno != EWOULDBLOCK && errno != EINTR)
            return false;
        const std::int64_t left = deadline - MonotonicMilliseconds();
        if (left <= 0)
            return false;
        SleepMilliseconds(static_cast<std::uint32_t>(std::min(interval, left)));
    }
}

} // namespace

void NamedMutex::Kind::close(Value value)
{
    delete static_cast<MutexState*>(value);
}

bool NamedMutex::open(const char* name)
{
    close();
    if (!IsUsableName(name)) {
        errno = EINVAL;
        return false;
    }
    OwnedDescriptor file = OpenLockFile("/tmp/" + std::string(name) + ".mutex");
    if (!file)
        return false;
    auto state = std::make_unique<MutexState>();
    state->file = std::move(file);
    state_.reset(state.release());
    return true;
}

bool NamedMutex::lock(std::uint32_t milliseconds)
{
    auto* const state = static_cast<MutexState*>(state_.get());
    if (state == nullptr)
        return false;
    const bool forever = milliseconds == 0xFFFFFFFF;
    const std::int64_t deadline = MonotonicMilliseconds() + milliseconds;
    if (forever)
        state->threads.lock();
    else if (!state->threads.try_lock_for(std::chrono::milliseconds(milliseconds)))
        return false;
    if (state->depth == 0 && !LockFile(state->file.get(), deadline, forever)) {
        state->threads.unlock();
        return false;
    }
    ++state->depth;
    state->owner = CurrentThreadId();
    return true;
}

void NamedMutex::unlock()
{
    auto* const state = static_cast<MutexState*>(state_.get());
    if (state == nullptr || state->owner != CurrentThreadId())
        return;
    if (--state->depth == 0) {
        state->owner = 0;
        flock(state->file.get(), LOCK_UN);
    }
    state->threads.unlock();
}

} // namespace ccrypto::platform
