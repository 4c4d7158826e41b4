/* What a library in plain C leaves in its host that does the same calls for a menu and imports from the same libraries: the measure for
   the one in C++, whose runtime and static objects must add nothing. */

#define COBJMACROS
#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>
#include <shlwapi.h>
#include <wincodec.h>
#include <wtsapi32.h>

static HINSTANCE own;

/* Called by nobody. */
const void* const furtherImports[] = {(const void*)DragQueryFileW, (const void*)QISearch, (const void*)RegCloseKey,
                                      (const void*)WTSFreeMemory};

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* reserved)
{
    (void)reserved;
    if (reason == DLL_PROCESS_ATTACH) {
        own = instance;
        DisableThreadLibraryCalls(instance);
    }
    return TRUE;
}

static HBITMAP MakeBitmap(IWICBitmap* picture)
{
    BITMAPINFO description = {{sizeof(BITMAPINFOHEADER), 16, -16, 1, 32, BI_RGB, 0, 0, 0, 0, 0}, {{0, 0, 0, 0}}};
    void* bits = NULL;
    const HDC screen = GetDC(NULL);
    const HBITMAP bitmap = CreateDIBSection(screen, &description, DIB_RGB_COLORS, &bits, NULL, 0);
    ReleaseDC(NULL, screen);
    IWICBitmap_CopyPixels(picture, NULL, 64, 1024, (BYTE*)bits);
    return bitmap;
}

/* The picture goes with RemoveEntry. The icon stays, since DeleteObject does not free one. */
__declspec(dllexport) HBITMAP AddEntry(HMENU menu)
{
    MENUITEMINFOW entry = {sizeof entry};
    wchar_t text[] = L"&Sign .pdf document";
    HBITMAP bitmap = NULL;
    HICON icon = NULL;
    IWICImagingFactory* imaging = NULL;
    IWICBitmap* picture = NULL;
    LoadIconWithScaleDown(own, MAKEINTRESOURCEW(105), 16, 16, &icon);
    CoCreateInstance(&CLSID_WICImagingFactory2, NULL, CLSCTX_INPROC_SERVER, &IID_IWICImagingFactory, (void**)&imaging);
    if (SUCCEEDED(IWICImagingFactory_CreateBitmapFromHICON(imaging, icon, &picture))) {
        bitmap = MakeBitmap(picture);
        IWICBitmap_Release(picture);
    }
    IWICImagingFactory_Release(imaging);
    DeleteObject(icon);

    entry.fMask = MIIM_FTYPE | MIIM_BITMAP | MIIM_STRING | MIIM_ID | MIIM_STATE;
    entry.wID = 1;
    entry.dwTypeData = text;
    entry.hbmpItem = bitmap;
    InsertMenuItemW(menu, 0, TRUE, &entry);
    return bitmap;
}

__declspec(dllexport) void RemoveEntry(HBITMAP bitmap)
{
    DeleteObject(bitmap);
}
