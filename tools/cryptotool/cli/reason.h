#pragma once

#include <cstdint>
#include <string>

// Why something was refused, in words for the user.

namespace ccrypto {

/// Forgets earlier failures, so that LastReason() is about later ones.
void StartReason();

/// The reason that the library recorded last since StartReason. \param otherwise stands in when it recorded none, and
/// before a reason that does not say what was expected.
std::string LastReason(const char* otherwise);

/// The system's words for platform::LastError().
std::string SystemReason();

} // namespace ccrypto
