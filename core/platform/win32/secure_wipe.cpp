#include "core/platform/secure_wipe.h"

#include <windows.h>

void SecureWipe(void* bytes, std::size_t count)
{
    if (count != 0)
        SecureZeroMemory(bytes, count);
}
