#pragma once

#include "core/platform/secure_wipe.h"

#include <type_traits>

namespace ccrypto {

/// A plain value, an array of such values above all, that is wiped before its storage is released; so is every copy. It is
/// initialised as the value itself is: not at all without braces.
template <typename Value>
struct Wiped : Value {
    static_assert(std::is_trivially_copyable_v<Value>);

    ~Wiped() { platform::SecureWipe(this, sizeof *this); }
};

} // namespace ccrypto
