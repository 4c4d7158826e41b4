#include "shellext/context_menu/menu_bitmap.h"

#include "core/diagnostics/auto_logger.h"
#include "shellext/com/com_ptr.h"
#include "shellext/com/module.h"

#include <commctrl.h>
#include <wincodec.h>

namespace {

// Handed back by DeleteObject, on purpose, and not by DestroyIcon: the icon itself stays with the process.
using IconOwner = std::unique_ptr<std::remove_pointer_t<HICON>, GdiObjectDeleter>;

/// The device context of the whole screen.
class ScreenContext {
public:
    ScreenContext() : context_(GetDC(nullptr)) {}
    ~ScreenContext()
    {
        if (context_ != nullptr)
            ReleaseDC(nullptr, context_);
    }
    ScreenContext(const ScreenContext&) = delete;
    ScreenContext& operator=(const ScreenContext&) = delete;

    HDC get() const { return context_; }

private:
    HDC context_;
};

IconOwner LoadMenuIcon()
{
    HICON icon = nullptr;
    LoadIconWithScaleDown(module::Handle(), MAKEINTRESOURCEW(menuIconResource), menuIconSize, menuIconSize, &icon);
    return IconOwner(icon);
}

/// \param bits becomes the address of the first row when a bitmap is returned.
BitmapOwner CreateTopDownBitmap(UINT width, UINT height, void*& bits, CCryptoAutoLogger& logger)
{
    BITMAPINFO description = {};
    description.bmiHeader.biSize = sizeof description.bmiHeader;
    description.bmiHeader.biWidth = static_cast<LONG>(width);
    description.bmiHeader.biHeight = -static_cast<LONG>(height);
    description.bmiHeader.biPlanes = 1;
    description.bmiHeader.biBitCount = 32;
    description.bmiHeader.biCompression = BI_RGB;

    const ScreenContext screen;
    if (screen.get() == nullptr) {
        logger.WriteLog("Cannot get DC for entire screen %d", static_cast<int>(GetLastError()));
        return nullptr;
    }
    return BitmapOwner(CreateDIBSection(screen.get(), &description, DIB_RGB_COLORS, &bits, nullptr, 0));
}

} // namespace

BitmapOwner MakeMenuBitmap()
{
    CCryptoAutoLogger logger("MakeMenuBitmap");

    const IconOwner icon = LoadMenuIcon();
    if (icon == nullptr) {
        logger.WriteLog("Cannot load icon from resource %d", static_cast<int>(GetLastError()));
        return nullptr;
    }

    ComPtr<IWICImagingFactory> imaging;
    const HRESULT created =
        CoCreateInstance(CLSID_WICImagingFactory2, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory, imaging.receiveVoid());
    if (FAILED(created)) {
        logger.WriteLog("Cannot create imaging factory 0x%x", static_cast<unsigned>(created));
        return nullptr;
    }

    ComPtr<IWICBitmap> picture;
    UINT width = 0;
    UINT height = 0;
    if (FAILED(imaging->CreateBitmapFromHICON(icon.get(), picture.receive())) || FAILED(picture->GetSize(&width, &height)))
        return nullptr;

    void* bits = nullptr;
    BitmapOwner bitmap = CreateTopDownBitmap(width, height, bits, logger);
    if (bitmap != nullptr)
        picture->CopyPixels(nullptr, width * 4, width * 4 * height, static_cast<BYTE*>(bits));
    logger.setResult(bitmap != nullptr);
    return bitmap;
}
