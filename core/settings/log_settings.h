#pragma once

#include "core/log/log_output.h"

#include <string_view>

namespace ccrypto::logging {

/// Configures the log from the installed settings or, when there are none, from the registry settings of the product
/// `settingsName`:
///
/// | setting          | meaning                                                                                     |
/// |------------------|---------------------------------------------------------------------------------------------|
/// | "debugLevel"     | operations nested less deep than this are shown; 0 is off; as it was when missing           |
/// | "debugDir"       | the folder of the log files; "C:\" ("/var/log/" on POSIX) when missing                      |
/// | "debugProcessId" | above 0 the process id in decimal is a part of the file's name                              |
/// | "debugProfile"   | not 0: lines give elapsed times                                                             |
/// | "debugThreads"   | not 0: one file a thread                                                                    |
///
/// The file is "%s_%04d%02d%02d.LOG" of tag and today's date; a process that runs past midnight stays with it. A path beyond 255
/// bytes is not used: the file then lies in the folder that a missing "debugDir" gives.
/// \param settingsName may be null. \param directory when not null, takes the place of "debugDir".
void ReadSettings(LogCallback callback, std::string_view tag, const char* settingsName, const char* directory);

} // namespace ccrypto::logging
