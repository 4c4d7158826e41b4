#include "core/platform/file.h"

#include "core/base/c_text.h"
#include "core/platform/posix/owned_descriptor.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

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
int RefusalOf(int file)
{
    struct stat status = {};
    if (fstat(file, &status) != 0)
        return errno;
    if (S_ISREG(status.st_mode) || S_ISCHR(status.st_mode))
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
    const int existing = ::open(name, flags & ~O_CREAT);
    if (existing >= 0 || errno != ENOENT)
        return existing;
    const int created = ::open(name, flags | O_EXCL, 0666);
    if (created < 0)
        return errno == EEXIST ? ::open(name, flags & ~O_CREAT) : created;
    fchmod(created, 0666);
    return created;
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
    if (const int reason = RefusalOf(file.get()); reason != 0) {
        file.reset();
        errno = reason;
        return false;
    }
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
