#include "core/diagnostics/auto_logger.h"
#include "core/diagnostics/failure.h"
#include "core/diagnostics/operation_records.h"
#include "core/log/log.h"
#include "core/log/log_line.h"
#include "core/log/log_writers.h"
#include "core/platform/named_mutex.h"
#include "core/platform/process.h"
#include "tests/support/collected_log.h"
#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <functional>
#include <future>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <vector>

using namespace ccrypto;

namespace {

using Mode = ccrypto::LoggerMode;
using Status = ResultStatus;
using Lines = std::vector<std::string>;

const std::string outerRule(40, '=');
const std::string innerRule = "-" + std::string(40, '-');

std::string Ids()
{
    char ids[32];
    std::snprintf(ids, sizeof ids, "%04X %04X ", platform::CurrentProcessId(), platform::CurrentThreadId());
    return ids;
}

std::size_t DepthOfNextOperation(const CollectedLog& log)
{
    log.setLevel(1000);
    const CCryptoAutoLogger logger("", Mode::resultOptional);
    return log.texts().back().find(' ');
}

/// The line with `shown` for every digit of its first `length` characters.
std::string Masked(std::string line, std::size_t length, char shown)
{
    const auto end = line.begin() + static_cast<std::ptrdiff_t>(std::min(length, line.size()));
    std::replace_if(
        line.begin(), end, [](unsigned char character) { return std::isdigit(character) != 0; }, shown);
    return line;
}

} // namespace

TEST(LogLine, HoldsTimeIdsTagIndentationAndText)
{
    CollectedLog log(1);
    WriteLog_G("%s is %u", "answer", 42u);
    WriteErrorEx_G("%08X", 5u);
    log.setLevel(0);
    WriteLog_G("off");

    const std::string time = "0000-00-00 00:00:00:000 ";
    Lines lines;
    for (const std::string& line : log.lines())
        lines.push_back(Masked(line, time.size(), '0'));
    EXPECT_EQ(lines, (Lines{time + Ids() + "collected answer is 42", time + Ids() + "collected ERROR: 00000005"}));
}

TEST(LogLine, IsNeverForgedByItsText)
{
    CollectedLog log(1);
    WriteLog_G("a.pdf\r\n2026-11-22 forged\x1b[2J\x7f\ttab \xC2\x85 \xE2\x80\xA8 r\xC3\xA4k\xC3\xA4 C:\\new");
    EXPECT_EQ(log.texts(), (Lines{"a.pdf\\r\\n2026-11-22 forged\\x1b[2J\\x7f\ttab \\u0085 \\u2028 r\xC3\xA4k\xC3\xA4 C:\\new"}));
}

TEST(LogLine, EndsAtTheLimitOfItsText)
{
    const LogLineHead head{.timingPrefix = {}, .tag = "t", .depth = 0, .profiling = false};
    LogLine cut(head, std::string(1024 + 500, '\x01'));
    LogLine whole(head, std::string(1024, '\x01'));
    EXPECT_TRUE(std::string_view(whole.c_str()).ends_with("\\x01"));
    EXPECT_EQ(cut.withLineEnd().size(), whole.withLineEnd().size());
}

struct ExitCase {
    const char* name;
    Mode mode;
    const char* arguments;
    std::optional<Status> status;
    const char* message;
    std::vector<std::string> texts;
};

class ExitOfLogger : public testing::TestWithParam<ExitCase> {};

TEST_P(ExitOfLogger, FollowsModeAndStatus)
{
    const ExitCase& exit = GetParam();
    CollectedLog log(5);
    {
        CCryptoAutoLogger logger("A::B", exit.mode, exit.arguments != nullptr ? "%s" : nullptr, exit.arguments);
        if (exit.status && exit.message != nullptr) {
            EXPECT_EQ(logger.setRetValue(*exit.status, 7, "%s", exit.message), 7);
        } else if (exit.status) {
            EXPECT_EQ(logger.setRetValue(*exit.status, 7), 7);
        }
    }
    std::vector<std::string> expected = exit.texts;
    expected.push_back(outerRule);
    EXPECT_EQ(log.texts(), expected);
}

