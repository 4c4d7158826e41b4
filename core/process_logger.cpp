#include "core/process_logger.h"

#include "core/build_date.h"
#include "core/error_descriptions.h"
#include "core/log_nesting.h"
#include "core/log_settings.h"
#include "core/platform/process.h"

#include <memory>
#include <string>

CCryptoProcessLogger::CCryptoProcessLogger(LogCallback callback, const char* settingsName, const char* tag)
    : CCryptoAutoLogger("", 3)
{
    logging::ReadSettings(callback, tag != nullptr ? tag : "", settingsName, nullptr);
    writeBegin();
}

CCryptoProcessLogger::~CCryptoProcessLogger()
{
    // A thread that was ended in the middle of a line keeps its locks, and waiting for them would keep the host from ending.
    if (platform::ProcessIsEnding()) {
        logging::TurnOff();
        abandon();
        return;
    }
    WriteLog("---------- END (ver=%s) ----------", buildDate);
    close();
    logging::Configure(0, false, nullptr);
    logging::ForgetNesting();
    ForgetErrorDescriptions();
    ClearLastErrorText();
}

void CCryptoProcessLogger::writeBegin()
{
    if (logging::Level() == 0)
        return;
    WriteLog("%s", "");
    WriteLog("---------- BEGIN (ver=%s) ---------- ", buildDate);

    std::string program;
    std::uint32_t error = 0;
    if (platform::HostExecutablePath(program, error))
        WriteLog("Module file name: %.128s", program.c_str());
    else
        WriteLog("GetModuleFileName query failed: %08X", static_cast<unsigned>(error));

    const std::string directory = platform::CurrentDirectory();
    if (!directory.empty())
        WriteLog("Current directory: %.128s", directory.c_str());
    WriteLog("Command line: %.200s", platform::CommandLine().c_str());
}

void CCryptoProcessLogger::ReadLogSettings(const char* settingsName, const char* directory)
{
    const std::shared_ptr<LogOutput> current = logging::CurrentOutput();
    if (current != nullptr)
        logging::ReadSettings(current->settings().callback, current->settings().tag, settingsName, directory);
}
