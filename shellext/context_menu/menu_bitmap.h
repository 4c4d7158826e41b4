#pragma once

#include "shellext/com/owned_handles.h"

#include <windows.h>

#include <atomic>

namespace ccrypto {

/// The number of the icon in the library's resources, and the size in pixels at which the menu shows it.
constexpr WORD menuIconResource = 105;
constexpr int menuIconSize = 16;

/// The picture of the menu entry: decodes the library's icon once and makes any number of bitmaps of it, from any thread.
///
/// Every icon that is loaded stays with the process, so the pixels are kept and the icon is not loaded again. A failure is not
/// kept: the next bitmap tries anew, with the icon that is already loaded.
class MenuPicture {
public:
    constexpr MenuPicture() = default;
    ~MenuPicture();
    MenuPicture(const MenuPicture&) = delete;
    MenuPicture& operator=(const MenuPicture&) = delete;

    /// A top-down bitmap of 32 bits per pixel, colours multiplied by alpha, as menus draw them. Until the icon is decoded the
    /// calling thread needs COM. \return none, logged, when the icon, the imaging component or the screen is not available; the
    /// entry then has no picture.
    [[nodiscard]] OwnedBitmap makeBitmap();

private:
    struct Pixels;
    struct Decoder;

    std::atomic<const Pixels*> pixels_ = nullptr;
    /// The icon while it is not decoded.
    std::atomic<HICON> icon_ = nullptr;
};

/// The picture that the process shares.
MenuPicture& ProcessMenuPicture();

} // namespace ccrypto
