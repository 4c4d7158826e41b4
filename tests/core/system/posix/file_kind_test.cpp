#include "core/platform/file.h"
#include "core/platform/process.h"
#include "tests/support/temporary_directory.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace ccrypto;

using platform::File;
using platform::FileMode;

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