const ExitCase exitCases[] = {
    {"forgotten result", Mode::resultExpected, nullptr, {}, nullptr, {"A::B - IN", "A::B - OUT WITH WARNING"}},
    {"no result asked for", Mode::resultOptional, nullptr, {}, nullptr, {"A::B - IN", "A::B - OUT"}},
    {"none", Mode::resultExpected, nullptr, Status::none, "unused", {"A::B - IN", "A::B - OUT"}},
    {"info", Mode::resultExpected, nullptr, Status::info, "x", {"A::B - IN", "A::B - OUT", "INFO: x"}},
    {"warning", Mode::resultOptional, nullptr, Status::warning, "x", {"A::B - IN", "A::B - OUT WITH WARNING", "WARNING: x"}},
    {"error", Mode::resultExpected, nullptr, Status::error, "x", {"A::B - IN", "A::B - OUT WITH ERROR", "ERROR: x"}},
    {"arguments come first in the message",
     Mode::resultOptional,
     "c",
     Status::error,
     "x",
     {"A::B(c) - IN", "A::B - OUT WITH ERROR", "ERROR: c x"}},
    {"no status", Mode::resultExpected, nullptr, Status{4}, "unused", {"A::B - IN", "A::B- OUT"}},
    {"negative status", Mode::quiet, nullptr, Status{-1}, nullptr, {"A::B- OUT"}},
    {"quiet, forgotten", Mode::quietResultExpected, "c", {}, nullptr, {"A::B(c) :  - WARNING"}},
    {"quiet, no result asked for", Mode::quiet, nullptr, {}, nullptr, {"A::B - OK"}},
    {"quiet message", Mode::quietResultExpected, "c", Status::info, "done", {"A::B(c) : done"}},
    {"quiet error without text", Mode::quiet, nullptr, Status::error, nullptr, {"A::B - ERROR"}},
};

INSTANTIATE_TEST_SUITE_P(Modes, ExitOfLogger, testing::ValuesIn(exitCases), [](const testing::TestParamInfo<ExitCase>& exitCase) {
    std::string name = exitCase.param.name;
    std::erase_if(name, [](char character) { return std::isalnum(static_cast<unsigned char>(character)) == 0; });
    return name;
});

TEST(AutoLogger, IndentsWhatIsNestedAndRulesOffTheOuterTwo)
{
    CollectedLog log(5);
    {
        CCryptoAutoLogger outer("Outer", Mode::resultOptional);
        {
            CCryptoAutoLogger middle("Middle", Mode::resultOptional);
            CCryptoAutoLogger inner("Inner", Mode::resultOptional);
            inner.WriteLog("note");
            inner.WriteError("%s", "bad");
            inner.WriteErrorEx("worse");
        }
        std::thread([] { CCryptoAutoLogger other("OtherThread", Mode::quiet); }).join();
    }
    EXPECT_EQ(log.texts(),
              (Lines{"Outer - IN", "-Middle - IN", "--Inner - IN", "--note", "--ERROR in Inner: bad", "--ERROR: worse",
                     "--Inner - OUT", "-Middle - OUT", innerRule, "OtherThread - OK", outerRule, "Outer - OUT", outerRule}));
}

TEST(AutoLogger, CountsWhatItDoesNotShow)
{
    CollectedLog log(2);
    {
        CCryptoAutoLogger first("0", Mode::resultOptional);
        CCryptoAutoLogger second("1", Mode::resultOptional);
        log.clear();
        {
            CCryptoAutoLogger third("2");
            CCryptoAutoLogger fourth("3", Mode::resultExpected, "%d", 1);
            third.WriteLog("hidden");
            fourth.WriteError("hidden");
            fourth.WriteErrorEx("hidden");
            fourth.WriteBytes(std::vector<std::uint8_t>(40), false);
            EXPECT_EQ(log.texts(), Lines());
        }
        EXPECT_EQ(log.texts(), Lines());
        second.WriteLog("shown");
        EXPECT_EQ(log.texts(), (Lines{"-shown"}));
    }
    EXPECT_EQ(DepthOfNextOperation(log), 0u);
}

