#include "core/platform/file.h"
#include "core/platform/process.h"
#include "core/system/file.h"
#include "tests/support/temporary_directory.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <thread>
#include <utility>

using namespace ccrypto;

using platform::File;
using platform::FileMode;

namespace {

/// A pipe that can be opened by a name. Its writer fails, rather than ends the process, once the reader is gone.
class Pipe {
public:
    Pipe() : previousHandler_(std::signal(SIGPIPE, SIG_IGN)) { EXPECT_EQ(pipe2(ends_, O_CLOEXEC), 0); }
    ~Pipe()
    {
        closeReader();
        close(ends_[1]);
        std::signal(SIGPIPE, previousHandler_);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    std::string name() const { return "/proc/self/fd/" + std::to_string(ends_[0]); }
    void write(std::string_view text)
    {
        while (!text.empty()) {
            const ssize_t count = ::write(ends_[1], text.data(), text.size());
            if (count < 0)
                break;
            text.remove_prefix(static_cast<std::size_t>(count));
        }
        close(std::exchange(ends_[1], -1));
    }
    void closeReader() { close(std::exchange(ends_[0], -1)); }

private:
    void (*previousHandler_)(int);
    int ends_[2] = {-1, -1};
};

} // namespace

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
    EXPECT_FALSE(endless.Read(0, (64 << 20) + 1, content));
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

TEST(FileKind, APipeIsReadToItsEnd)
{
    std::string text(1 << 20, 'x');
    text += "end";
    Pipe pipe;
    std::thread writer([&] { pipe.write(text); });
    CCryptoFile file(CCryptoString(pipe.name().c_str()), FileMode::read);
    writer.join();
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(file.Size(), static_cast<std::int64_t>(text.size()));
    element content;
    ASSERT_TRUE(file.Read(0, UINT32_MAX, content));
    EXPECT_TRUE(content.view() == text);
    ASSERT_TRUE(file.Read(1 << 20, 3, content));
    EXPECT_EQ(content.view(), "end");
    File readOnly;
    Pipe other;
    other.write("x");
    ASSERT_TRUE(readOnly.open(other.name().c_str(), FileMode::read));
    EXPECT_FALSE(readOnly.writeAt(0, "y", 1));

    Pipe empty;
    empty.write("");
    EXPECT_TRUE(file.Open(CCryptoString(empty.name().c_str()), FileMode::read));
    EXPECT_EQ(file.Size(), 0);
}

TEST(FileKind, APipeHasABound)
{
    Pipe pipe;
    std::thread writer([&] { pipe.write(std::string((64 << 20) + 1, 'x')); });
    File file;
    EXPECT_FALSE(file.open(pipe.name().c_str(), FileMode::read));
    EXPECT_EQ(platform::LastError(), static_cast<std::uint32_t>(EFBIG));
    pipe.closeReader();
    writer.join();

    Pipe fits;
    std::thread other([&] { fits.write(std::string(64 << 20, 'x')); });
    EXPECT_TRUE(file.open(fits.name().c_str(), FileMode::read));
    other.join();
}

TEST(FileKind, APipeThatNobodyWritesIsRefusedAtOnce)
{
    const TemporaryDirectory directory;
    const std::string pipe = directory / u8"pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    File file;
    for (const FileMode mode : {FileMode::read, FileMode::write, FileMode::append, FileMode::readWrite}) {
        SCOPED_TRACE(static_cast<int>(mode));
        EXPECT_FALSE(file.open(pipe.c_str(), mode));
        const bool hasNoWriter = mode == FileMode::read || mode == FileMode::append;
        EXPECT_EQ(platform::LastError(), static_cast<std::uint32_t>(hasNoWriter ? ENXIO : ESPIPE));
    }
    EXPECT_TRUE(file.open("/dev/null", FileMode::write));
}
