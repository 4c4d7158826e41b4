#include "tools/cryptotool/cli/host.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <sys/stat.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <atomic>

namespace ccrypto {

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

// What a signal handler may look at: the name is complete before the flag is set, and does not change while it is.
char unfinishedFile[PATH_MAX];
std::atomic<bool> hasUnfinishedFile = false;
static_assert(std::atomic<bool>::is_always_lock_free);

constexpr std::array<int, 5> interruptionSignals = {SIGHUP, SIGINT, SIGPIPE, SIGQUIT, SIGTERM};

extern "C" void RemoveUnfinishedFile(int signalNumber)
{
    if (hasUnfinishedFile)
        unlink(unfinishedFile);
    // The handler is gone by now: the signal ends the process as it would have without one.
    raise(signalNumber);
}

volatile sig_atomic_t signalWhileHidden = 0;

extern "C" void NoteSignal(int signalNumber)
{
    signalWhileHidden = signalNumber;
}

/// While it lives, what is typed at a terminal is not shown, and a signal ends the waiting for it. In the end the terminal shows
/// again what is typed, and a signal that came does what it would have done.
class HiddenTyping {
public:
    explicit HiddenTyping(int terminal) : terminal_(terminal)
    {
        if (tcgetattr(terminal, &before_) != 0)
            return;
        signalWhileHidden = 0;
        struct sigaction note = {};
        note.sa_handler = NoteSignal;
        for (std::size_t i = 0; i < signals.size(); ++i)
            sigaction(signals[i], &note, &actions_[i]);
        termios hidden = before_;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
        isHidden_ = tcsetattr(terminal, TCSAFLUSH, &hidden) == 0;
        hasActions_ = true;
    }
    ~HiddenTyping()
    {
        if (isHidden_)
            tcsetattr(terminal_, TCSAFLUSH, &before_);
        for (std::size_t i = 0; hasActions_ && i < signals.size(); ++i)
            sigaction(signals[i], &actions_[i], nullptr);
        if (hasActions_ && signalWhileHidden != 0)
            raise(signalWhileHidden);
    }
    HiddenTyping(const HiddenTyping&) = delete;
    HiddenTyping& operator=(const HiddenTyping&) = delete;

    bool isHidden() const { return isHidden_; }

private:
    static constexpr std::array signals = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTSTP};

    int terminal_;
    bool isHidden_ = false;
    bool hasActions_ = false;
    termios before_ = {};
    std::array<struct sigaction, signals.size()> actions_ = {};
};

/// \return false when a signal or the end comes before the end of the line, and for a line longer than a terminal keeps by itself.
bool ReadLine(int terminal, element& line)
{
    constexpr std::uint32_t maxLine = 4096;
    line.reserve(maxLine);
    while (line.length() < maxLine) {
        std::uint8_t byte = 0;
        if (signalWhileHidden != 0 || ::read(terminal, &byte, 1) != 1)
            return false;
        if (byte == '\n')
            return true;
        line.append(byte);
    }
    return false;
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
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signalNumber : interruptionSignals) {
        struct sigaction present = {};
        // A signal the caller wants ignored stays so.
        if (sigaction(signalNumber, nullptr, &present) == 0 && present.sa_handler == SIG_DFL)
            sigaction(signalNumber, &action, nullptr);
    }
}

bool WithInterruptionsHeld(const std::function<bool()>& action)
{
    sigset_t interruptions;
    sigset_t before;
    sigemptyset(&interruptions);
    for (const int signalNumber : interruptionSignals)
        sigaddset(&interruptions, signalNumber);
    pthread_sigmask(SIG_BLOCK, &interruptions, &before);
    const bool result = action();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return result;
}

std::chrono::nanoseconds ProcessorTime()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

SystemConsole::SystemConsole()
{
    // A standard stream that is closed would be the next file that is opened; instead it is one that cannot be used.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) < 0 && errno == EBADF)
            ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    // A file that grows beyond the limit of the process is a reason to refuse, and its beginning is removed.
    signal(SIGXFSZ, SIG_IGN);
}

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

bool SystemConsole::readHiddenLine(std::string_view prompt, element& line)
{
    line = element();
    const int file = ::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY);
    if (file < 0)
        return false;
    bool isRead = false;
    {
        const HiddenTyping hidden(file);
        isRead = hidden.isHidden() && WriteAll(file, {reinterpret_cast<const std::uint8_t*>(prompt.data()), prompt.size()}) &&
                 ReadLine(file, line);
        const std::uint8_t lineEnd = '\n';
        if (hidden.isHidden())
            WriteAll(file, {&lineEnd, 1});
    }
    ::close(file);
    if (!isRead)
        line = element();
    return isRead;
}

bool SystemConsole::outputIsTerminal() const
{
    return isatty(STDOUT_FILENO) != 0;
}

bool SystemConsole::errorIsTerminal() const
{
    return isatty(STDERR_FILENO) != 0;
}

bool SystemConsole::enableColor()
{
    return true;
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

bool SequentialFile::openDescriptor(int number)
{
    handle_ = fcntl(number, F_DUPFD_CLOEXEC, 0);
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

} // namespace ccrypto
