#pragma once

#include <new>

namespace ccrypto {

/// Ends the process with exit code 1 and "FATAL MEMORY ALLOCATION ERROR" on the debug channel: what the byte buffers and containers
/// of the library do when there is no memory.
[[noreturn]] void EndOutOfMemory();

} // namespace ccrypto

namespace ccrypto::internal {

/// What `action` returns; a failed allocation in it ends the process as above. For what may not throw, such as destructors.
template <typename Action>
auto OrEndOutOfMemory(Action&& action) noexcept
{
    try {
        return action();
    } catch (const std::bad_alloc&) {
        ccrypto::EndOutOfMemory();
    }
}

} // namespace ccrypto::internal
