#pragma once

#include "core/platform/system_handle.h"

#include <windows.h>

namespace ccrypto {

struct RegistryKeyKind {
    using Value = HKEY;
    static Value none() { return nullptr; }
    static void close(Value value) { RegCloseKey(value); }
};
using OwnedKey = SystemHandle<RegistryKeyKind>;

/// What DeleteObject takes back.
template <typename Handle>
struct GdiObjectKind {
    using Value = Handle;
    static Value none() { return nullptr; }
    static void close(Value value) { DeleteObject(value); }
};
using OwnedBitmap = SystemHandle<GdiObjectKind<HBITMAP>>;

struct DrawingContextKind {
    using Value = HDC;
    static Value none() { return nullptr; }
    static void close(Value value) { DeleteDC(value); }
};
/// A device context that was created; one that was borrowed from a window goes back another way.
using OwnedDrawingContext = SystemHandle<DrawingContextKind>;

struct MenuKind {
    using Value = HMENU;
    static Value none() { return nullptr; }
    static void close(Value value) { DestroyMenu(value); }
};
using OwnedMenu = SystemHandle<MenuKind>;

} // namespace ccrypto
