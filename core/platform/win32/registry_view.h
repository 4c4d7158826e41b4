#pragma once

#include <cstdint>

namespace ccrypto::platform {

/// The flag that every registry access carries: the 64-bit view for a native 64-bit x86 processor (`architecture` 9) under Windows
/// 6 or later, the 32-bit view for everything else.
constexpr std::uint32_t RegistryViewFlag(std::uint32_t windowsMajor, std::uint16_t architecture)
{
    constexpr std::uint32_t view64 = 0x100;
    constexpr std::uint32_t view32 = 0x200;
    return windowsMajor >= 6 && architecture == 9 ? view64 : view32;
}

/// The flag for this machine, found out once a process.
std::uint32_t RegistryViewFlag();

} // namespace ccrypto::platform