TEST(AutoLogger, KeepsTheCountWhenTheLevelChangesInBetween)
{
    CollectedLog log(0);
    {
        CCryptoAutoLogger uncounted("uncounted");
        EXPECT_EQ(uncounted.status(), Status::none);
        log.setLevel(9);
        CCryptoAutoLogger counted("counted", Mode::resultOptional);
        log.setLevel(0);
    }
    log.setLevel(9);
    {
        auto uncounted = std::make_unique<CCryptoAutoLogger>("counted", Mode::resultOptional);
        log.setLevel(0);
        CCryptoAutoLogger inner("inner", Mode::resultOptional);
        log.setLevel(9);
        uncounted.reset();
    }
    EXPECT_EQ(DepthOfNextOperation(log), 0u);
    log.clear();

    std::vector<std::unique_ptr<CCryptoAutoLogger>> nested;
    for (int depth = 0; depth <= 40; ++depth)
        nested.push_back(std::make_unique<CCryptoAutoLogger>("n", Mode::quiet));
    log.setLevel(41);
    nested.back()->WriteLog("deep");
    EXPECT_EQ(log.texts(), (Lines{std::string(30, '-') + "deep"}));
    while (!nested.empty())
        nested.pop_back();
    EXPECT_EQ(DepthOfNextOperation(log), 0u);
}

TEST(Nesting, KeepsNoCountersOfThreadsThatAreGone)
{
    CollectedLog log(5);
    const CCryptoAutoLogger outer("", Mode::quiet);
    for (int index = 0; index < 300; ++index)
        std::thread([] { CCryptoAutoLogger logger("", Mode::quiet); }).join();
    EXPECT_LE(logging::CountedThreads(), 64u);
    EXPECT_EQ(DepthOfNextOperation(log), 1u);
}

TEST(Nesting, IsCountedTo255)
{
    for (std::uint32_t depth = 0; depth < 300; ++depth)
        EXPECT_EQ(logging::EnterOperation(), std::min(depth, 255u));
    for (std::uint32_t depth = 0; depth < 300; ++depth)
        logging::LeaveOperation();
    EXPECT_EQ(logging::EnterOperation(), 0u);
    logging::LeaveOperation();
}

TEST(Nesting, StartsAgainAfterAThreadEndedByForce)
{
    for (const bool ended : {false, true}) {
        CCryptoAutoLogger("Failing", Mode::resultOptional).fail(false, "reason");
        EXPECT_EQ(logging::EnterOperation(), 0u);
        EXPECT_EQ(logging::EndByForce(platform::CurrentThreadId(), [&] { return ended; }), ended);
        EXPECT_EQ(logging::EnterOperation(), ended ? 0u : 1u);
        EXPECT_EQ(ccrypto::LastFailure().has_value(), !ended);
        logging::LeaveOperation();
        logging::LeaveOperation();
    }
}

struct LimitCase {
    const char* name;
    std::size_t longest;
    std::function<void(const std::string&)> write;
    std::string prefix;
    std::string replacement;
};

