#include "tests/shellext/com/footprint.h"

#include "tests/support/kernel_handles.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <vector>

using namespace ccrypto;

namespace {

std::size_t AllocatedInHeaps()
{
    std::vector<HANDLE> heaps(64);
    heaps.resize(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()));
    std::size_t bytes = 0;
    for (const HANDLE heap : heaps) {
        PROCESS_HEAP_ENTRY entry = {};
        HeapLock(heap);
        while (HeapWalk(heap, &entry)) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0)
                bytes += entry.cbData;
        }
        HeapUnlock(heap);
    }
    return bytes;
}

std::size_t PrivateBytes()
{
    std::size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region = {};
    for (const char* address = nullptr; VirtualQuery(address, &region, sizeof region) != 0;
         address = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE)
            bytes += region.RegionSize;
    }
    return bytes;
}

/// Entries of this process in the table of drawing objects that the system maps into every process. Its address stands at 0xF8 of
/// the process environment block. An entry has 24 bytes: byte 14 is the kind, 0 for a free entry; the 16-bit number at byte 8 is
/// the process, 0 where the table is that of one process anyway.
std::uint32_t GdiObjectCount()
{
    constexpr std::size_t tableOffset = 0xF8;
    constexpr std::size_t entries = 65536;
    constexpr std::size_t entrySize = 24;

    using CurrentBlock = const std::uint8_t*(WINAPI*)();
    const auto currentBlock =
        reinterpret_cast<CurrentBlock>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetCurrentPeb")));
    const std::uint8_t* table = nullptr;
    std::memcpy(&table, currentBlock() + tableOffset, sizeof table);

    std::uint32_t count = 0;
    for (std::size_t index = 0; index < entries; ++index) {
        const std::uint8_t* const entry = table + index * entrySize;
        std::uint16_t owner = 0;
        std::memcpy(&owner, entry + 8, sizeof owner);
        const bool isOurs = owner == 0 || (owner & 0xFFFE) == (GetCurrentProcessId() & 0xFFFE);
        count += isOurs && entry[14] != 0;
    }
    return count;
}

/// Freed numbers are taken first, so some menus are made and the highest of their numbers counts.
std::uint32_t HighestUserNumber()
{
    std::vector<HMENU> menus(64);
    std::uint32_t highest = 0;
    for (HMENU& menu : menus) {
        menu = CreatePopupMenu();
        highest = std::max(highest, static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(menu) & 0xFFFF) / 2);
    }
    for (const HMENU menu : menus)
        DestroyMenu(menu);
    return highest;
}

} // namespace

namespace ccrypto {

Footprint Footprint::Now()
{
    return {AllocatedInHeaps(), PrivateBytes(), GdiObjectCount(), HighestUserNumber(), HighestHandleNumber()};
}

Footprint Footprint::operator-(const Footprint& before) const
{
    return {heapBytes - before.heapBytes, privateBytes - before.privateBytes, gdiObjects - before.gdiObjects,
            userObjects - before.userObjects, kernelHandles - before.kernelHandles};
}

} // namespace ccrypto
