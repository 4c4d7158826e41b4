#pragma once

#include "core/diagnostics/auto_logger.h"
#include "core/log/log_output.h"

/// The one logger that lives as long as the process uses the library: configures the log from the settings "debugLevel",
/// "debugDir", "debugProcessId", "debugProfile" and "debugThreads" and writes the BEGIN and END banners. Loggers of other threads
/// have closed before it is destroyed. While one lives, a further one does nothing but say so in the log.
class CCryptoProcessLogger : public CCryptoAutoLogger {
public:
    /// \param callback may be null. \param settingsName the product name of the registry settings that are read when no settings
    /// are installed. \param tag at most 19 characters; names the log file and the mutex and stands in every line.
    CCryptoProcessLogger(ccrypto::LogCallback callback, const char* settingsName, const char* tag);
    /// Turns the log off after the END banner and frees the mutex, the depth counters and the recorded failures, so that nothing of
    /// them stays in a host that goes on without the library.
    ~CCryptoProcessLogger() override;

    /// Reads the log settings again. \param directory takes the place of "debugDir" when it is not null.
    static void ReadLogSettings(const char* settingsName, const char* directory = nullptr);

private:
    void end();
    void writeBegin();
    /// One line of `what` and at most `limit` bytes of the text.
    void writeBeginning(const char* what, std::string_view text, std::size_t limit);

    bool isTheOne_;
};
