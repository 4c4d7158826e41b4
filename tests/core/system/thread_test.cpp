#include "core/log/log_writers.h"
#include "core/platform/clock.h"
#include "core/platform/process.h"
#include "core/system/thread.h"
#include "tests/support/captured_log.h"
#include "tests/support/in_child_process.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace ccrypto;

using ::testing::Contains;
using ::testing::HasSubstr;

namespace {

/// Runs until it is asked to end.
class Worker : public CCryptoThread {
public:
    ~Worker() override
    {
        end();
        wait(waitForever, 0);
    }

    void awaitBegin() { begun_.get_future().wait(); }
    void end()
    {
        if (!asked_)
            mayEnd_.set_value();
        asked_ = true;
    }
    std::uint32_t idInside() const { return idInside_; }

protected:
    void run() override
    {
        idInside_ = platform::CurrentThreadId();
        begun_.set_value();
        mayEnd_.get_future().wait();
    }

private:
    std::promise<void> begun_;
    std::promise<void> mayEnd_;
    std::uint32_t idInside_ = 0;
    bool asked_ = false;
};

std::string Numbered(const char* format, std::uint32_t id)
{
    char text[40];
    std::snprintf(text, sizeof(text), format, static_cast<unsigned>(id));
    return text;
}

} // namespace

TEST(CryptoThread, WaitsInTwoStages)
{
    Worker worker;
    EXPECT_TRUE(worker.wait(CCryptoThread::waitForever, 10));
    EXPECT_FALSE(worker.isRunning());

    const CapturedLog log([&](const std::string& text) {
        if (text == "Still running")
            worker.end();
    });
    ASSERT_TRUE(worker.start());
    worker.awaitBegin();
    EXPECT_TRUE(worker.isRunning());
    EXPECT_FALSE(worker.start());
    EXPECT_TRUE(worker.wait(CCryptoThread::waitForever, 1));
    EXPECT_FALSE(worker.isRunning());
    EXPECT_EQ(worker.id(), worker.idInside());
    EXPECT_TRUE(worker.wait(0, 0));

    const std::string threadId = Numbered("ThreadID=%04X", worker.id());
    EXPECT_EQ(log.texts(), (std::vector<std::string>{"CCryptoThread::start - IN", Numbered("Start thread: %04X", worker.id()),
                                                     "CCryptoThread::start - OUT", "CCryptoThread::start - IN",
                                                     "CCryptoThread::start - OUT WITH ERROR", "ERROR: Thread is already running",
                                                     "CCryptoThread::wait - IN", threadId, "Running", "responseTime check",
                                                     "Still running", "CCryptoThread::wait - OUT", "CCryptoThread::wait - IN",
                                                     threadId, "CCryptoThread::wait - OUT"}));
}

TEST(CryptoThread, EndsWithinTheResponseTime)
{
    Worker worker;
    ASSERT_TRUE(worker.start());
    worker.end();
    const CapturedLog log;
    EXPECT_TRUE(worker.wait(CCryptoThread::waitForever, 30000));
    EXPECT_THAT(log.texts(), ::testing::Not(Contains("Still running")));
    EXPECT_FALSE(worker.isRunning());
}

TEST(CryptoThreadDeathTest, IsEndedByForceAfterTheTotalTime)
{
    InChildProcess([] {
        std::atomic<bool> begun = false;
        CCryptoThread thread([&] {
            // From here on it takes no lock that its forced end would leave locked.
            begun = true;
            for (volatile unsigned turns = 0;;)
                turns = turns + 1;
        });
        ASSERT_TRUE(thread.start());
        while (!begun)
            std::this_thread::yield();
        const CapturedLog log;
        // The response time counts as part of the total, even when it is the longer one.
        EXPECT_FALSE(thread.wait(1, 2));
        EXPECT_FALSE(thread.isRunning());
        EXPECT_THAT(log.texts(), Contains(HasSubstr("CCryptoThread::wait - OUT WITH ERROR")));
        EXPECT_TRUE(thread.wait(0, 0));
    });
}

TEST(CryptoThread, AnExceptionEndsTheThreadAlone)
{
    struct {
        std::function<void()> body;
        const char* line;
    } const cases[] = {
        {[] { throw std::runtime_error("reason"); }, "CCryptoThread::run: An exception ended the thread: reason"},
        {[] { throw 1; }, "CCryptoThread::run: An exception ended the thread"},
    };
    for (const auto& [body, line] : cases) {
        const CapturedLog log;
        CCryptoThread thread(body);
        ASSERT_TRUE(thread.start());
        EXPECT_TRUE(thread.wait(CCryptoThread::waitForever, 0));
        EXPECT_FALSE(thread.isRunning());
        EXPECT_THAT(log.texts(), Contains(std::string("ERROR: ") + line));
    }
}

