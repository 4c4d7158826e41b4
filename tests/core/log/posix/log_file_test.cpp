#include "core/log/log_writers.h"
#include "core/platform/file.h"
#include "tests/support/collected_log.h"
#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

using namespace ccrypto;

namespace {

/// Files of this process end at `bytes`, as on a full disk: a write takes what fits, and the next fails.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : previousHandler_(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &previous_);
        rlimit limit = previous_;
        limit.rlim_cur = bytes;
        isSet_ = setrlimit(RLIMIT_FSIZE, &limit) == 0;
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &previous_);
        std::signal(SIGXFSZ, previousHandler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

    bool isSet() const { return isSet_; }

private:
    void (*previousHandler_)(int);
    rlimit previous_{};
    bool isSet_ = false;
};

} // namespace

TEST(LogFile, HoldsWholeLinesAloneOnAFullDisk)
{
    const TemporaryDirectory directory;
    const std::string path = directory / u8"full.LOG";
    const CollectedLog log(1, path);
    WriteLog_G("before");
    const std::uintmax_t size = std::filesystem::file_size(path);
    {
        const FileSizeLimit limit(size + 30);
        ASSERT_TRUE(limit.isSet());
        WriteLog_G("does not fit");
    }
    EXPECT_EQ(std::filesystem::file_size(path), size);
    WriteLog_G("after");
    EXPECT_EQ(TextsOfFile(path, CollectedLog::tag), (std::vector<std::string>{"before", "after"}));
}

TEST(LogFile, IsNotALinkThatSomebodyPlanted)
{
    const TemporaryDirectory directory;
    const std::string elsewhere = directory / u8"elsewhere";
    const std::string path = directory / u8"planted.LOG";
    for (const auto plant : {symlink, link}) {
        ASSERT_TRUE(platform::File().open(elsewhere.c_str(), platform::FileMode::write));
        ASSERT_EQ(plant(elsewhere.c_str(), path.c_str()), 0);
        {
            const CollectedLog log(1, path);
            WriteLog_G("lost");
        }
        EXPECT_EQ(std::filesystem::file_size(elsewhere), 0U);
        ASSERT_EQ(unlink(path.c_str()), 0);
        // A link to nothing makes no file.
        ASSERT_EQ(unlink(elsewhere.c_str()), 0);
        ASSERT_EQ(symlink(elsewhere.c_str(), path.c_str()), 0);
        {
            const CollectedLog log(1, path);
            WriteLog_G("lost");
        }
        EXPECT_FALSE(std::filesystem::exists(elsewhere));
        ASSERT_EQ(unlink(path.c_str()), 0);
    }
}

TEST(LogFile, MayBeWrittenByEveryUser)
{
    const TemporaryDirectory directory;
    const std::string path = directory / u8"shared.LOG";
    const mode_t previous = umask(077);
    {
        const CollectedLog log(1, path);
        WriteLog_G("first");
    }
    umask(previous);
    struct stat status = {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0666u);

    // What someone else narrowed stays so.
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    {
        const CollectedLog log(1, path);
        WriteLog_G("second");
    }
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
    EXPECT_EQ(TextsOfFile(path, CollectedLog::tag), (std::vector<std::string>{"first", "second"}));
}
