#include "core/platform/random_bytes.h"

#include "core/platform/secure_wipe.h"

#include <pthread.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <new>

namespace ccrypto::platform {

namespace {

std::atomic<std::uint64_t> forkGeneration{0};

/// A flag that is false again in every child; null when the kernel does not offer that.
std::atomic<bool>* FlagClearedOnFork()
{
    const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* const page = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED)
        return nullptr;
    if (madvise(page, size, MADV_WIPEONFORK) != 0) {
        munmap(page, size);
        return nullptr;
    }
    return new (page) std::atomic<bool>(false);
}

} // namespace

bool RandomBytes(void* bytes, std::size_t count)
{
    auto* next = static_cast<std::uint8_t*>(bytes);
    std::size_t left = count;
    while (left != 0) {
        const ssize_t got = getrandom(next, left, 0);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0) {
            const int code = errno;
            SecureWipe(bytes, count);
            errno = code;
            return false;
        }
        next += got;
        left -= static_cast<std::size_t>(got);
    }
    return true;
}

std::uint64_t ForkGeneration()
{
    static std::atomic<bool>* const flag = FlagClearedOnFork();
    static const int registered = pthread_atfork(nullptr, nullptr, [] { ++forkGeneration; });
    static_cast<void>(registered);
    if (flag != nullptr && !flag->load(std::memory_order_relaxed) && !flag->exchange(true))
        ++forkGeneration;
    return forkGeneration.load(std::memory_order_relaxed) + 1;
}

} // namespace ccrypto::platform
