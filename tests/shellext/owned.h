#pragma once

#include <windows.h>

#include <memory>
#include <type_traits>

struct Releaser {
    template <typename Object>
    void operator()(Object* object) const
    {
        object->Release();
    }
};

/// An object of a known class, of which the test owns the first reference.
template <typename Object>
using Owned = std::unique_ptr<Object, Releaser>;

struct MenuDeleter {
    void operator()(HMENU menu) const { DestroyMenu(menu); }
};

using OwnedMenu = std::unique_ptr<std::remove_pointer_t<HMENU>, MenuDeleter>;
