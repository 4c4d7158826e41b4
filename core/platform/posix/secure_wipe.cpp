#include "core/platform/secure_wipe.h"

#include <cstring>

namespace ccrypto::platform {

void SecureWipe(void* bytes, std::size_t count)
{
    if (count != 0)
        explicit_bzero(bytes, count);
}

} // namespace ccrypto::platform
