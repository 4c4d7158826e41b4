#include "core/platform/file.h"
#include "core/platform/process.h"
#include "core/system/file.h"
#include "tests/support/temporary_directory.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace ccrypto;

using platform::File;
using platform::FileMode;

TEST(FileKind, AFileWithoutASizeIsReadToItsEnd)
{
    element content;
    CCryptoFile made(CCryptoString("/proc/self/status"), FileMode::read);
    ASSERT_TRUE(made.Read(0, UINT32_MAX, content));
    EXPECT_TRUE(content.view().starts_with("Name:\tcore_tests"));
    EXPECT_TRUE(content.view().ends_with('\n'));
    EXPECT_EQ(made.CurrentPos(), content.length());
    ASSERT_TRUE(made.Read(6, 4, content));
    EXPECT_EQ(content.view(), "core");
    EXPECT_FALSE(made.Read(1 << 20, 4, content));

    CCryptoFile endless(CCryptoString("/dev/zero"), FileMode::read);
    EXPECT_FALSE(endless.Read(0, UINT32_MAX, content));
    EXPECT_TRUE(content.isEmpty());
    EXPECT_TRUE(endless.Read(0, 64 << 20, content));
    EXPECT_EQ(content.length(), 64U << 20);
}

TEST(FileKind, AFileForItsOwnerAloneIsNobodyElses)
{
    const TemporaryDirectory directory;
    const mode_t before = umask(0);
    const auto modeOf = [&](const char8_t* name, FileMode mode) {
        struct stat status = {};
        File file;
        EXPECT_TRUE(file.open((directory / name).c_str(), mode) && stat((directory / name).c_str(), &status) == 0);
        return status.st_mode & 0777;
    };
    EXPECT_EQ(modeOf(u8"private", FileMode::createPrivate), 0600U);
    EXPECT_EQ(modeOf(u8"shared", FileMode::create), 0666U);
    umask(before);
}

TEST(FileKind, APipeIsRefusedAtOnce)
{
    const TemporaryDirectory directory;
    const std::string pipe = directory / u8"pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    File file;
    for (const FileMode mode : {FileMode::read, FileMode::write, FileMode::append, FileMode::readWrite}) {
        SCOPED_TRACE(static_cast<int>(mode));
        EXPECT_FALSE(file.open(pipe.c_str(), mode));
        EXPECT_EQ(platform::LastError(), static_cast<std::uint32_t>(mode == FileMode::append ? ENXIO : ESPIPE));
    }
    EXPECT_TRUE(file.open("/dev/null", FileMode::write));
}
