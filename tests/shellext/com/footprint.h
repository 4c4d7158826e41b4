#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>

namespace ccrypto {

/// What this process holds of the system, counted without GetProcessHandleCount, GetGuiResources and GetProcessMemoryInfo: Wine
/// answers each with 0.
struct Footprint {
    std::size_t heapBytes = 0;       ///< allocated in all heaps
    std::size_t privateBytes = 0;    ///< committed pages that are not of a file
    std::uint32_t gdiObjects = 0;    ///< of every kind
    std::uint32_t userObjects = 0;   ///< by the highest number that is free: it rises with what is not given back
    std::uint32_t kernelHandles = 0; ///< by the highest number, see HighestHandleNumber

    /// Counts anew.
    static Footprint Now();

    Footprint operator-(const Footprint& before) const;
};

inline std::ostream& operator<<(std::ostream& stream, const Footprint& footprint)
{
    return stream << "heap " << static_cast<std::ptrdiff_t>(footprint.heapBytes) << ", private "
                  << static_cast<std::ptrdiff_t>(footprint.privateBytes) << " bytes, GDI "
                  << static_cast<std::int32_t>(footprint.gdiObjects) << ", USER "
                  << static_cast<std::int32_t>(footprint.userObjects) << ", kernel "
                  << static_cast<std::int32_t>(footprint.kernelHandles);
}

} // namespace ccrypto
