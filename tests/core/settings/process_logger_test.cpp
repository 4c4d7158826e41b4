#include "core/base/build_date.h"
#include "core/diagnostics/error_descriptions.h"
#include "core/diagnostics/operation_records.h"
#include "core/log/log.h"
#include "core/log/log_writers.h"
#include "core/platform/clock.h"
#include "core/platform/file.h"
#include "core/platform/process.h"
#include "core/settings/log_settings.h"
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
#include <fstream>
#include <memory>
#include <string>
#include <utility>
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

void Set(const char* name, const std::string& value)
{
    CCryptoSettingsRegistry settings(nullptr, product, nullptr);
    ASSERT_TRUE(settings.SetValue(element(name), element(value.c_str())));
}

struct SettingsCase {
    const char* name;
    std::vector<std::pair<const char*, std::string>> settings;
    const char* directory;
    std::uint32_t level;
    bool profiling;
    bool filePerThread;
    std::string path;
};

class ProcessLogger : public testing::Test {
protected:
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
    Set("debugLevel", "3");
    Set("debugDir", directory());
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

TEST_F(ProcessLogger, ShowsTheBeginningOfALongFolder)
{
    Set("debugLevel", "1");
    Set("debugDir", directory());
    const TemporaryDirectory other;
    const std::filesystem::path deep = other.path() / std::string(120, 'a') / std::string(20, 'b');
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::create_directories(deep);
    std::filesystem::current_path(deep);
    {
        const CCryptoProcessLogger process(nullptr, product, tag);
    }
    const std::string shown = "Current directory: " + platform::CurrentDirectory().substr(0, 128);
    std::filesystem::current_path(before);
    EXPECT_EQ(texts(DatedName(""))[3], shown);
}

TEST_F(ProcessLogger, LeavesNothingAtItsEnd)
{
    const TemporaryDirectory folder;
    const std::string descriptions = folder / u8"errors.xml";
    std::ofstream(descriptions) << "<settings><ErrorCode_5>described</ErrorCode_5></settings>";
    Set("debugLevel", "1");
    Set("debugDir", directory());
    {
        const CCryptoProcessLogger process(nullptr, product, tag);
        ASSERT_TRUE(CCryptoErrorHandler::LoadXmlErrorsDesriptions(CCryptoString(descriptions.c_str())));
        EXPECT_EQ(ErrorDescription(5), "described");
        EXPECT_GT(logging::CountedThreads(), 0u);
    }
    EXPECT_EQ(ErrorDescription(5), "");
    EXPECT_EQ(logging::CountedThreads(), 0u);
}

TEST_F(ProcessLogger, ShowsTheBuildDateAsMonthDayAndYear)
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
    Set("debugLevel", "3");
    Set("debugDir", directory());
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
    Set("debugDir", directory());
    Set("debugLevel", "0");
    {
        const CCryptoProcessLogger process(CollectedLog::Callback, product, tag);
        CCryptoAutoLogger logger("Operation", ccrypto::LoggerMode::resultExpected, "%d", 1);
        WriteErrorEx_G("unheard");
    }
    EXPECT_EQ(files(), Names());
}

TEST_F(ProcessLogger, NamesTheFileAsTheSettingsSay)
{
    Set("debugLevel", "1");
    Set("debugDir", directory());
    Set("debugProcessId", "1");
    const CCryptoProcessLogger process(nullptr, product, tag);
    char ownId[32];
    std::snprintf(ownId, sizeof ownId, "_%04u", platform::CurrentProcessId());
    EXPECT_EQ(files(), (Names{DatedName(ownId)}));

    Set("debugProcessId", "0");
    Set("debugThreads", "1");
    CCryptoProcessLogger::ReadLogSettings(product);
    WriteLog_G("own file");
    char ownThread[32];
    std::snprintf(ownThread, sizeof ownThread, "-%04x", platform::CurrentThreadId());
    EXPECT_EQ(texts(DatedName(ownThread)), (Lines{"own file"}));

    const TemporaryDirectory other;
    Set("debugThreads", "0");
    CCryptoProcessLogger::ReadLogSettings(product, other.path().string().c_str());
    WriteLog_G("moved");
    EXPECT_EQ(TextsOfFile((other.path() / DatedName("")).string(), tag), Lines{"moved"});
}

