#pragma once

#include <cstdint>

namespace ccrypto {

/// What pipes and GUI client ask of the logon session they run in. One table serves the process; a test puts answers of its own in
/// it before it uses a pipe, and no thread changes it while another uses one.
struct Session {
    /// The number of the caller's logon session: the terminal services' answer, or else the one of this process, or
    /// else 0.
    std::uint32_t (*number)();
    /// Whether a desktop receives the user's input; a service has none.
    bool (*hasInputDesktop)();
    /// Waits between two attempts to have the user's attention.
    void (*pause)(std::uint32_t milliseconds);
    /// How long a client waits for a busy server, in milliseconds.
    std::uint32_t busyTimeout;
};

/// The table; answered by Windows until something is replaced.
Session& CurrentSession();

} // namespace ccrypto
