#include "core/platform/file.h"

#include "core/base/c_text.h"
#include "core/platform/clock.h"
#include "core/platform/posix/owned_descriptor.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdio.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace ccrypto::platform {

const char pathSeparator = '/';
const char* const defaultLogDirectory = "/var/log/";

namespace {

int FlagsOf(FileMode mode)
{
    switch (mode) {
    case FileMode::read:
        return O_RDONLY;
    case FileMode::write:
        return O_RDWR | O_CREAT | O_TRUNC;
    case FileMode::append:
    case FileMode::appendShared:
        return O_WRONLY | O_CREAT | O_APPEND;
    case FileMode::create:
    case FileMode::createPrivate:
        return O_RDWR | O_CREAT | O_EXCL;
    case FileMode::readWrite:
        break;
    }
    return O_RDWR | O_CREAT;
}

/// 0, or why an open file cannot be used.
int RefusalOf(int file, FileMode mode)
{
    struct stat status = {};
    if (fstat(file, &status) != 0)
        return errno;
    if (mode == FileMode::appendShared && S_ISREG(status.st_mode) && status.st_nlink > 1)
        return EMLINK;
    if (S_ISREG(status.st_mode) || S_ISCHR(status.st_mode) || (mode == FileMode::read && S_ISFIFO(status.st_mode)))
        return 0;
    return S_ISDIR(status.st_mode) ? EISDIR : ESPIPE;
}

int Open(const char* name, FileMode mode)
{
    // A pipe without a partner would hold up the caller for as long as nobody opens its other end.
    const int flags = FlagsOf(mode) | O_CLOEXEC | O_NONBLOCK;
    if (mode != FileMode::appendShared)
        return ::open(name, flags, mode == FileMode::createPrivate ? 0600 : 0666);

    // Linux refuses O_CREAT for a file that another user made in a folder such as /tmp, so a file that is there is opened without.
    const int present = (flags & ~O_CREAT) | O_NOFOLLOW;
    const int existing = ::open(name, present);
    if (existing >= 0 || errno != ENOENT)
        return existing;
    const int created = ::open(name, flags | O_EXCL, 0666);
    if (created < 0)
        return errno == EEXIST ? ::open(name, present) : created;
    fchmod(created, 0666);
    return created;
}

bool IsPipe(int file)
{
    struct stat status = {};
    return fstat(file, &status) == 0 && S_ISFIFO(status.st_mode);
}

/// Waits until the pipe can be read or has ended.
bool AwaitPipe(int pipe, std::int64_t deadline)
{
    const std::int64_t left = std::max<std::int64_t>(deadline - MonotonicMilliseconds(), 0);
    pollfd wanted = {.fd = pipe, .events = POLLIN, .revents = 0};
    const int ready = poll(&wanted, 1, static_cast<int>(left));
    if (ready == 0)
        errno = ETIMEDOUT;
    return ready > 0 || (ready < 0 && errno == EINTR);
}

/// Whether a pipe that gives no bytes ever had a writer.
bool HadWriter(int pipe)
{
    pollfd asked = {.fd = pipe, .events = POLLIN, .revents = 0};
    return poll(&asked, 1, 0) > 0 && (asked.revents & POLLHUP) != 0;
}

/// All that is written to the pipe, in a file of memory alone, which has a size and can be read at any
/// position, but not written. Empty, with the
/// reason in errno, when nobody writes to the pipe or it exceeds the limits that the header gives.
OwnedDescriptor ContentOfPipe(int pipe)
{
    constexpr std::int64_t maxBytes = 64 << 20;
    constexpr std::int64_t maxMilliseconds = 60'000;
    const std::int64_t deadline = MonotonicMilliseconds() + maxMilliseconds;
    OwnedDescriptor content(memfd_create("pipe", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!content)
        return content;
    int reason = 0;
    for (std::int64_t total = 0; reason == 0;) {
        // Moved inside the kernel, so that no secret stays in a buffer here.
        const ssize_t count = splice(pipe, nullptr, content.get(), nullptr, 1 << 20, SPLICE_F_NONBLOCK);
        if (count == 0 && (total != 0 || HadWriter(pipe))) {
            fcntl(content.get(), F_ADD_SEALS, F_SEAL_WRITE | F_SEAL_SHRINK | F_SEAL_GROW);
            return content;
        }
        if (count == 0)
            reason = ENXIO;
        else if (count < 0 && errno != EINTR && (errno != EAGAIN || !AwaitPipe(pipe, deadline)))
            reason = errno;
        else if (count > 0 && (total += count) > maxBytes)
            reason = EFBIG;
    }
    content.reset();
    errno = reason;
    return content;
}

int Descriptor(std::intptr_t handle)
{
    return static_cast<int>(handle);
}

} // namespace

void File::Kind::close(Value value)
{
    ::close(Descriptor(value));
}

bool File::open(const char* name, FileMode mode)
{
    close();
    OwnedDescriptor file(Open(OrEmpty(name), mode));
    if (!file)
        return false;
    if (const int reason = RefusalOf(file.get(), mode); reason != 0) {
        file.reset();
        errno = reason;
        return false;
    }
    if (IsPipe(file.get()))
        file = ContentOfPipe(file.get());
    if (!file)
        return false;
    fcntl(file.get(), F_SETFL, fcntl(file.get(), F_GETFL) & ~O_NONBLOCK);
    handle_.reset(file.release());
    return true;
}

std::int64_t File::readAt(std::uint64_t position, void* target, std::uint32_t count)
{
    auto* const bytes = static_cast<unsigned char*>(target);
    std::uint32_t done = 0;
    while (done < count) {
        const ssize_t part = pread(Descriptor(handle_.get()), bytes + done, count - done, static_cast<off_t>(position + done));
        if (part < 0 && errno == EINTR)
            continue;
        if (part < 0)
            return -1;
        if (part == 0)
            break;
        done += static_cast<std::uint32_t>(part);
    }
    return done;
}

bool File::writeAt(std::uint64_t position, const void* source, std::uint32_t count)
{
    const auto* const bytes = static_cast<const unsigned char*>(source);
    std::uint32_t done = 0;
    while (done < count) {
        const ssize_t part = pwrite(Descriptor(handle_.get()), bytes + done, count - done, static_cast<off_t>(position + done));
        if (part < 0 && errno == EINTR)
            continue;
        if (part <= 0)
            return false;
        done += static_cast<std::uint32_t>(part);
    }
    return true;
}

bool File::append(const void* source, std::uint32_t count)
{
    // Linux moves every write to a file opened for appending to its end, pwrite's too.
    const std::int64_t end = size();
    return end >= 0 && writeAt(static_cast<std::uint64_t>(end), source, count);
}

std::int64_t File::size() const
{
    struct stat status = {};
    return fstat(Descriptor(handle_.get()), &status) == 0 ? status.st_size : -1;
}

bool File::truncate(std::uint64_t size)
{
    return ftruncate(Descriptor(handle_.get()), static_cast<off_t>(size)) == 0;
}

bool File::Remove(const char* name)
{
    return unlink(OrEmpty(name)) == 0;
}

bool File::Replace(const char* from, const char* to)
{
    return ::rename(OrEmpty(from), OrEmpty(to)) == 0;
}

} // namespace ccrypto::platform
