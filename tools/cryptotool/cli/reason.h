#pragma once

#include <cstdint>
#include <string>

// Why something was refused, in words for the user.

namespace ccrypto {

/// Forgets what failed before, so that Reason tells of what comes now.
void StartReason();

/// The message of the library operation that failed first since StartReason, without the operation's name. `otherwise` when it gave
/// none.
std::string Reason(const char* otherwise);

/// The system's words for platform::LastError().
std::string SystemReason();

} // namespace ccrypto