TEST_F(ProcessLogger, PrefersTheInstalledSettings)
{
    Set("debugLevel", "0");
    CCryptoSettings settings(std::make_unique<CCryptoSettingsRegistry>("Company", "Other", nullptr));
    ASSERT_TRUE(CCryptoSettings::Instance()->SetValue(element("debugLevel"), element("1")));
    ASSERT_TRUE(CCryptoSettings::Instance()->SetValue(element("debugDir"), element(directory().c_str())));
    const CCryptoProcessLogger process(nullptr, product, tag);
    EXPECT_EQ(files(), (Names{DatedName("")}));
}

TEST(LogSettings, AreReadWithTheirDefaultsAndLimits)
{
    const std::string fallback = platform::defaultLogDirectory + DatedName("");
    const std::string separator(1, platform::pathSeparator);
    const std::string fits = std::string(255 - 1 - DatedName("").size(), 'x');
    char ownId[32];
    std::snprintf(ownId, sizeof ownId, "_%04u", platform::CurrentProcessId());
    const SettingsCase cases[] = {
        {"none: the level in force stays", {}, nullptr, 7, false, false, fallback},
        {"off", {{"debugLevel", "0"}}, nullptr, 0, false, false, fallback},
        {"level", {{"debugLevel", "2"}}, nullptr, 2, false, false, fallback},
        {"empty folder", {{"debugDir", ""}}, nullptr, 7, false, false, fallback},
        {"folder", {{"debugDir", "d"}}, nullptr, 7, false, false, "d" + separator + DatedName("")},
        {"folder with separator", {{"debugDir", "d" + separator}}, nullptr, 7, false, false, "d" + separator + DatedName("")},
        {"the caller's folder", {{"debugDir", "d"}}, "e", 7, false, false, "e" + separator + DatedName("")},
        {"the caller's empty folder", {{"debugDir", "d"}}, "", 7, false, false, fallback},
        {"longest path", {{"debugDir", fits}}, nullptr, 7, false, false, fits + separator + DatedName("")},
        {"path too long", {{"debugDir", fits + "x"}}, nullptr, 7, false, false, fallback},
        {"profile", {{"debugProfile", "1"}}, nullptr, 7, true, false, fallback},
        {"profile, negative", {{"debugProfile", "-1"}}, nullptr, 7, true, false, fallback},
        {"threads", {{"debugThreads", "2"}}, nullptr, 7, false, true, fallback},
        {"no number", {{"debugThreads", "x"}, {"debugProfile", "x"}, {"debugProcessId", "x"}}, nullptr, 7, false, false, fallback},
        {"process", {{"debugProcessId", "2"}}, nullptr, 7, false, false, platform::defaultLogDirectory + DatedName(ownId)},
    };
    for (const SettingsCase& each : cases) {
        SCOPED_TRACE(each.name);
        const ScratchRegistry empty;
        for (const auto& [name, value] : each.settings)
            Set(name, value);
        logging::Configure(7, false, nullptr);
        logging::ReadSettings(nullptr, tag, product, each.directory);
        EXPECT_EQ(logging::Level(), each.level);
        EXPECT_EQ(logging::Profiling(), each.profiling);
        const std::shared_ptr<LogOutput> output = logging::CurrentOutput();
        EXPECT_EQ(output->settings().filePerThread, each.filePerThread);
        EXPECT_EQ(output->settings().path, each.path);
        logging::Configure(0, false, nullptr);
    }
    const ScratchRegistry empty;
    logging::ReadSettings(nullptr, "a tag of twenty byte", product, nullptr);
    EXPECT_EQ(logging::CurrentOutput()->settings().tag, "a tag of twenty byt");
    EXPECT_TRUE(logging::CurrentOutput()->settings().path.find("a tag of twenty byt_") != std::string::npos);
    logging::Configure(0, false, nullptr);
}

TEST_F(ProcessLogger, DoesNotUseAFolderWhosePathIsTooLong)
{
    Set("debugLevel", "1");
    Set("debugDir", directory() + std::string(240 - directory().size(), 'x'));
    CollectedLog log(0);
    const CCryptoProcessLogger process(CollectedLog::Callback, product, tag);
    const std::string tooLong = "ERROR: The path of the log file is longer than 255 bytes";
    const Lines lines = log.lines();
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [&](const std::string& line) { return line.ends_with(tooLong); }));
}
