#include "core/platform/process.h"

#include "core/platform/posix/owned_descriptor.h"

#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace ccrypto::platform {

namespace {

// Asked for by every lock, so the system call is made once a thread; a forked child begins with another number.
thread_local std::uint32_t threadId = 0;

void ForgetThreadId()
{
    threadId = 0;
}

} // namespace

std::uint32_t CurrentProcessId()
{
    return static_cast<std::uint32_t>(getpid());
}

std::uint32_t CurrentThreadId()
{
    if (threadId == 0) {
        [[maybe_unused]] static const int registered = pthread_atfork(nullptr, nullptr, ForgetThreadId);
        threadId = static_cast<std::uint32_t>(gettid());
    }
    return threadId;
}

std::uint32_t LastError()
{
    return static_cast<std::uint32_t>(errno);
}

void SetLastError(std::uint32_t code)
{
    errno = static_cast<int>(code);
}

std::string SystemErrorText(std::uint32_t code)
{
    const int number = static_cast<int>(code);
    // strerror_r makes up a text for codes it does not know.
    if (number <= 0 || strerrordesc_np(number) == nullptr)
        return {};
    std::array<char, 256> buffer{};
    return strerror_r(number, buffer.data(), buffer.size());
}

bool HostExecutablePath(std::string& path, std::uint32_t& error)
{
    std::array<char, 4096> buffer{};
    const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length < 0) {
        error = LastError();
        return false;
    }
    path.assign(buffer.data(), static_cast<std::size_t>(length));
    return true;
}

std::string CurrentDirectory()
{
    std::array<char, 4096> buffer{};
    return getcwd(buffer.data(), buffer.size()) != nullptr ? buffer.data() : "";
}

std::string CommandLine()
{
    std::string words;
    const OwnedDescriptor file(open("/proc/self/cmdline", O_RDONLY | O_CLOEXEC));
    if (!file)
        return words;
    std::array<char, 4096> buffer{};
    ssize_t count = 0;
    while ((count = read(file.get(), buffer.data(), buffer.size())) > 0)
        words.append(buffer.data(), static_cast<std::size_t>(count));
    if (!words.empty())
        words.pop_back();
    std::ranges::replace(words, '\0', ' ');
    return words;
}

std::string ComputerName()
{
    std::array<char, 256> buffer{};
    return gethostname(buffer.data(), buffer.size() - 1) == 0 ? buffer.data() : "";
}

bool ProcessIsEnding()
{
    return false;
}

} // namespace ccrypto::platform
