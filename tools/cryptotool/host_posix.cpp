#include "tools/cryptotool/host.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>

namespace {

std::int64_t ReadSome(int file, std::span<std::uint8_t> target)
{
    for (;;) {
        const ssize_t count = ::read(file, target.data(), target.size());
        if (count >= 0 || errno != EINTR)
            return count;
    }
}

bool WriteAll(int file, std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(file, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

// What a signal handler may look at: the name stands before the flag is set, and stays while it is.
char unfinishedFile[PATH_MAX];
std::atomic<bool> hasUnfinishedFile = false;
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void RemoveUnfinishedFile(int signalNumber)
{
    if (hasUnfinishedFile)
        unlink(unfinishedFile);
    // The handler is gone by now: the signal ends the process as it would have without one.
    raise(signalNumber);
}

int Descriptor(std::intptr_t handle)
{
    return static_cast<int>(handle);
}

} // namespace

std::vector<std::string> CommandLineWords(int count, char** words)
{
    return count > 1 ? std::vector<std::string>(words + 1, words + count) : std::vector<std::string>();
}

void RemoveWhenInterrupted(const std::string& name)
{
    hasUnfinishedFile = false;
    if (name.empty() || name.size() >= sizeof unfinishedFile)
        return;
    name.copy(unfinishedFile, name.size());
    unfinishedFile[name.size()] = 0;
    hasUnfinishedFile = true;
    struct sigaction action = {};
    action.sa_handler = RemoveUnfinishedFile;
    action.sa_flags = SA_RESETHAND;
    for (const int signalNumber : {SIGHUP, SIGINT, SIGPIPE, SIGTERM}) {
        struct sigaction present = {};
        // A signal the caller wants ignored stays so.
        if (sigaction(signalNumber, nullptr, &present) == 0 && present.sa_handler == SIG_DFL)
            sigaction(signalNumber, &action, nullptr);
    }
}

SystemConsole::SystemConsole() = default;

std::int64_t SystemConsole::readInput(std::span<std::uint8_t> target)
{
    return ReadSome(STDIN_FILENO, target);
}

bool SystemConsole::writeOutput(std::span<const std::uint8_t> bytes)
{
    return WriteAll(STDOUT_FILENO, bytes);
}

void SystemConsole::writeError(std::string_view text)
{
    WriteAll(STDERR_FILENO, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

bool SystemConsole::outputIsTerminal() const
{
    return isatty(STDOUT_FILENO) != 0;
}

bool SystemConsole::errorIsTerminal() const
{
    return isatty(STDERR_FILENO) != 0;
}

SequentialFile::~SequentialFile()
{
    if (handle_ != closed)
        ::close(Descriptor(handle_));
}

bool SequentialFile::openToRead(const std::string& name)
{
    handle_ = ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
    return handle_ != closed;
}

bool SequentialFile::openToWrite(const std::string& name)
{
    handle_ = ::open(name.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    return handle_ != closed;
}

std::int64_t SequentialFile::read(std::span<std::uint8_t> target)
{
    return ReadSome(Descriptor(handle_), target);
}

bool SequentialFile::write(std::span<const std::uint8_t> bytes)
{
    return WriteAll(Descriptor(handle_), bytes);
}

std::int64_t SequentialFile::size() const
{
    struct stat status = {};
    return fstat(Descriptor(handle_), &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : -1;
}
