#include "core/diagnostics/auto_logger.h"
#include "core/diagnostics/failure.h"
#include "core/platform/process.h"
#include "core/settings/process_logger.h"
#include "tests/core/log/companion.h"
#include "tests/support/collected_log.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

using namespace ccrypto;

namespace {

using ccrypto::Failure;
using ccrypto::LoggerMode;

std::string Shown(const std::optional<Failure>& failure)
{
    return failure ? failure->operation + '|' + failure->text + '|' + std::to_string(failure->windowsError) : "none";
}

struct FailureCase {
    const char* name;
    std::function<void(CCryptoAutoLogger& logger)> inner;
    std::function<void(CCryptoAutoLogger& logger)> outer;
    std::string failure;
};

void Nothing(CCryptoAutoLogger&) {}

class FailureOfThread : public testing::TestWithParam<FailureCase> {};

} // namespace

TEST_P(FailureOfThread, IsTheLastReasonWhateverTheLevel)
{
    for (const std::uint32_t level : {0u, 9u}) {
        SCOPED_TRACE(level);
        const CollectedLog log(level);
        ccrypto::ForgetFailure();
        {
            CCryptoAutoLogger outer("A::Outer", LoggerMode::resultExpected, "%s", "arguments");
            {
                CCryptoAutoLogger inner("A::Inner", LoggerMode::quiet, "%s", "arguments");
                GetParam().inner(inner);
            }
            GetParam().outer(outer);
        }
        EXPECT_EQ(Shown(ccrypto::LastFailure()), GetParam().failure);
    }
}

const FailureCase failureCases[] = {
    {"success", [](auto& logger) { logger.setResult(true); }, [](auto& logger) { logger.warn(false, "slow"); }, "none"},
    {"a reason", [](auto& logger) { logger.fail(false, "no %s", "card"); }, Nothing, "A::Inner|no card|0"},
    {"a message", [](auto& logger) { logger.setError("no card"); }, Nothing, "A::Inner|no card|0"},
    {"no reason", [](auto& logger) { logger.fail(false); }, Nothing, "A::Inner||0"},
    {"an empty reason", [](auto& logger) { logger.fail(false, "%s", ""); }, Nothing, "A::Inner||0"},
    {"nobody gives a reason", [](auto& logger) { logger.fail(false); }, [](auto& logger) { logger.fail(false); }, "A::Inner||0"},
    {"the outer gives none", [](auto& logger) { logger.fail(false, "no card"); }, [](auto& logger) { logger.fail(false); },
     "A::Inner|no card|0"},
    {"the outer gives an empty one", [](auto& logger) { logger.fail(false, "no card"); },
     [](auto& logger) { logger.fail(false, "%s", ""); }, "A::Inner|no card|0"},
    {"the outer knows better", [](auto& logger) { logger.fail(false, "no card"); },
     [](auto& logger) { logger.fail(false, "no key"); }, "A::Outer|no key|0"},
    {"the outer alone", [](auto& logger) { logger.fail(false); }, [](auto& logger) { logger.fail(false, "no key"); },
     "A::Outer|no key|0"},
    {"the system's", [](auto& logger) { logger.setWindowsError(0x6FFFFFFF); }, Nothing,
     "A::Inner| Last error (6FFFFFFF)|1879048191"},
    {"the system's in a second reason", [](auto& logger) { logger.fail(false, "no card"); },
     [](auto& logger) { logger.setWindowsError(0x6FFFFFFF); }, "A::Outer| Last error (6FFFFFFF)|1879048191"},
    {"a reason, then the system's",
     [](auto& logger) {
         logger.setError("Open");
         logger.setWindowsError(5);
     },
     Nothing, "A::Inner|Open|5"},
    {"the system's, then a reason",
     [](auto& logger) {
         logger.setWindowsError(5);
         logger.setError("Open");
     },
     Nothing, "A::Inner|Open|5"},
};

