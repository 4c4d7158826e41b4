#pragma once

namespace ccrypto::platform {

/// The folder of log files when the settings name none: "C:\" on Windows, "/var/log/" on POSIX, where an unprivileged process
/// writes no file unless it is told a folder.
extern const char* const defaultLogDirectory;

/// What ends a folder in a path of this system.
extern const char pathSeparator;

} // namespace ccrypto::platform
