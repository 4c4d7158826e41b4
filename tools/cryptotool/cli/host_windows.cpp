#include "core/platform/win32/scoped_handle.h"
#include "core/platform/win32/wide.h"
#include "tools/cryptotool/cli/host.h"

#include <windows.h>

#include <io.h>
#include <shellapi.h>

#include <algorithm>
#include <array>
#include <mutex>

namespace ccrypto {

namespace {

constexpr std::size_t maxAtOnce = std::size_t{1} << 20;

HANDLE HandleOf(std::intptr_t handle)
{
    return reinterpret_cast<HANDLE>(handle); // the header holds what fits both systems
}

std::int64_t ReadSome(HANDLE file, std::span<std::uint8_t> target)
{
    DWORD count = 0;
    if (ReadFile(file, target.data(), static_cast<DWORD>(std::min(target.size(), maxAtOnce)), &count, nullptr))
        return count;
    // The other end of a pipe was closed: that is how one ends.
    return GetLastError() == ERROR_BROKEN_PIPE || GetLastError() == ERROR_HANDLE_EOF ? 0 : -1;
}

bool WriteAll(HANDLE file, std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        DWORD count = 0;
        if (!WriteFile(file, bytes.data(), static_cast<DWORD>(std::min(bytes.size(), maxAtOnce)), &count, nullptr) || count == 0)
            return false;
        bytes = bytes.subspan(count);
    }
    return true;
}

// The event arrives on a thread of the system's.
std::mutex unfinishedFileLock;
std::wstring unfinishedFile;

BOOL WINAPI RemoveUnfinishedFile(DWORD)
{
    const std::lock_guard lock(unfinishedFileLock);
    if (!unfinishedFile.empty())
        DeleteFileW(unfinishedFile.c_str());
    // The next handler is the system's own, which ends the process.
    return FALSE;
}

bool IsTerminal(DWORD stream)
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(stream), &mode) != FALSE;
}

/// What is written to the console is UTF-8 while one lives. The console itself goes on when the program has ended.
class Utf8Output {
public:
    Utf8Output() : before_(GetConsoleOutputCP()) { SetConsoleOutputCP(CP_UTF8); }
    ~Utf8Output() { SetConsoleOutputCP(before_); }
    Utf8Output(const Utf8Output&) = delete;
    Utf8Output& operator=(const Utf8Output&) = delete;

private:
    UINT before_;
};

