#include "core/platform/secure_wipe.h"

#include <windows.h>

namespace platform {

void SecureWipe(void* bytes, std::size_t count)
{
    if (count != 0)
        SecureZeroMemory(bytes, count);
}

} // namespace platform
