#pragma once

namespace ccrypto {

/// Both hives of this process are empty while one lives; the system's own are not touched.
class ScratchRegistry {
public:
    ScratchRegistry();
    ~ScratchRegistry();
    ScratchRegistry(const ScratchRegistry&) = delete;
    ScratchRegistry& operator=(const ScratchRegistry&) = delete;
};

} // namespace ccrypto
