#include "bench/shellext/plain_handler.h"

#include <commctrl.h>
#include <shlobj.h>
#include <wincodec.h>

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <vector>

using namespace ccrypto;

namespace {

std::vector<BYTE> DecodeIcon(HINSTANCE icons)
{
    std::vector<BYTE> pixels(1024);
    HICON icon = nullptr;
    IWICImagingFactory* imaging = nullptr;
    IWICBitmap* picture = nullptr;
    if (FAILED(LoadIconWithScaleDown(icons, MAKEINTRESOURCEW(105), 16, 16, &icon)) ||
        FAILED(CoCreateInstance(CLSID_WICImagingFactory2, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                                reinterpret_cast<void**>(&imaging))) ||
        FAILED(imaging->CreateBitmapFromHICON(icon, &picture)))
        return pixels;
    picture->CopyPixels(nullptr, 64, 1024, pixels.data());
    picture->Release();
    imaging->Release();
    DestroyIcon(icon);
    return pixels;
}

HBITMAP MakeBitmap(HINSTANCE icons)
{
    static const std::vector<BYTE> pixels = DecodeIcon(icons);
    BITMAPINFO description = {};
    description.bmiHeader = {sizeof description.bmiHeader, 16, -16, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    const HDC screen = GetDC(nullptr);
    void* bits = nullptr;
    const HBITMAP bitmap = CreateDIBSection(screen, &description, DIB_RGB_COLORS, &bits, nullptr, 0);
    ReleaseDC(nullptr, screen);
    std::memcpy(bits, pixels.data(), pixels.size());
    return bitmap;
}

bool ReadSetting()
{
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Brannock\\Pennwick Client", 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS)
        return false;
    char value[21] = {};
    DWORD size = sizeof value - 1;
    const LSTATUS status = RegQueryValueExA(key, "pdfAllowMultiselect", nullptr, nullptr, reinterpret_cast<BYTE*>(value), &size);
    RegCloseKey(key);
    return status == ERROR_SUCCESS && std::atoi(value) == 1;
}

void AppendUtf8(std::string& text, const wchar_t* wide, int length)
{
    const auto start = text.size();
    text.resize(start + static_cast<std::size_t>(length) * 3);
    const int written = WideCharToMultiByte(CP_UTF8, 0, wide, length, text.data() + start, length * 3, nullptr, nullptr);
    text.resize(start + static_cast<std::size_t>(written));
}

} // namespace

namespace ccrypto {

PlainHandler::PlainHandler(HINSTANCE icons) : bitmap_(MakeBitmap(icons)), multipleAllowed_(ReadSetting()) {}

PlainHandler::~PlainHandler()
{
    DeleteObject(bitmap_);
}

bool PlainHandler::initialize(IDataObject& selection)
{
    FORMATETC format = {CF_HDROP, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
    STGMEDIUM medium = {};
    if (FAILED(selection.GetData(&format, &medium)))
        return false;
    const auto* header = static_cast<const DROPFILES*>(GlobalLock(medium.hGlobal));
    const auto* path = reinterpret_cast<const wchar_t*>(reinterpret_cast<const char*>(header) + header->pFiles);
    bool taken = false;
    for (int index = 0; *path != 0 && (index == 0 || multipleAllowed_); ++index, path += std::wcslen(path) + 1) {
        if (std::wcsstr(path, L".pdf") == nullptr)
            continue;
        if (!paths_.empty())
            paths_ += '*';
        AppendUtf8(paths_, path, static_cast<int>(std::wcslen(path)));
        taken = true;
    }
    GlobalUnlock(medium.hGlobal);
    ReleaseStgMedium(&medium);
    return taken;
}

bool PlainHandler::addItems(HMENU menu, UINT index, UINT identifier)
{
    MENUITEMINFOW entry = {};
    entry.cbSize = sizeof entry;
    entry.fMask = MIIM_FTYPE | MIIM_BITMAP | MIIM_STRING | MIIM_ID | MIIM_STATE;
    entry.wID = identifier;
    entry.dwTypeData = text_;
    entry.hbmpItem = bitmap_;
    MENUITEMINFOW separator = {};
    separator.cbSize = sizeof separator;
    separator.fMask = MIIM_FTYPE;
    separator.fType = MFT_SEPARATOR;
    return InsertMenuItemW(menu, index, TRUE, &entry) && InsertMenuItemW(menu, index + 1, TRUE, &separator);
}

} // namespace ccrypto
