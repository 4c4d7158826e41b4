#pragma once

#include <cstddef>
#include <cstdint>

namespace ccrypto::platform {

/// Fills `count` bytes with the operating system's cryptographically strong random bytes. \return false, with the bytes wiped, when
/// the system refuses them; LastError() then gives the reason.
[[nodiscard]] bool RandomBytes(void* bytes, std::size_t count);

/// A number that changes in a forked child, whatever its process id and however it was forked; never 0. Where the kernel cannot
/// clear a page on fork, only forks that go through the C library are noticed. Windows has no fork: always 1.
[[nodiscard]] std::uint64_t ForkGeneration();

} // namespace ccrypto::platform