INSTANTIATE_TEST_SUITE_P(Reasons, FailureOfThread, testing::ValuesIn(failureCases),
                         [](const testing::TestParamInfo<FailureCase>& failureCase) {
                             std::string name = failureCase.param.name;
                             std::erase_if(name, [](unsigned char character) { return std::isalnum(character) == 0; });
                             return name;
                         });

TEST(LastFailure, BelongsToItsThread)
{
    const auto fail = [](const char* operation) { CCryptoAutoLogger(operation, LoggerMode::quiet).fail(false, "reason"); };
    ccrypto::ForgetFailure();
    fail("Own");
    // More threads than are remembered, which fail and come to know of their own failure alone.
    for (int count = 0; count < 100; ++count) {
        std::thread([&] {
            ccrypto::ForgetFailure();
            EXPECT_EQ(Shown(ccrypto::LastFailure()), "none");
            fail("Other");
            EXPECT_EQ(Shown(ccrypto::LastFailure()), "Other|reason|0");
            ccrypto::ForgetFailure();
        }).join();
    }
    EXPECT_EQ(Shown(ccrypto::LastFailure()), "Own|reason|0");
    // What others recorded since is not this thread's; what gave no reason is not one.
    const std::size_t moment = ccrypto::FailureCount();
    std::thread([&] { fail("Other"); }).join();
    EXPECT_EQ(Shown(ccrypto::LastFailureSince(moment)), "none");
    fail("Later");
    EXPECT_EQ(Shown(ccrypto::LastFailureSince(moment)), "Later|reason|0");
    EXPECT_EQ(Shown(ccrypto::LastFailureSince(ccrypto::FailureCount())), "none");
    ccrypto::ForgetFailure();
    CCryptoAutoLogger("Silent", LoggerMode::quiet).fail(false);
    EXPECT_EQ(Shown(ccrypto::LastFailureSince(moment)), "none");
    {
        const CCryptoProcessLogger process(nullptr, "no such product", "failures");
    }
    EXPECT_EQ(Shown(ccrypto::LastFailure()), "none");
    EXPECT_EQ(CCryptoErrorHandler::LastErrorText(), "");
}

TEST(LastFailure, IsRememberedForTheLast64Threads)
{
    for (const int others : {63, 64}) {
        CCryptoAutoLogger("Own", LoggerMode::quiet).fail(false, "reason");
        // Threads that live at once have numbers of their own. A std::latch may lose a wake-up in this compiler's library for
        // Windows.
        std::atomic<int> missing{others};
        std::promise<void> seen;
        const std::shared_future<void> maySay = seen.get_future().share();
        std::vector<std::thread> threads;
        for (int count = 0; count < others; ++count) {
            threads.emplace_back([&missing, maySay] {
                CCryptoAutoLogger("Other", LoggerMode::quiet).fail(false, "reason");
                --missing;
                maySay.wait();
                ccrypto::ForgetFailure();
            });
        }
        while (missing > 0)
            std::this_thread::yield();
        EXPECT_EQ(Shown(ccrypto::LastFailure()), others < 64 ? "Own|reason|0" : "none");
        seen.set_value();
        for (std::thread& thread : threads)
            thread.join();
    }
}

TEST(LastFailure, TakesABoundedTextWithoutItsLineEndFromTheSystem)
{
    const struct {
        std::string known;
        std::string text;
    } cases[] = {
        {"Access is denied.\r\n", "Access is denied."},
        {"No line end", "No line end"},
        {"two\r\n\r\n", "two\r\n"},
        {"\r\n", "\r\n"},
        {std::string(255, 'x') + "\r\n", std::string(255, 'x')},
        {std::string(256, 'x'), std::string(255, 'x')},
        {std::string(254, 'x') + "\xC3\xA4", std::string(254, 'x')},
        {"", " Last error (0000000A)"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(ccrypto::internal::TextOfWindowsError(10, each.known), each.text);
}

TEST(LastFailure, WithoutMemoryTheProcessEndsAsForAnyAllocation)
{
    for (const char* stage : {"open", "reason", "close"})
        EXPECT_TRUE(Companion("memory_companion", stage).says("fatal")) << stage;
}
