#include "core/platform/process.h"
#include "core/platform/thread.h"
#include "tests/support/in_child_process.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>

using namespace ccrypto;

namespace {

struct Meeting {
    std::promise<std::uint32_t> begun;
    std::promise<void> mayEnd;
    std::atomic<bool> ended = false;
};

void Attend(void* argument)
{
    Meeting& meeting = *static_cast<Meeting*>(argument);
    meeting.begun.set_value(platform::CurrentThreadId());
    meeting.mayEnd.get_future().wait();
    meeting.ended = true;
}

/// Never ends by itself; once it has begun it takes no lock that its forced end would leave locked.
void Spin(void* argument)
{
    *static_cast<std::atomic<bool>*>(argument) = true;
    for (volatile unsigned turns = 0;;)
        turns = turns + 1;
}

} // namespace

TEST(Thread, RunsUntilItsEntryReturns)
{
    Meeting meeting;
    platform::Thread thread;
    EXPECT_TRUE(thread.wait(0));
    ASSERT_TRUE(thread.start(Attend, &meeting));
    EXPECT_TRUE(thread.isOpen());
    EXPECT_EQ(meeting.begun.get_future().get(), thread.id());
    EXPECT_NE(thread.id(), platform::CurrentThreadId());

    EXPECT_FALSE(thread.wait(0));
    EXPECT_FALSE(thread.wait(1));
    EXPECT_NE(platform::LastError(), 0U);
    meeting.mayEnd.set_value();
    EXPECT_TRUE(thread.wait(platform::waitForever));
    EXPECT_TRUE(meeting.ended);
    EXPECT_TRUE(thread.wait(0));
    thread.close();
    EXPECT_FALSE(thread.isOpen());
}

TEST(Thread, ClosedWhileRunningGoesOn)
{
    Meeting meeting;
    std::future<std::uint32_t> begun = meeting.begun.get_future();
    std::promise<void> left;
    struct Both {
        Meeting& meeting;
        std::promise<void>& left;
    } both{meeting, left};
    {
        platform::Thread thread;
        ASSERT_TRUE(thread.start(
            [](void* argument) {
                const Both& pair = *static_cast<Both*>(argument);
                Attend(&pair.meeting);
                pair.left.set_value_at_thread_exit();
            },
            &both));
        begun.get();
    }
    EXPECT_FALSE(meeting.ended);
    meeting.mayEnd.set_value();
    left.get_future().wait();
    EXPECT_TRUE(meeting.ended);
}

TEST(ThreadDeathTest, EndsByForceAndLeavesTheNextOneAlone)
{
    InChildProcess([] {
        for (int round = 0; round < 3; ++round) {
            std::atomic<bool> begun = false;
            platform::Thread thread;
            ASSERT_TRUE(thread.start(Spin, &begun));
            while (!begun)
                std::this_thread::yield();
            ASSERT_FALSE(thread.wait(0));
            EXPECT_TRUE(thread.terminate());
            EXPECT_TRUE(thread.wait(0));
            // Nothing of the lost thread may turn up in one that begins after it.
            EXPECT_NE(std::async(std::launch::async, platform::CurrentThreadId).get(), 0U);
        }
    });
}
