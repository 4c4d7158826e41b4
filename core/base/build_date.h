#pragma once

namespace ccrypto {

/// The date of the sources in the form "May 25 2021": of SOURCE_DATE_EPOCH where that is set when the build is configured, else of
/// the last commit, else of the release. It does not depend on the clock, so that equal sources make equal files.
extern const char* const buildDate;

} // namespace ccrypto