/// The console takes colour sequences while one lives.
class ColorOutput {
public:
    explicit ColorOutput(DWORD stream) : handle_(GetStdHandle(stream))
    {
        isConsole_ = GetConsoleMode(handle_, &before_) != FALSE;
        isOn_ = !isConsole_ || SetConsoleMode(handle_, before_ | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    }
    ~ColorOutput()
    {
        if (isConsole_)
            SetConsoleMode(handle_, before_);
    }
    ColorOutput(const ColorOutput&) = delete;
    ColorOutput& operator=(const ColorOutput&) = delete;

    /// False for a console that cannot be switched: Windows before version 1511.
    bool isOn() const { return isOn_; }

private:
    HANDLE handle_;
    DWORD before_ = 0;
    bool isConsole_;
    bool isOn_;
};

std::intptr_t Open(const std::string& name, DWORD access)
{
    return reinterpret_cast<std::intptr_t>(CreateFileW(platform::Utf8ToWide(name).c_str(), access,
                                                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                                       OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

} // namespace

std::vector<std::string> CommandLineWords(int, char**)
{
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> words;
    for (int index = 1; wide != nullptr && index < count; ++index)
        words.push_back(platform::WideToUtf8(wide[index]));
    LocalFree(wide);
    return words;
}

void RemoveWhenInterrupted(const std::string& name)
{
    // Added once and never taken away: a handler that runs may be waiting for the lock.
    [[maybe_unused]] static const BOOL isAdded = SetConsoleCtrlHandler(RemoveUnfinishedFile, TRUE);
    const std::lock_guard lock(unfinishedFileLock);
    unfinishedFile = platform::Utf8ToWide(name);
}

bool WithInterruptionsHeld(const std::function<bool()>& action)
{
    // The handler runs in a thread of its own, which nothing holds back; it looks at the name when it runs.
    return action();
}

std::chrono::nanoseconds ProcessorTime()
{
    FILETIME created, ended, kernel, user;
    if (!GetThreadTimes(GetCurrentThread(), &created, &ended, &kernel, &user))
        return {};
    const auto ticks = [](const FILETIME& time) { return std::int64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime; };
    return std::chrono::nanoseconds((ticks(kernel) + ticks(user)) * 100);
}

SystemConsole::SystemConsole()
{
    static const Utf8Output utf8Output;
}

std::int64_t SystemConsole::readInput(std::span<std::uint8_t> target)
{
    return ReadSome(GetStdHandle(STD_INPUT_HANDLE), target);
}

bool SystemConsole::writeOutput(std::span<const std::uint8_t> bytes)
{
    return WriteAll(GetStdHandle(STD_OUTPUT_HANDLE), bytes);
}

void SystemConsole::writeError(std::string_view text)
{
    WriteAll(GetStdHandle(STD_ERROR_HANDLE), {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

bool SystemConsole::readHiddenLine(std::string_view prompt, element& line)
{
    line = element();
    const platform::ScopedHandle input(HandleOf(Open("CONIN$", GENERIC_READ | GENERIC_WRITE)));
    const platform::ScopedHandle output(HandleOf(Open("CONOUT$", GENERIC_READ | GENERIC_WRITE)));
    DWORD mode = 0;
    if (!GetConsoleMode(input.get(), &mode) || !SetConsoleMode(input.get(), (mode | ENABLE_LINE_INPUT) & ~DWORD{ENABLE_ECHO_INPUT}))
        return false;
    WriteAll(output.get(), {reinterpret_cast<const std::uint8_t*>(prompt.data()), prompt.size()});
    std::array<wchar_t, 4096> units{};
    DWORD count = 0;
    const bool isRead = ReadConsoleW(input.get(), units.data(), units.size(), &count, nullptr) != FALSE;
    SetConsoleMode(input.get(), mode);
    const std::uint8_t lineEnd[] = {'\r', '\n'};
    WriteAll(output.get(), lineEnd);

    const std::wstring_view typed(units.data(), count);
    const std::size_t end = typed.find_first_of(L"\r\n");
    // A line without an end was cut.
    const bool isWhole = isRead && end != std::wstring_view::npos;
    if (isWhole)
        line = element::FromUtf16(reinterpret_cast<const char16_t*>(units.data()), static_cast<std::uint32_t>(end));
    platform::SecureWipe(units.data(), sizeof units);
    return isWhole;
}

bool SystemConsole::outputIsTerminal() const
{
    return IsTerminal(STD_OUTPUT_HANDLE);
}

bool SystemConsole::errorIsTerminal() const
{
    return IsTerminal(STD_ERROR_HANDLE);
}

bool SystemConsole::enableColor()
{
    static const ColorOutput output(STD_OUTPUT_HANDLE);
    static const ColorOutput error(STD_ERROR_HANDLE);
    return output.isOn() && error.isOn();
}

SequentialFile::~SequentialFile()
{
    if (handle_ != closed)
        CloseHandle(HandleOf(handle_));
}

bool SequentialFile::openToRead(const std::string& name)
{
    handle_ = Open(name, GENERIC_READ);
    return handle_ != closed;
}

bool SequentialFile::openToWrite(const std::string& name)
{
    handle_ = Open(name, GENERIC_WRITE);
    return handle_ != closed;
}

bool SequentialFile::openDescriptor(int number)
{
    // -1 stands for a descriptor that does not exist, -2 for one without a stream; as a handle, -1 is this process.
    const std::intptr_t handle = _get_osfhandle(number);
    if (handle == -1 || handle == -2)
        return false;
    HANDLE copy = nullptr;
    const HANDLE own = GetCurrentProcess();
    if (!DuplicateHandle(own, HandleOf(handle), own, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS))
        return false;
    handle_ = reinterpret_cast<std::intptr_t>(copy);
    return true;
}

std::int64_t SequentialFile::read(std::span<std::uint8_t> target)
{
    return ReadSome(HandleOf(handle_), target);
}

bool SequentialFile::write(std::span<const std::uint8_t> bytes)
{
    return WriteAll(HandleOf(handle_), bytes);
}

std::int64_t SequentialFile::size() const
{
    LARGE_INTEGER size{};
    return GetFileType(HandleOf(handle_)) == FILE_TYPE_DISK && GetFileSizeEx(HandleOf(handle_), &size) ? size.QuadPart : -1;
}

} // namespace ccrypto
