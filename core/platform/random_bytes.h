#pragma once

#include <cstddef>

namespace platform {

/// Fills `count` bytes with the operating system's cryptographically strong random bytes. \return false, with the bytes wiped, when
/// the system refuses them; LastError() then tells why.
bool RandomBytes(void* bytes, std::size_t count);

} // namespace platform
