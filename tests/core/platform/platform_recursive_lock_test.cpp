#include "core/platform/process.h"
#include "core/platform/recursive_lock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using namespace ccrypto;

namespace {

class RecursiveLockTest : public ::testing::Test {
protected:
    RecursiveLockTest() { lock_.initialize(); }
    ~RecursiveLockTest() override { lock_.destroy(); }

    platform::RecursiveLock lock_;
};

} // namespace

TEST_F(RecursiveLockTest, KnowsItsOwnerAndHowOftenItEntered)
{
    EXPECT_EQ(lock_.ownerThreadId(), 0U);
    EXPECT_EQ(lock_.lockCount(), -1);
    lock_.enter();
    EXPECT_TRUE(lock_.tryEnter());
    EXPECT_EQ(lock_.ownerThreadId(), platform::CurrentThreadId());
    EXPECT_EQ(lock_.recursionCount(), 2);
    EXPECT_NE(lock_.lockCount(), -1);

    std::thread([&] {
        EXPECT_FALSE(lock_.tryEnter());
        EXPECT_NE(lock_.ownerThreadId(), platform::CurrentThreadId());
        EXPECT_EQ(lock_.recursionCount(), 2);
    }).join();

    lock_.leave();
    EXPECT_EQ(lock_.ownerThreadId(), platform::CurrentThreadId());
    lock_.leave();
    EXPECT_EQ(lock_.ownerThreadId(), 0U);
    EXPECT_EQ(lock_.recursionCount(), 0);
    EXPECT_EQ(lock_.lockCount(), -1);
    std::thread([&] {
        EXPECT_TRUE(lock_.tryEnter());
        lock_.leave();
    }).join();
}

TEST_F(RecursiveLockTest, LetsOneThreadInAtATime)
{
    constexpr int threadCount = 4;
    constexpr int rounds = 2000;
    int sum = 0;
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int index = 0; index < threadCount; ++index)
        threads.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                lock_.enter();
                ++sum;
                lock_.leave();
                // Looks from outside while others enter and leave.
                static_cast<void>(lock_.ownerThreadId() + static_cast<std::uint32_t>(lock_.recursionCount() + lock_.lockCount()));
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(sum, threadCount * rounds);
}
