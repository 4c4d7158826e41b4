#pragma once

#include "core/platform/win32/scoped_handle.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace ccrypto {

/// Rises with every kernel handle of this process that is not given back. GetProcessHandleCount would say it, but Wine answers 0.
///
/// The system hands out the lowest free number first. The lowest alone says nothing: a lost handle may lie above one that was given
/// back. So the gaps are filled, and the highest number counts.
inline std::uint32_t HighestHandleNumber()
{
    std::vector<platform::ScopedHandle> probes(256);
    std::uintptr_t highest = 0;
    for (platform::ScopedHandle& probe : probes) {
        probe.reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        highest = std::max(highest, reinterpret_cast<std::uintptr_t>(probe.get()));
    }
    return static_cast<std::uint32_t>(highest / 4);
}

} // namespace ccrypto