TEST(LongTexts, AreReplacedBeyondTheirLimit)
{
    const std::string name(100, 'n');
    const LimitCase cases[] = {
        {"WriteLog_G", 1023, [](const std::string& text) { WriteLog_G("%s", text.c_str()); }, "",
         "CCryptoAutoLogger::WriteLog_G: Very log message that is not displayed."},
        {"WriteErrorEx_G", 1016, [](const std::string& text) { WriteErrorEx_G("%s", text.c_str()); },
         "ERROR: ", "CCryptoAutoLogger::WriteErrorEx_G: Very log message that is not displayed."},
        {"WriteLog", 1023, [](const std::string& text) { CCryptoAutoLogger("", Mode::quiet).WriteLog("%s", text.c_str()); }, "",
         "CCryptoAutoLogger::WriteLog: Very log message that is not displayed."},
        {"WriteError", 910,
         [&](const std::string& text) { CCryptoAutoLogger(name.c_str(), Mode::quiet).WriteError("%s", text.c_str()); },
         "ERROR in " + name + ": ", "CCryptoAutoLogger::WriteError: Very log message that is not displayed."},
        {"WriteErrorEx", 1016, [](const std::string& text) { CCryptoAutoLogger("", Mode::quiet).WriteErrorEx("%s", text.c_str()); },
         "ERROR: ", "CCryptoAutoLogger::WriteErrorEx: Very log message that is not displayed.,"},
    };
    for (const LimitCase& limit : cases) {
        SCOPED_TRACE(limit.name);
        CollectedLog log(1);
        const std::string fitting(limit.longest, 't');
        limit.write(fitting);
        EXPECT_EQ(log.texts().front(), limit.prefix + fitting);
        log.clear();
        limit.write(fitting + "t");
        EXPECT_EQ(log.texts().front(), limit.replacement);
    }
}

TEST(LongTexts, OfArgumentsAndResultsHaveTextsOfTheirOwn)
{
    CollectedLog log(1);
    const std::string fitting(1023, 't');
    {
        CCryptoAutoLogger logger("n", Mode::resultOptional, "%s", (fitting + "t").c_str());
        EXPECT_EQ(
            logger.message(),
            "00:00:00 CCryptoAutoLogger::CCryptoAutoLogger big log message. It will not be displayed. Please check your code.");
    }
    CCryptoAutoLogger logger("n", Mode::quiet);
    logger.warn(0, "%s", fitting.c_str());
    EXPECT_EQ(logger.message().view(), fitting);
    logger.fail(0, "%s", (fitting + "t").c_str());
    EXPECT_EQ(logger.message().view(), fitting + " 00:00:00 CCryptoAutoLogger::setRetValue Very big log message. It will not be "
                                                 "displayed. Please check your code.");
}

TEST(LongTexts, OfMessagesAtExitAreCut)
{
    CollectedLog log(1);
    for (const std::size_t length : {1010u, 1011u, 2000u}) {
        log.clear();
        {
            CCryptoAutoLogger logger("", Mode::resultOptional);
            logger.setWarning(CCryptoString(std::string_view(std::string(length, 'm'))));
        }
        EXPECT_EQ(log.texts()[1], "WARNING: " + std::string(std::min<std::size_t>(length, 1011), 'm'));
    }
}

TEST(Dump, HasRowsOf32BytesAndAShorterLastRow)
{
    std::vector<std::uint8_t> bytes;
    for (unsigned value = 0x10; value < 0x10 + 40; ++value)
        bytes.push_back(static_cast<std::uint8_t>(value));
    bytes[32] = 'Z';
    bytes[33] = '[';
    bytes[34] = 'z';
    bytes[35] = '{';
    CollectedLog log(2);
    {
        CCryptoAutoLogger outer("", Mode::quiet);
        CCryptoAutoLogger logger("", Mode::quiet);
        logger.WriteBytes(bytes, false);
        logger.WriteBytes(std::span(bytes).first(3), true);
        logger.WriteBytes(std::vector<std::uint8_t>(511), true);
        logger.WriteBytes(std::vector<std::uint8_t>(512), true);
    }
    const std::vector<std::string> texts = log.texts();
    EXPECT_EQ(texts[0], "-10 11 12 13 14 15 16 17 18 19 1A 1B 1C 1D 1E 1F 20 21 22 23 24 25 26 27 28 29 2A 2B 2C 2D 2E 2F   "
                        "................ !\"#$.&'()*+,-./");
    EXPECT_EQ(texts[1], "-5A 5B 7A 7B 34 35 36 37" + std::string(1 + 25 + 1, ' ') + "Z.z.4567");
    EXPECT_EQ(texts[2], "-101112");
    EXPECT_EQ(texts[3], "-" + std::string(1022, '0'));
    EXPECT_EQ(texts[4], "-CCryptoAutoLogger::WriteLog: Very log message that is not displayed.");
}

