#include "core/settings/process_logger.h"

#include "core/base/build_date.h"
#include "core/base/c_text.h"
#include "core/diagnostics/error_descriptions.h"
#include "core/diagnostics/failure.h"
#include "core/diagnostics/operation_records.h"
#include "core/platform/process.h"
#include "core/settings/log_settings.h"
#include "core/text/utf8.h"

#include <atomic>
#include <memory>
#include <string>

using namespace ccrypto;

namespace {

constexpr std::size_t maxShownPath = 128;
constexpr std::size_t maxCommandLine = 200;

constinit std::atomic<bool> oneLives{false};

} // namespace

CCryptoProcessLogger::CCryptoProcessLogger(LogCallback callback, const char* settingsName, const char* tag)
    : CCryptoAutoLogger("", ccrypto::LoggerMode::quiet), isTheOne_(!oneLives.exchange(true))
{
    if (!isTheOne_) {
        WriteErrorEx("A second process logger (%s) is refused", OrEmpty(tag));
        close();
        return;
    }
    logging::ReadSettings(callback, OrEmpty(tag), settingsName, nullptr);
    writeBegin();
}

CCryptoProcessLogger::~CCryptoProcessLogger()
{
    if (!isTheOne_)
        return;
    end();
    oneLives = false;
}

void CCryptoProcessLogger::end()
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
    ccrypto::internal::ForgetFailures();
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
        writeBeginning("Module file name", program, maxShownPath);
    else
        WriteLog("GetModuleFileName query failed: %08X", static_cast<unsigned>(error));

    const std::string directory = platform::CurrentDirectory();
    if (!directory.empty())
        writeBeginning("Current directory", directory, maxShownPath);
    writeBeginning("Command line", platform::CommandLine(), maxCommandLine);
}

void CCryptoProcessLogger::writeBeginning(const char* what, std::string_view text, std::size_t limit)
{
    const std::string_view beginning = Utf8Prefix(text, limit);
    WriteLog("%s: %.*s", what, static_cast<int>(beginning.size()), beginning.data());
}

void CCryptoProcessLogger::ReadLogSettings(const char* settingsName, const char* directory)
{
    const std::shared_ptr<LogOutput> current = logging::CurrentOutput();
    if (current != nullptr)
        logging::ReadSettings(current->settings().callback, current->settings().tag, settingsName, directory);
}
