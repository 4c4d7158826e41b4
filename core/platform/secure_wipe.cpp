#include "core/platform/secure_wipe.h"

#include <cstring>

namespace ccrypto::platform {

void SecureWipe(void* bytes, std::size_t count)
{
    if (count == 0)
        return;
    std::memset(bytes, 0, count);
    // The compiler must take the zeros as read.
    asm volatile("" : : "r"(bytes) : "memory");
}

} // namespace ccrypto::platform