TEST(Dump, StandsForWhatIsNoShortText)
{
    CollectedLog log(1);
    {
        CCryptoAutoLogger logger("", Mode::quiet);
        logger.WriteText("r\xC3\xA4k\xC3\xA4\n");
        logger.WriteText(CCryptoString("a\0b", std::uint32_t{3}));
        logger.WriteText(CCryptoString(std::string_view(std::string(255, 'x'))));
        logger.WriteText(CCryptoString(std::string_view(std::string(256, 'x'))));
    }
    const std::vector<std::string> texts = log.texts();
    ASSERT_EQ(texts.size(), 1u + 1u + 1u + 8u + 1u);
    EXPECT_EQ(texts[0], "r\xC3\xA4k\xC3\xA4\\n");
    EXPECT_EQ(texts[1], "61 00 62" + std::string(43, ' ') + "a.b");
    EXPECT_EQ(texts[2], std::string(255, 'x'));
}

TEST(ErrorHandler, JoinsTextsAndStartsTheChainAtTheInnermostFailure)
{
    CollectedLog log(9);
    CCryptoErrorHandler::ClearLastErrorText();
    {
        CCryptoAutoLogger outer("Outer");
        {
            CCryptoAutoLogger inner("Inner");
            inner.setInfo("read");
            inner.setWarning("slow");
            inner.fail(false);
        }
        outer.fail(false);
    }
    EXPECT_EQ(CCryptoErrorHandler::LastErrorText(), "Inner:read slow");
    {
        CCryptoAutoLogger own("Own");
        own.setRetValue(Status::error, false, CCryptoString("own text"));
    }
    EXPECT_EQ(CCryptoErrorHandler::LastErrorText(), "own text");
}

TEST(ErrorHandler, TakesTheSystemsTextWithoutItsLineEnd)
{
    std::string systemText = platform::SystemErrorText(2);
    ASSERT_FALSE(systemText.empty());
    while (systemText.ends_with('\n') || systemText.ends_with('\r'))
        systemText.pop_back();

    CCryptoErrorHandler first;
    first.setWindowsError(2);
    EXPECT_EQ(first.status(), Status::error);
    EXPECT_EQ(first.errorCode(), 2u);
    EXPECT_EQ(first.message().view(), systemText);
    EXPECT_EQ(CCryptoErrorHandler::LastErrorText().view(), systemText);

    CCryptoErrorHandler second;
    second.setError("Open");
    second.setWindowsError(0x6FFFFFFF);
    EXPECT_EQ(second.message(), "Open  Last error (6FFFFFFF)");
    EXPECT_EQ(CCryptoErrorHandler::LastErrorText(), "Open");
}

TEST(Profiling, ShowsElapsedTimeAtExitAndTheTimeOfDayBefore)
{
    CollectedLog log(5, {}, true);
    {
        CCryptoAutoLogger logger("Timed", Mode::resultOptional);
        logger.setRetValue(Status::info, true, "fine");
    }
    const Lines lines = log.lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(Masked(lines[0], 12, '0'), "00:00:00:000: " + Ids() + "collected Timed - IN");
    const char* const texts[] = {"Timed - OUT", "INFO: fine", outerRule.c_str()};
    for (std::size_t index = 0; index < std::size(texts); ++index) {
        const std::string& line = lines[index + 1];
        EXPECT_EQ(Masked(line, 9, ' '), std::string(9, ' ') + " ms: " + Ids() + "collected " + texts[index]);
        EXPECT_TRUE(std::isdigit(static_cast<unsigned char>(line[8]))) << line;
    }
}

