#include "core/platform/thread.h"
#include "core/system/thread.h"
#include "tests/support/in_child_process.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <thread>

using namespace ccrypto;

namespace {

void HoldOffSignals()
{
    sigset_t signals;
    sigfillset(&signals);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

} // namespace

TEST(ThreadEnd, LeftByTheSystemsCallItCanStartAgain)
{
    CCryptoThread thread([] { pthread_exit(nullptr); });
    for (const std::uint32_t responseTime : {0U, 30000U}) {
        ASSERT_TRUE(thread.start());
        EXPECT_TRUE(thread.wait(CCryptoThread::waitForever, responseTime));
        EXPECT_FALSE(thread.isRunning());
    }
}

TEST(ThreadEndDeathTest, ForceReachesAThreadWhoseStarterHoldsOffSignals)
{
    InChildProcess([] {
        HoldOffSignals();
        platform::Thread thread;
        ASSERT_TRUE(thread.start(
            [](void*) {
                for (volatile unsigned turns = 0;;)
                    turns = turns + 1;
            },
            nullptr));
        EXPECT_TRUE(thread.terminate());
        EXPECT_TRUE(thread.wait(0));
    });
}

TEST(ThreadEnd, AThreadThatForceDoesNotReachIsStillRunning)
{
    std::atomic<bool> holdsOff = false;
    std::atomic<bool> mayEnd = false;
    CCryptoThread thread([&] {
        HoldOffSignals();
        holdsOff = true;
        while (!mayEnd)
            std::this_thread::yield();
    });
    ASSERT_TRUE(thread.start());
    while (!holdsOff)
        std::this_thread::yield();
    EXPECT_FALSE(thread.wait(0, 0));
    EXPECT_TRUE(thread.isRunning());
    EXPECT_FALSE(thread.start());
    mayEnd = true;
    EXPECT_TRUE(thread.wait(CCryptoThread::waitForever, 0));
    EXPECT_FALSE(thread.isRunning());
}
