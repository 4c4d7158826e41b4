#pragma once

#include <windows.h>

#include <cstdint>
#include <cstring>

struct GdiObjects {
    int contexts = 0;
    int bitmaps = 0;
};

/// Counts the drawing objects of this process in the table that the system maps into every process. (GetGuiResources knows no
/// kinds, and Wine answers it with 0.)
inline GdiObjects CountGdiObjects()
{
    // The address of the table stands at 0xF8 of the process environment block. A handle's low half is the index of its entry, of
    // 24 bytes: byte 14 is the kind, 0 for a free entry; the 16-bit number at byte 8 is the process, 0 where the table is that of
    // one process anyway.
    constexpr std::size_t tableOffset = 0xF8;
    constexpr std::size_t entries = 65536;
    constexpr std::size_t entrySize = 24;

    using CurrentBlock = const std::uint8_t*(WINAPI*)();
    const auto currentBlock =
        reinterpret_cast<CurrentBlock>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetCurrentPeb")));
    const std::uint8_t* table = nullptr;
    std::memcpy(&table, currentBlock() + tableOffset, sizeof table);
    const auto kindOf = [&](HGDIOBJ object) { return table[(reinterpret_cast<std::uintptr_t>(object) & 0xFFFF) * entrySize + 14]; };

    const HDC context = CreateCompatibleDC(nullptr);
    const HBITMAP bitmap = CreateBitmap(1, 1, 1, 1, nullptr);
    const std::uint8_t contextKind = kindOf(context);
    const std::uint8_t bitmapKind = kindOf(bitmap);
    DeleteDC(context);
    DeleteObject(bitmap);

    GdiObjects count;
    for (std::size_t i = 0; i < entries; ++i) {
        const std::uint8_t* const entry = table + i * entrySize;
        std::uint16_t owner = 0;
        std::memcpy(&owner, entry + 8, sizeof owner);
        const bool isOurs = owner == 0 || (owner & 0xFFFE) == (GetCurrentProcessId() & 0xFFFE);
        count.contexts += isOurs && entry[14] == contextKind;
        count.bitmaps += isOurs && entry[14] == bitmapKind;
    }
    return count;
}
