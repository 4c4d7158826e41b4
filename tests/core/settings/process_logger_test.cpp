#include "core/base/build_date.h"
#include "core/log/log_writers.h"
#include "core/platform/clock.h"
#include "core/platform/process.h"
#include "core/settings/process_logger.h"
#include "core/settings/settings_registry.h"
#include "tests/core/settings/scratch_registry.h"
#include "tests/support/collected_log.h"
#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

using namespace ccrypto;

namespace {

using Names = std::vector<std::string>;
using Lines = std::vector<std::string>;

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
        return TextsOfFile((folder_.path() / fileName).string(), tag);
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
        CCryptoAutoLogger logger("Operation", ccrypto::LoggerMode::resultOptional);
    }
    WriteLog_G("after the end");

    const std::string version = "(ver=" + std::string(buildDate) + ")";
    std::string program;
    std::uint32_t error = 0;
    ASSERT_TRUE(platform::HostExecutablePath(program, error));
    EXPECT_EQ(texts(DatedName("")),
              (Lines{"", "---------- BEGIN " + version + " ---------- ", "Module file name: " + program.substr(0, 128),
                     "Current directory: " + platform::CurrentDirectory().substr(0, 128),
                     "Command line: " + platform::CommandLine().substr(0, 200), "Operation - IN", "Operation - OUT",
                     std::string(40, '='), "---------- END " + version + " ----------", std::string(40, '=')}));
}

TEST_F(ProcessLogger, TellsTheBuildDateAsMonthDayAndYear)
{
    std::string shape = buildDate;
    for (char& character : shape) {
        const auto byte = static_cast<unsigned char>(character);
        character = std::isdigit(byte) != 0 ? '0' : std::isupper(byte) != 0 ? 'A' : std::islower(byte) != 0 ? 'a' : character;
    }
    EXPECT_TRUE(shape == "Aaa 00 0000" || shape == "Aaa  0 0000") << buildDate;
}

TEST_F(ProcessLogger, RefusesASecondOne)
{
    set("debugLevel", "3");
    set("debugDir", directory());
    {
        const CCryptoProcessLogger process(nullptr, product, tag);
        {
            const CCryptoProcessLogger second(CollectedLog::Callback, product, "other");
        }
        WriteLog_G("still on");
    }
    Lines lines = texts(DatedName(""));
    ASSERT_GT(lines.size(), 5u);
    lines.erase(lines.begin(), lines.end() - 5);
    EXPECT_EQ(lines, (Lines{"ERROR: A second process logger (other) is refused", std::string(40, '='), "still on",
                            "---------- END (ver=" + std::string(buildDate) + ") ----------", std::string(40, '=')}));
    EXPECT_EQ(files(), Names{DatedName("")});
}

TEST_F(ProcessLogger, DoesNothingWithLevelZero)
{
    set("debugDir", directory());
    set("debugLevel", "0");
    {
        const CCryptoProcessLogger process(CollectedLog::Callback, product, tag);
        CCryptoAutoLogger logger("Operation", ccrypto::LoggerMode::resultExpected, "%d", 1);
        WriteErrorEx_G("unheard");
    }
    EXPECT_EQ(files(), Names());
}

TEST_F(ProcessLogger, NamesTheFileAsTheSettingsSay)
{
    set("debugLevel", "1");
    set("debugDir", directory());
    set("debugProcessId", "1");
    const CCryptoProcessLogger process(nullptr, product, tag);
    char ownId[32];
    std::snprintf(ownId, sizeof ownId, "_%04u", platform::CurrentProcessId());
    EXPECT_EQ(files(), (Names{DatedName(ownId)}));

    set("debugProcessId", "0");
    set("debugThreads", "1");
    CCryptoProcessLogger::ReadLogSettings(product);
    WriteLog_G("own file");
    char ownThread[32];
    std::snprintf(ownThread, sizeof ownThread, "-%04x", platform::CurrentThreadId());
    EXPECT_EQ(texts(DatedName(ownThread)), (Lines{"own file"}));

    const TemporaryDirectory other;
    set("debugThreads", "0");
    CCryptoProcessLogger::ReadLogSettings(product, other.path().string().c_str());
    WriteLog_G("moved");
    EXPECT_EQ(TextsOfFile((other.path() / DatedName("")).string(), tag), Lines{"moved"});
}

TEST_F(ProcessLogger, PrefersTheInstalledSettings)
{
    set("debugLevel", "0");
    CCryptoSettings settings(std::make_unique<CCryptoSettingsRegistry>("Company", "Other", nullptr));
    CCryptoSettings::Instance()->SetValue(element("debugLevel"), element("1"));
    CCryptoSettings::Instance()->SetValue(element("debugDir"), element(directory().c_str()));
    const CCryptoProcessLogger process(nullptr, product, tag);
    EXPECT_EQ(files(), (Names{DatedName("")}));
}

TEST_F(ProcessLogger, DoesNotUseAFolderWhosePathIsTooLong)
{
    set("debugLevel", "1");
    set("debugDir", directory() + std::string(240 - directory().size(), 'x'));
    CollectedLog log(0);
    const CCryptoProcessLogger process(CollectedLog::Callback, product, tag);
    const std::string tooLong = "ERROR: The path of the log file is longer than 255 bytes";
    const Lines lines = log.lines();
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [&](const std::string& line) { return line.ends_with(tooLong); }));
}
