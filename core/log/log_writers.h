#pragma once

#include "core/base/c_text.h"

/// The two process-wide writers, for code that has no scoped logger of its own: everything below the logger, and fatal failures.
/// Both write one line at depth 0 when logging is on, and cost one comparison when it is off.

void WriteLog_G(const char* format, ...) CORE_PRINTF_FORMAT(1, 2);

/// The debug channel: "ERROR: " and the text.
void WriteErrorEx_G(const char* format, ...) CORE_PRINTF_FORMAT(1, 2);
