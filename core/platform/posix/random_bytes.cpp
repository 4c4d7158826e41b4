#include "core/platform/random_bytes.h"

#include "core/platform/secure_wipe.h"

#include <sys/random.h>

#include <cerrno>
#include <cstdint>

namespace platform {

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

} // namespace platform
