#include "core/platform/random_bytes.h"

#include "core/platform/secure_wipe.h"

#include <windows.h>

#include <bcrypt.h>

#include <algorithm>

namespace ccrypto::platform {

bool RandomBytes(void* bytes, std::size_t count)
{
    constexpr std::size_t most = 1u << 30;
    auto* next = static_cast<UCHAR*>(bytes);
    for (std::size_t left = count; left != 0;) {
        const auto part = static_cast<ULONG>(std::min(left, most));
        const NTSTATUS status = BCryptGenRandom(nullptr, next, part, BCRYPT_USE_SYSTEM_PREFERRED_RNG);
        if (status != 0) {
            SecureWipe(bytes, count);
            SetLastError(static_cast<DWORD>(status));
            return false;
        }
        next += part;
        left -= part;
    }
    return true;
}

std::uint64_t ForkGeneration()
{
    return 1;
}

} // namespace ccrypto::platform
