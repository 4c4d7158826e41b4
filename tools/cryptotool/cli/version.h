#pragma once

#include <string>

namespace ccrypto {

/// The commit that the program was built from, "unknown" for an unpacked archive; the build writes it.
extern const char* const sourceCommit;

/// What --version prints: version, commit, and the groups of processor instructions that the library uses here.
std::string VersionText();

} // namespace ccrypto
