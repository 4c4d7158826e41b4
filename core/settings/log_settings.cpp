#include "core/settings/log_settings.h"

#include "core/log/log.h"
#include "core/log/log_line.h"
#include "core/log/log_writers.h"
#include "core/platform/clock.h"
#include "core/platform/file.h"
#include "core/platform/process.h"
#include "core/settings/settings_registry.h"

#include <cstdio>
#include <memory>
#include <string>
#include <utility>

namespace ccrypto::logging {

namespace {

constexpr std::size_t maxLogPath = 255;

/// The values, as far as there are settings to ask.
class LogSettingsReader {
public:
    explicit LogSettingsReader(const char* settingsName) : settings_(CCryptoSettings::InstanceOrNull())
    {
        if (settings_ == nullptr && settingsName != nullptr) {
            temporary_ = std::make_unique<CCryptoSettingsRegistry>(nullptr, settingsName, nullptr);
            settings_ = temporary_.get();
        }
    }

    std::uint32_t integer(const char* name, std::uint32_t defaultValue) const
    {
        return settings_ != nullptr ? settings_->GetIntegerOrDefault(name, defaultValue) : defaultValue;
    }

    std::string text(const char* name) const
    {
        return settings_ != nullptr ? std::string(settings_->GetString(name).view()) : std::string();
    }

private:
    std::unique_ptr<ICryptoSettings> temporary_;
    ICryptoSettings* settings_;
};

std::string FileName(std::string_view tag, bool withProcessId)
{
    const platform::CalendarTime today = platform::LocalNow();
    char date[64];
    std::snprintf(date, sizeof date, "_%04d%02d%02d", today.year, today.month, today.day);
    std::string name = std::string(tag.substr(0, maxLogTag)) + date;
    if (withProcessId) {
        std::snprintf(date, sizeof date, "_%04u", static_cast<unsigned>(platform::CurrentProcessId()));
        name += date;
    }
    return name + ".LOG";
}

std::string InDirectory(std::string directory, const std::string& fileName)
{
    if (directory.empty())
        directory = platform::defaultLogDirectory;
    if (directory.back() != platform::pathSeparator)
        directory += platform::pathSeparator;
    return directory + fileName;
}

} // namespace

void ReadSettings(LogCallback callback, std::string_view tag, const char* settingsName, const char* directory)
{
    const LogSettingsReader reader(settingsName);
    const std::uint32_t level = reader.integer("debugLevel", Level());
    const std::string wanted = directory != nullptr ? directory : reader.text("debugDir");
    const std::string fileName = FileName(tag, reader.integer("debugProcessId", 0) > 0);
    const bool profiling = reader.integer("debugProfile", 0) != 0;
    const bool filePerThread = reader.integer("debugThreads", 0) != 0;

    std::string path = InDirectory(wanted, fileName);
    const bool tooLong = path.size() > maxLogPath;
    if (tooLong)
        path = InDirectory({}, fileName);

    auto output = std::make_shared<LogOutput>(
        LogOutput::Settings{.callback = callback, .tag = std::string(tag), .path = path, .filePerThread = filePerThread});
    if (level != 0)
        output->openMutex();
    Configure(level, profiling, std::move(output));
    if (tooLong)
        WriteErrorEx_G("The path of the log file is longer than %u bytes", static_cast<unsigned>(maxLogPath));
}

} // namespace ccrypto::logging
