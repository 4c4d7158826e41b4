#include "crypto/base/constant_time.h"

#ifdef CCRYPTO_SECRETS_MARKED
#include <valgrind/memcheck.h>
#endif

namespace ccrypto::constant_time {

#ifdef CCRYPTO_SECRETS_MARKED
void DeclassifyBytes(const void* bytes, std::size_t count)
{
    static_cast<void>(VALGRIND_MAKE_MEM_DEFINED(bytes, count));
}

void ClassifyBytes(const void* bytes, std::size_t count)
{
    static_cast<void>(VALGRIND_MAKE_MEM_UNDEFINED(bytes, count));
}
#endif

Mask EqualBytes(const void* left, const void* right, std::size_t count)
{
    const auto* a = static_cast<const std::uint8_t*>(left);
    const auto* b = static_cast<const std::uint8_t*>(right);
    std::uint32_t differences = 0;
    for (std::size_t i = 0; i < count; ++i)
        differences |= Barrier(static_cast<std::uint32_t>(a[i] ^ b[i]));
    return Mask::IsZero(differences);
}

void CopyBytesIf(Mask mask, void* target, const void* source, std::size_t count)
{
    auto* to = static_cast<std::uint8_t*>(target);
    const auto* from = static_cast<const std::uint8_t*>(source);
    for (std::size_t i = 0; i < count; ++i)
        to[i] = mask.select(from[i], to[i]);
}

} // namespace ccrypto::constant_time
