#include "shellext/context_menu/menu_bitmap.h"

#include "core/diagnostics/auto_logger.h"
#include "shellext/com/com_ptr.h"
#include "shellext/com/module.h"

#include <commctrl.h>
#include <wincodec.h>

#include <cstdint>
#include <cstring>
#include <vector>

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

namespace ccrypto {

struct MenuPicture::Pixels {
    UINT width = 0;
    UINT height = 0;
    std::vector<std::uint32_t> values; ///< row by row from the top

    UINT bytes() const { return width * height * 4; }
};

struct MenuPicture::Decoder {
    /// \return null, logged, when there is no icon or nothing to decode it with. \param complete whether the pixels are the icon's;
    /// they are otherwise clear.
    static std::unique_ptr<Pixels> decode(bool& complete, CCryptoAutoLogger& logger)
    {
        const IconOwner icon = LoadMenuIcon();
        if (icon == nullptr) {
            logger.WriteLog("Cannot load icon from resource %d", static_cast<int>(GetLastError()));
            return nullptr;
        }

        ComPtr<IWICImagingFactory> imaging;
        const HRESULT created = CoCreateInstance(CLSID_WICImagingFactory2, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                                                 imaging.receiveVoid());
        if (FAILED(created)) {
            logger.WriteLog("Cannot create imaging factory 0x%x", static_cast<unsigned>(created));
            return nullptr;
        }

        ComPtr<IWICBitmap> picture;
        auto pixels = std::make_unique<Pixels>();
        if (FAILED(imaging->CreateBitmapFromHICON(icon.get(), picture.receive())) ||
            FAILED(picture->GetSize(&pixels->width, &pixels->height)))
            return nullptr;
        pixels->values.resize(std::size_t{pixels->width} * pixels->height);
        complete = SUCCEEDED(
            picture->CopyPixels(nullptr, pixels->width * 4, pixels->bytes(), reinterpret_cast<BYTE*>(pixels->values.data())));
        return pixels;
    }

    static BitmapOwner draw(const Pixels& pixels, CCryptoAutoLogger& logger)
    {
        void* bits = nullptr;
        BitmapOwner bitmap = CreateTopDownBitmap(pixels.width, pixels.height, bits, logger);
        if (bitmap != nullptr)
            std::memcpy(bits, pixels.values.data(), pixels.bytes());
        logger.setResult(bitmap != nullptr);
        return bitmap;
    }
};

MenuPicture::~MenuPicture()
{
    delete pixels_.load();
}

BitmapOwner MenuPicture::makeBitmap()
{
    CCryptoAutoLogger logger("MakeMenuBitmap");
    if (const Pixels* const known = pixels_.load(std::memory_order_acquire))
        return Decoder::draw(*known, logger);

    bool complete = false;
    std::unique_ptr<const Pixels> decoded = Decoder::decode(complete, logger);
    if (decoded == nullptr)
        return nullptr;
    BitmapOwner bitmap = Decoder::draw(*decoded, logger);
    // No lock is held while COM works; of threads that decode at the same time the first one's pixels are kept.
    const Pixels* none = nullptr;
    if (complete && pixels_.compare_exchange_strong(none, decoded.get(), std::memory_order_acq_rel))
        static_cast<void>(decoded.release());
    return bitmap;
}

namespace {

constinit MenuPicture processMenuPicture;

}

MenuPicture& ProcessMenuPicture()
{
    return processMenuPicture;
}

} // namespace ccrypto
