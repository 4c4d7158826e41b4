#pragma once

#include <windows.h>

#include <memory>
#include <type_traits>

/// The number of the icon in the library's resources, and the size in pixels at which the menu shows it.
constexpr WORD menuIconResource = 105;
constexpr int menuIconSize = 16;

struct GdiObjectDeleter {
    void operator()(void* object) const { DeleteObject(object); }
};

using BitmapOwner = std::unique_ptr<std::remove_pointer_t<HBITMAP>, GdiObjectDeleter>;

/// The menu icon as a top-down bitmap of 32 bits per pixel with straight alpha. Needs COM on the calling thread.
/// \return null, logged, when the icon or the imaging component is not to be had; the entry then goes without a picture.
BitmapOwner MakeMenuBitmap();
