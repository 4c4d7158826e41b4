#pragma once

#include "core/auto_logger.h"

/// Receives every finished line, without its line end.
using LogCallback = void (*)(const char* line);

/// The one logger that lives as long as the process uses the library: configures the log from the settings "debugLevel",
/// "debugDir", "debugProcessId", "debugProfile" and "debugThreads" and writes the BEGIN and END banners.
class CCryptoProcessLogger : public CCryptoAutoLogger {
public:
    /// \param callback may be null. \param settingsName the product name of the registry settings that are read when no settings
    /// are installed. \param tag at most 19 characters; names the log file and the mutex and stands in every line.
    CCryptoProcessLogger(LogCallback callback, const char* settingsName, const char* tag);
    ~CCryptoProcessLogger() override;

    /// Reads the log settings again, after a caller changed the directory.
    static void ReadLogSettings(const char* settingsName);
};