TEST(CryptoThreadDeathTest, ForceLeavesTheLogUsable)
{
    // A thread that writes all the time is met inside a line almost always.
    for (int round = 0; round < 10; ++round) {
        InChildProcess([] {
            const CapturedLog log([](const std::string&) { std::this_thread::sleep_for(std::chrono::microseconds(50)); });
            std::atomic<bool> begun = false;
            CCryptoThread thread([&] {
                for (;;) {
                    WriteLog_G("a line");
                    begun = true;
                }
            });
            ASSERT_TRUE(thread.start());
            while (!begun)
                std::this_thread::yield();
            EXPECT_FALSE(thread.wait(0, 0));
            EXPECT_FALSE(thread.isRunning());
            WriteLog_G("the log goes on");
            EXPECT_EQ(log.texts().back(), "the log goes on");
        });
    }
}

TEST(CryptoThreadDeathTest, TheResponseTimeIsPartOfTheTotal)
{
    InChildProcess([] {
        std::atomic<bool> stillRunning = false;
        CCryptoThread thread([&] {
            while (!stillRunning) {}
            // Long after a wait of nothing, and well within another second.
            const std::int64_t end = platform::MonotonicMilliseconds() + 300;
            while (platform::MonotonicMilliseconds() < end) {}
        });
        const CapturedLog log([&](const std::string& text) { stillRunning = stillRunning || text == "Still running"; });
        ASSERT_TRUE(thread.start());
        EXPECT_FALSE(thread.wait(1000, 1000));
    });
}

TEST(CryptoThreadDeathTest, ForceSparesAThreadInsideTheLog)
{
    InChildProcess([] {
        std::promise<void> inside;
        std::promise<void> mayLeave;
        const CapturedLog log([&](const std::string& text) {
            if (text != "a line")
                return;
            inside.set_value();
            mayLeave.get_future().wait();
        });
        CCryptoThread thread([] { WriteLog_G("a line"); });
        ASSERT_TRUE(thread.start());
        inside.get_future().wait();
        EXPECT_FALSE(thread.wait(0, 0));
        EXPECT_TRUE(thread.isRunning());
        EXPECT_THAT(log.texts(), Contains(HasSubstr("The thread cannot be ended")));
        mayLeave.set_value();
        std::_Exit(::testing::Test::HasFailure() ? 1 : 0);
    });
}

TEST(CryptoThread, ReportsTheNumberOfUninitialisedMemory)
{
    CCryptoThread thread([] {});
    ASSERT_TRUE(thread.start());
    ASSERT_TRUE(thread.wait(CCryptoThread::waitForever, 0));
    // As if the object had been lost and its memory filled anew.
    const std::uint32_t number = thread.id();
    constexpr std::uint32_t uninitialised = 0xCDCDCDCD;
    auto* const bytes = reinterpret_cast<unsigned char*>(&thread);
    for (std::size_t offset = 0; offset < sizeof thread; offset += sizeof number) {
        if (std::memcmp(bytes + offset, &number, sizeof number) == 0)
            std::memcpy(bytes + offset, &uninitialised, sizeof number);
    }
    const CapturedLog log;
    EXPECT_TRUE(thread.wait(0, 0));
    EXPECT_THAT(log.texts(), Contains("ERROR in CCryptoThread::wait: FATAL ERROR!"));
}

TEST(CryptoThread, StartsAgainAndIsAwaitedByItsDestructor)
{
    std::atomic<int> runs = 0;
    {
        CCryptoThread thread([&] { ++runs; });
        ASSERT_TRUE(thread.start());
        ASSERT_TRUE(thread.wait(CCryptoThread::waitForever, 0));
        ASSERT_TRUE(thread.start());
    }
    EXPECT_EQ(runs, 2);
}

TEST(CryptoThread, IsAwaitedUntilItHasLeft)
{
    // Static, since MinGW's runtime may free what a thread_local object holds before it calls the destructor.
    static std::atomic<bool> left;
    struct SlowToLeave {
        void begin() { left = false; }
        ~SlowToLeave()
        {
            platform::SleepMilliseconds(20);
            left = true;
        }
    };
    for (const bool awaited : {true, false}) {
        SCOPED_TRACE(awaited);
        {
            CCryptoThread thread([] {
                thread_local SlowToLeave slow;
                slow.begin();
            });
            ASSERT_TRUE(thread.start());
            while (thread.isRunning())
                std::this_thread::yield();
            if (awaited) {
                EXPECT_TRUE(thread.wait(0, 0));
                EXPECT_TRUE(left);
            }
        }
        EXPECT_TRUE(left);
    }
}

TEST(CryptoThread, DoesNotWaitForItself)
{
    const CapturedLog log;
    std::promise<void> started;
    std::promise<void> left;
    CCryptoThread* const thread = new CCryptoThread([&] {
        started.get_future().wait();
        left.set_value_at_thread_exit();
        EXPECT_FALSE(thread->wait(CCryptoThread::waitForever, 0));
        delete thread;
    });
    ASSERT_TRUE(thread->start());
    started.set_value();
    left.get_future().wait();
    EXPECT_THAT(log.texts(), Contains("ERROR: A thread cannot wait for itself"));
    EXPECT_THAT(log.texts(), Contains("ERROR: CCryptoThread::~CCryptoThread: Destroyed by its own thread"));
}
