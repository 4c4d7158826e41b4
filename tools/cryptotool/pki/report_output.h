#pragma once

#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/pki/report.h"

#include <string>

namespace ccrypto {

/// Writes text, in one step, to where the options of the invocation say. \return exitDone, or the exit code after the reason was
/// printed.
[[nodiscard]] int WriteText(Invocation& invocation, const std::string& text);
/// The same for a report: JSON under --json, else lines.
[[nodiscard]] int WriteReport(Invocation& invocation, const Report& report);

} // namespace ccrypto
