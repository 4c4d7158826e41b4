#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ccrypto::platform {

/// Overwrites `count` bytes at `bytes` with zeros in a way the optimiser keeps, although nothing reads them afterwards.
/// `bytes` may be null when `count` is 0.
void SecureWipe(void* bytes, std::size_t count);

/// The same for a small array whose size is known: a few stores in place.
template <std::size_t count>
inline void SecureWipe(std::uint8_t (&bytes)[count])
{
    std::memset(bytes, 0, count);
    // The compiler must take the zeros as read.
    asm volatile("" : : "r"(bytes) : "memory");
}

} // namespace ccrypto::platform
