#include "shellext/context_menu/menu_bitmap.h"

#include "core/diagnostics/auto_logger.h"
#include "shellext/com/com_ptr.h"
#include "shellext/com/module.h"

#include <commctrl.h>
#include <wincodec.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

using namespace ccrypto;

namespace ccrypto {

namespace {

// Handed back by DeleteObject, on purpose, and not by DestroyIcon: the icon itself stays with the process.
using OwnedIcon = SystemHandle<GdiObjectKind<HICON>>;

struct ScreenContextKind {
    using Value = HDC;
    static Value none() { return nullptr; }
    static void close(Value value) { ReleaseDC(nullptr, value); }
};
/// The device context of the whole screen.
using ScreenContext = SystemHandle<ScreenContextKind>;

OwnedIcon LoadMenuIcon()
{
    OwnedIcon icon;
    LoadIconWithScaleDown(module::Handle(), MAKEINTRESOURCEW(menuIconResource), menuIconSize, menuIconSize, icon.receive());
    return icon;
}

/// \param bits becomes the address of the first row when a bitmap is returned.
OwnedBitmap CreateTopDownBitmap(UINT width, UINT height, void*& bits, CCryptoAutoLogger& logger)
{
    BITMAPINFO description = {};
    description.bmiHeader.biSize = sizeof description.bmiHeader;
    description.bmiHeader.biWidth = static_cast<LONG>(width);
    description.bmiHeader.biHeight = -static_cast<LONG>(height);
    description.bmiHeader.biPlanes = 1;
    description.bmiHeader.biBitCount = 32;
    description.bmiHeader.biCompression = BI_RGB;

    const ScreenContext screen(GetDC(nullptr));
    if (!screen) {
        logger.WriteLog("Cannot get DC for entire screen %d", static_cast<int>(GetLastError()));
        return OwnedBitmap();
    }
    return OwnedBitmap(CreateDIBSection(screen.get(), &description, DIB_RGB_COLORS, &bits, nullptr, 0));
}

} // namespace

struct MenuPicture::Pixels {
    UINT width = 0;
    UINT height = 0;
    std::vector<std::uint32_t> values; ///< row by row from the top

    UINT bytes() const { return width * height * 4; }
};

struct MenuPicture::Decoder {
    /// \param icon loaded when it is none yet. \param complete whether the pixels are the icon's; they are otherwise clear.
    /// \return null, logged, when there is no icon or nothing to decode it with.
    static std::unique_ptr<Pixels> decode(OwnedIcon& icon, bool& complete, CCryptoAutoLogger& logger)
    {
        if (!icon)
            icon = LoadMenuIcon();
        if (!icon) {
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

    static OwnedBitmap draw(const Pixels& pixels, CCryptoAutoLogger& logger)
    {
        void* bits = nullptr;
        OwnedBitmap bitmap = CreateTopDownBitmap(pixels.width, pixels.height, bits, logger);
        if (bitmap)
            std::memcpy(bits, pixels.values.data(), pixels.bytes());
        logger.setResult(static_cast<bool>(bitmap));
        return bitmap;
    }
};

namespace {

constinit MenuPicture processMenuPicture;

} // namespace

MenuPicture::~MenuPicture()
{
    delete pixels_.load();
    const OwnedIcon undecoded(icon_.load());
}

OwnedBitmap MenuPicture::makeBitmap()
{
    CCryptoAutoLogger logger("MenuPicture::makeBitmap");
    if (const Pixels* const known = pixels_.load(std::memory_order_acquire))
        return Decoder::draw(*known, logger);

    bool complete = false;
    OwnedIcon icon(icon_.exchange(nullptr));
    std::unique_ptr<const Pixels> decoded = Decoder::decode(icon, complete, logger);
    if (!complete)
        icon.reset(icon_.exchange(icon.release()));
    if (decoded == nullptr)
        return OwnedBitmap();
    OwnedBitmap bitmap = Decoder::draw(*decoded, logger);
    // No lock is held while COM works; of threads that decode at the same time the first one's pixels are kept.
    const Pixels* none = nullptr;
    if (complete && pixels_.compare_exchange_strong(none, decoded.get(), std::memory_order_acq_rel))
        static_cast<void>(decoded.release());
    return bitmap;
}

MenuPicture& ProcessMenuPicture()
{
    return processMenuPicture;
}

} // namespace ccrypto
