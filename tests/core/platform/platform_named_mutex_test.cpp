#include "core/platform/named_mutex.h"
#include "core/platform/process.h"
#include "tests/core/log/companion.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

using namespace ccrypto;

using platform::NamedMutex;

namespace {

std::string OwnName(const char* suffix)
{
    return "core_tests_" + std::to_string(platform::CurrentProcessId()) + suffix;
}

void RemoveLockFiles()
{
    for (const char* suffix : {"", "_end"}) {
        std::error_code ignored;
        std::filesystem::remove("/tmp/" + OwnName(suffix) + ".mutex", ignored);
    }
}

class NamedMutexTest : public ::testing::Test {
protected:
    ~NamedMutexTest() override { RemoveLockFiles(); }
};

} // namespace

TEST_F(NamedMutexTest, KeepsProcessesApartAndSurvivesADeadOwner)
{
    NamedMutex mutex;
    NamedMutex end;
    ASSERT_TRUE(mutex.open(OwnName("").c_str()));
    ASSERT_TRUE(end.open(OwnName("_end").c_str()));
    ASSERT_TRUE(end.lock(0));

    Companion companion("lock_companion", OwnName("") + ' ' + OwnName("_end"));
    ASSERT_TRUE(companion.says("locked"));
    EXPECT_FALSE(mutex.lock(0));
    EXPECT_FALSE(mutex.lock(20));
    std::thread letGo([&] { EXPECT_TRUE(mutex.lock(30000)); });
    end.unlock();
    letGo.join();
    companion.end();
}

TEST_F(NamedMutexTest, KeepsThreadsApart)
{
    NamedMutex first;
    NamedMutex second;
    ASSERT_TRUE(first.open(OwnName("").c_str()));
    ASSERT_TRUE(second.open(OwnName("").c_str()));
    for (NamedMutex* mutex : {&first, &second}) {
        SCOPED_TRACE(mutex == &first ? "the same object" : "another object");
        ASSERT_TRUE(first.lock(0));
        ASSERT_TRUE(first.lock(0));
        std::thread([&] { EXPECT_FALSE(mutex->lock(5)); }).join();
        first.unlock();
        std::thread([&] {
            EXPECT_FALSE(mutex->lock(0));
            first.unlock();
            EXPECT_FALSE(mutex->lock(0));
        }).join();
        first.unlock();
        std::thread([&] {
            EXPECT_TRUE(mutex->lock(0));
            mutex->unlock();
        }).join();
    }
}

TEST_F(NamedMutexTest, WaitsForItsTurn)
{
    constexpr int rounds = 200;
    int sum = 0;
    const auto add = [&] {
        NamedMutex mutex;
        ASSERT_TRUE(mutex.open(OwnName("").c_str()));
        for (int round = 0; round < rounds; ++round) {
            ASSERT_TRUE(mutex.lock(30000));
            ++sum;
            mutex.unlock();
        }
    };
    std::thread other(add);
    add();
    other.join();
    EXPECT_EQ(sum, 2 * rounds);
}

TEST_F(NamedMutexTest, NamesAreChecked)
{
    NamedMutex mutex;
    const std::string longName(201, 'n');
    for (const char* name : {"", "../x", "a/b", "a\\b", longName.c_str(), static_cast<const char*>(nullptr)})
        EXPECT_FALSE(mutex.open(name));
    EXPECT_FALSE(mutex.isOpen());
    EXPECT_FALSE(mutex.lock(0));
    mutex.unlock();
}
