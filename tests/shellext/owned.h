#pragma once

#include "shellext/com/owned_handles.h"

#include <memory>

namespace ccrypto {

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

using ccrypto::OwnedMenu;

} // namespace ccrypto
