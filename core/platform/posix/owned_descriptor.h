#pragma once

#include "core/platform/system_handle.h"

#include <unistd.h>

namespace ccrypto::platform {

struct DescriptorKind {
    using Value = int;
    static Value none() { return -1; }
    static void close(Value value) { ::close(value); }
};

/// Owns one file descriptor.
using OwnedDescriptor = ccrypto::SystemHandle<DescriptorKind>;

} // namespace ccrypto::platform
