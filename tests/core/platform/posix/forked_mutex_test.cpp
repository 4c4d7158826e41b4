#include "core/platform/named_mutex.h"
#include "core/platform/process.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <utility>

using namespace ccrypto;

using platform::NamedMutex;

namespace {

class LockFileTest : public ::testing::Test {
protected:
    LockFileTest() : name_("core_tests_fork_" + std::to_string(platform::CurrentProcessId())) {}
    ~LockFileTest() override { unlink(path().c_str()); }

    const char* name() const { return name_.c_str(); }
    std::string path() const { return "/tmp/" + name_ + ".mutex"; }

    /// What `body` answers in a forked child.
    template <typename Body>
    static bool InFork(Body body)
    {
        const pid_t child = fork();
        if (child == 0)
            _exit(body() ? 0 : 1);
        int status = 0;
        return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
    std::string name_;
};

} // namespace

TEST_F(LockFileTest, AForkedChildOwnsNothingAndWaitsForItsParent)
{
    NamedMutex mutex;
    ASSERT_TRUE(mutex.open(name()) && mutex.lock(0));
    EXPECT_TRUE(InFork([&] {
        const bool had = mutex.lock(0);
        mutex.unlock();
        return !had;
    }));
    NamedMutex other;
    ASSERT_TRUE(other.open(name()));
    EXPECT_FALSE(other.lock(0));
    mutex.unlock();
    EXPECT_TRUE(InFork([&] { return mutex.lock(0) && mutex.lock(0); }));

    // The child keeps the mutex from its parent, too.
    int ready[2];
    int end[2];
    ASSERT_EQ(pipe(ready), 0);
    ASSERT_EQ(pipe(end), 0);
    const pid_t child = fork();
    char byte = 0;
    if (child == 0) {
        const bool had = mutex.lock(0);
        _exit(had && write(ready[1], &byte, 1) == 1 && read(end[0], &byte, 1) == 1 ? 0 : 1);
    }
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    EXPECT_FALSE(mutex.lock(0));
    ASSERT_EQ(write(end[1], &byte, 1), 1);
    EXPECT_TRUE(mutex.lock(30000));
    waitpid(child, nullptr, 0);
    for (const int descriptor : {ready[0], ready[1], end[0], end[1]})
        close(descriptor);
}

TEST_F(LockFileTest, ARemovedFileDoesNotSplitTheMutex)
{
    NamedMutex first;
    NamedMutex second;
    ASSERT_TRUE(first.open(name()));
    ASSERT_EQ(unlink(path().c_str()), 0);
    ASSERT_TRUE(second.open(name()));
    ASSERT_TRUE(first.lock(0));
    EXPECT_FALSE(second.lock(0));
    first.unlock();
    EXPECT_TRUE(second.lock(0));
    EXPECT_FALSE(first.lock(0));
}

TEST_F(LockFileTest, IsNothingThatSomebodyPlanted)
{
    const std::string elsewhere = path() + ".elsewhere";
    const int file = open(elsewhere.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0666);
    ASSERT_GE(file, 0);
    close(file);
    NamedMutex mutex;
    ASSERT_EQ(symlink(elsewhere.c_str(), path().c_str()), 0);
    EXPECT_FALSE(mutex.open(name()));
    ASSERT_EQ(unlink(path().c_str()), 0);
    ASSERT_EQ(mkfifo(path().c_str(), 0666), 0);
    EXPECT_FALSE(mutex.open(name()));
    EXPECT_EQ(platform::LastError(), std::uint32_t{EINVAL});
    unlink(elsewhere.c_str());
}

TEST_F(LockFileTest, IsOpenToEveryone)
{
    const mode_t before = umask(077);
    NamedMutex mutex;
    ASSERT_TRUE(mutex.open(name()));
    umask(before);
    struct stat status = {};
    ASSERT_EQ(stat(path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0666U);
}
