#include "core/platform/named_mutex.h"

#include "core/base/c_text.h"
#include "core/platform/clock.h"
#include "core/platform/posix/owned_descriptor.h"
#include "core/platform/process.h"

#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <utility>

namespace ccrypto::platform {

namespace {

/// The file lock keeps processes (and other objects of the same name) apart, `threads` the threads that use this object.
struct MutexState {
    explicit MutexState(std::string lockFile);
    ~MutexState();
    MutexState(const MutexState&) = delete;
    MutexState& operator=(const MutexState&) = delete;

    const std::string path;
    OwnedDescriptor file;
    std::recursive_timed_mutex threads;
    std::atomic<std::uint32_t> owner{0};
    std::uint32_t depth = 0;

    MutexState* next = nullptr;
};

constinit std::mutex openMutexesGuard;
/// All that are open in this process, for a child made by fork.
constinit MutexState* openMutexes = nullptr;

/// A forked child inherits the open files, and with them the parent's file locks. It forgets them and opens its own at its next
/// lock; it owns no mutex, whatever the parent owned. No other thread is there yet.
void StartAnew()
{
    for (MutexState* state = openMutexes; state != nullptr; state = state->next) {
        state->file.reset();
        new (&state->threads) std::recursive_timed_mutex;
        state->owner = 0;
        state->depth = 0;
    }
    openMutexesGuard.unlock();
}

void WatchForForks()
{
    [[maybe_unused]] static const int registered =
        pthread_atfork([] { openMutexesGuard.lock(); }, [] { openMutexesGuard.unlock(); }, StartAnew);
}

MutexState::MutexState(std::string lockFile) : path(std::move(lockFile))
{
    WatchForForks();
    const std::lock_guard guard(openMutexesGuard);
    next = std::exchange(openMutexes, this);
}

MutexState::~MutexState()
{
    const std::lock_guard guard(openMutexesGuard);
    MutexState** link = &openMutexes;
    while (*link != this)
        link = &(*link)->next;
    *link = next;
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
    constexpr std::int64_t maxInterval = 8;
    for (std::int64_t interval = 1;; interval = std::min(interval * 2, maxInterval)) {
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

/// Whether the path still leads to the open file. Once the file is removed, others lock a new one of the same name.
bool IsInPlace(const MutexState& state)
{
    struct stat opened = {};
    struct stat named = {};
    return fstat(state.file.get(), &opened) == 0 && lstat(state.path.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
           opened.st_ino == named.st_ino;
}

bool LockFileInPlace(MutexState& state, std::int64_t deadline, bool forever)
{
    // So often the file may vanish between opening and locking.
    constexpr int maxAttempts = 100;
    for (int attempt = 0; attempt < maxAttempts; ++attempt) {
        if (!state.file)
            state.file = OpenLockFile(state.path);
        if (!state.file || !LockFile(state.file.get(), deadline, forever))
            return false;
        if (IsInPlace(state))
            return true;
        state.file.reset();
    }
    return false;
}

} // namespace

void NamedMutex::Kind::close(Value value)
{
    delete static_cast<MutexState*>(value);
}

bool NamedMutex::open(const char* name)
{
    close();
    if (!isUsable(OrEmpty(name))) {
        errno = EINVAL;
        return false;
    }
    auto state = std::make_unique<MutexState>("/tmp/" + std::string(name) + ".mutex");
    state->file = OpenLockFile(state->path);
    if (!state->file)
        return false;
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
    if (state->depth == 0 && !LockFileInPlace(*state, deadline, forever)) {
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