TEST(LogOutput, DoesNotCallBackForWhatTheCallbackWrites)
{
    static int calls;
    calls = 0;
    const TemporaryDirectory directory;
    const std::string path = directory / u8"callback.LOG";
    logging::Configure(1, false,
                       std::make_shared<LogOutput>(LogOutput::Settings{
                           .callback = [](const char*) { WriteLog_G("call %d", ++calls); }, .tag = "t", .path = path}));
    WriteLog_G("first");
    WriteLog_G("second");
    logging::Configure(0, false, nullptr);

    EXPECT_EQ(calls, 2);
    EXPECT_EQ(TextsOfFile(path, "t"), (Lines{"call 1", "first", "call 2", "second"}));
}

TEST(LogOutput, CallsBackAgainAfterACallbackThatThrew)
{
    static int calls;
    calls = 0;
    const LogCallback callback = [](const char*) {
        ++calls;
        throw std::bad_alloc();
    };
    logging::Configure(1, false, std::make_shared<LogOutput>(LogOutput::Settings{.callback = callback, .tag = "t", .path = {}}));
    WriteLog_G("first");
    WriteLog_G("second");
    logging::Configure(0, false, nullptr);
    EXPECT_EQ(calls, 2);
}

TEST(LogOutput, LosesTheLinesOfABusyFileButNotTheCallback)
{
    // The first line waits a second, and the others hardly: were they to wait as long, or the first a minute, the owner would give
    // up.
    constexpr int linesMeanwhile = 40;
    constexpr std::chrono::seconds patienceOfOwner{20};
    const TemporaryDirectory directory;
    const std::string path = directory / u8"busy.LOG";
    CollectedLog log(1, path);
    std::promise<void> busy;
    std::promise<void> done;
    std::thread owner([&] {
        platform::NamedMutex mutex;
        EXPECT_TRUE(mutex.open("AutoLogger_collected") && mutex.lock(5000));
        busy.set_value();
        EXPECT_EQ(done.get_future().wait_for(patienceOfOwner), std::future_status::ready);
        mutex.unlock();
    });
    busy.get_future().wait();
    Lines lines(linesMeanwhile, "lost");
    for (const std::string& line : lines)
        WriteLog_G("%s", line.c_str());
    done.set_value();
    owner.join();
    WriteLog_G("kept");

    lines.push_back("kept");
    EXPECT_EQ(log.texts(), lines);
    EXPECT_EQ(TextsOfFile(path, CollectedLog::tag), (Lines{"kept"}));
}

TEST(LogOutput, WritesAFilePerThreadWhenAsked)
{
    const TemporaryDirectory directory;
    logging::Configure(
        1, false,
        std::make_shared<LogOutput>(LogOutput::Settings{.tag = "t", .path = directory / u8"a.LOG.LOG", .filePerThread = true}));
    std::string otherPath;
    const auto write = [&directory](const char* text) {
        WriteLog_G("%s", text);
        char name[40];
        std::snprintf(name, sizeof name, "a.LOG-%04x.LOG", platform::CurrentThreadId());
        return (directory.path() / name).string();
    };
    const std::string ownPath = write("own");
    std::thread([&] { otherPath = write("other"); }).join();
    logging::Configure(0, false, nullptr);

    EXPECT_EQ(TextsOfFile(ownPath, "t"), (Lines{"own"}));
    EXPECT_EQ(TextsOfFile(otherPath, "t"), (Lines{"other"}));
}

TEST(LogOutput, LeavesTheLastErrorOfTheThreadAlone)
{
    CollectedLog log(1, "/no/such/folder/x.LOG");
    platform::SetLastError(5);
    WriteLog_G("to a file that cannot be opened");
    EXPECT_EQ(platform::LastError(), 5u);
}
