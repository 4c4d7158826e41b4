#pragma once

#include "core/platform/system_handle.h"

#include <windows.h>

namespace ccrypto::platform {

struct KernelHandleKind {
    using Value = HANDLE;
    static Value none() { return INVALID_HANDLE_VALUE; }
    /// Windows says "none" in two ways.
    static bool isNone(Value value) { return value == nullptr || value == INVALID_HANDLE_VALUE; }
    static void close(Value value) { CloseHandle(value); }
};

/// Owns one kernel handle.
using ScopedHandle = ccrypto::SystemHandle<KernelHandleKind>;

} // namespace ccrypto::platform
