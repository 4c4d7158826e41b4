#include "core/build_date.h"
#include "core/log_writers.h"
#include "core/platform/clock.h"
#include "core/platform/process.h"
#include "core/process_logger.h"
#include "core/settings_registry.h"
#include "tests/core/collected_log.h"
#include "tests/core/scratch_registry.h"
#include "tests/core/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <regex>
#include <string>
#include <vector>

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

namespace {

constexpr const char* product = "Logging Tests";
constexpr const char* tag = "loggingtests";

std::string DatedName(const char* suffix)
{
    const platform::CalendarTime today = platform::LocalNow();
    char date[64];
    std::snprintf(date, sizeof date, "loggingtests_%04d%02d%02d%s.LOG", today.year, today.month, today.day, suffix);
    return date;
}

class ProcessLogger : public testing::Test {
protected:
    void set(const char* name, const std::string& value)
    {
        CCryptoSettingsRegistry settings(nullptr, product, nullptr);
        ASSERT_TRUE(settings.SetValue(element(name), element(value.c_str())));
    }

    /// Without a separator at the end.
    std::string directory() const { return folder_.path().string(); }

    std::vector<std::string> texts(const std::string& fileName) const
    {
        std::vector<std::string> texts;
        for (const std::string& line : LinesOfFile((folder_.path() / fileName).string()))
            texts.push_back(TextOfLine(line, tag));
        return texts;
    }

    std::vector<std::string> files() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
            names.push_back(entry.path().filename().string());
        return names;
    }

private:
    ScratchRegistry registry_;
    TemporaryDirectory folder_;
};

} // namespace

TEST_F(ProcessLogger, FramesTheLogInBanners)
{
    set("debugLevel", "3");
    set("debugDir", directory());
    {
        const CCryptoProcessLogger process(nullptr, product, tag);
        CCryptoAutoLogger logger("Operation", 1);
    }
    WriteLog_G("after the end");

    const std::string version = "(ver=" + std::string(buildDate) + ")";
    std::string program;
    std::uint32_t error = 0;
    ASSERT_TRUE(platform::HostExecutablePath(program, error));
    EXPECT_THAT(texts(DatedName("")),
                ElementsAre("", "---------- BEGIN " + version + " ---------- ", "Module file name: " + program.substr(0, 128),
                            "Current directory: " + platform::CurrentDirectory().substr(0, 128),
                            "Command line: " + platform::CommandLine().substr(0, 200), "Operation - IN", "Operation - OUT",
                            std::string(40, '='), "---------- END " + version + " ----------", std::string(40, '=')));
    EXPECT_TRUE(std::regex_match(buildDate, std::regex("[A-Z][a-z]{2} [ 1-3][0-9] [0-9]{4}"))) << buildDate;
}

TEST_F(ProcessLogger, DoesNothingWithLevelZero)
{
    set("debugDir", directory());
    set("debugLevel", "0");
    {
        const CCryptoProcessLogger process(CollectedLog::Callback, product, tag);
        CCryptoAutoLogger logger("Operation", 0, "%d", 1);
        WriteErrorEx_G("unheard");
    }
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(ProcessLogger, NamesTheFileAsTheSettingsSay)
{
    set("debugLevel", "1");
    set("debugDir", directory());
    set("debugProcessId", "1");
    const CCryptoProcessLogger process(nullptr, product, tag);
    char ownId[32];
    std::snprintf(ownId, sizeof ownId, "_%04u", platform::CurrentProcessId());
    EXPECT_THAT(files(), ElementsAre(DatedName(ownId)));

    set("debugProcessId", "0");
    set("debugThreads", "1");
    CCryptoProcessLogger::ReadLogSettings(product);
    WriteLog_G("own file");
    char ownThread[32];
    std::snprintf(ownThread, sizeof ownThread, "-%04x", platform::CurrentThreadId());
    EXPECT_THAT(texts(DatedName(ownThread)), ElementsAre("own file"));

    const TemporaryDirectory other;
    set("debugThreads", "0");
    CCryptoProcessLogger::ReadLogSettings(product, other.path().string().c_str());
    WriteLog_G("moved");
    EXPECT_THAT(LinesOfFile((other.path() / DatedName("")).string()), ElementsAre(EndsWith(" moved")));
}

TEST_F(ProcessLogger, PrefersTheInstalledSettings)
{
    set("debugLevel", "0");
    CCryptoSettings settings(std::make_unique<CCryptoSettingsRegistry>("Company", "Other", nullptr));
    CCryptoSettings::Instance()->SetValue(element("debugLevel"), element("1"));
    CCryptoSettings::Instance()->SetValue(element("debugDir"), element(directory().c_str()));
    const CCryptoProcessLogger process(nullptr, product, tag);
    EXPECT_THAT(files(), ElementsAre(DatedName("")));
}

TEST_F(ProcessLogger, DoesNotUseAFolderWhosePathIsTooLong)
{
    set("debugLevel", "1");
    set("debugDir", directory() + std::string(240 - directory().size(), 'x'));
    CollectedLog log(0);
    const CCryptoProcessLogger process(CollectedLog::Callback, product, tag);
    EXPECT_THAT(log.lines(), Contains(EndsWith("ERROR: The path of the log file is longer than 255 bytes")));
}
