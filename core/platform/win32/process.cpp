#include "core/platform/process.h"

#include "core/platform/win32/wide.h"

#include <windows.h>

#include <array>

namespace ccrypto::platform {

std::uint32_t CurrentProcessId()
{
    return GetCurrentProcessId();
}

std::uint32_t CurrentThreadId()
{
    return GetCurrentThreadId();
}

std::uint32_t LastError()
{
    return GetLastError();
}

void SetLastError(std::uint32_t code)
{
    ::SetLastError(code);
}

std::string SystemErrorText(std::uint32_t code)
{
    std::array<wchar_t, 512> text{};
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
                       MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), text.data(), static_cast<DWORD>(text.size()), nullptr);
    return WideToUtf8({text.data(), length});
}

bool HostExecutablePath(std::string& path, std::uint32_t& error)
{
    std::wstring wide(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, wide.data(), static_cast<DWORD>(wide.size()));
        if (length == 0) {
            error = GetLastError();
            return false;
        }
        // A path that fills the buffer was cut; no path has more than 32767 characters.
        if (length < wide.size() || wide.size() > 0x8000) {
            path = WideToUtf8({wide.data(), length});
            return true;
        }
        wide.resize(wide.size() * 2);
    }
}

std::string CurrentDirectory()
{
    std::wstring wide(MAX_PATH, L'\0');
    DWORD length = GetCurrentDirectoryW(static_cast<DWORD>(wide.size()), wide.data());
    if (length > wide.size()) {
        wide.resize(length);
        length = GetCurrentDirectoryW(static_cast<DWORD>(wide.size()), wide.data());
    }
    // Another thread may have changed to a longer directory in between.
    return length < wide.size() ? WideToUtf8({wide.data(), length}) : std::string();
}

std::string CommandLine()
{
    return WideToUtf8(GetCommandLineW());
}

std::string ComputerName()
{
    std::array<wchar_t, MAX_COMPUTERNAME_LENGTH + 1> name{};
    DWORD length = static_cast<DWORD>(name.size());
    return GetComputerNameW(name.data(), &length) ? WideToUtf8({name.data(), length}) : std::string();
}

bool ProcessIsEnding()
{
    using Query = BOOLEAN(NTAPI*)();
    const HMODULE system = GetModuleHandleA("ntdll.dll");
    const FARPROC found = system != nullptr ? GetProcAddress(system, "RtlDllShutdownInProgress") : nullptr;
    return found != nullptr && reinterpret_cast<Query>(reinterpret_cast<void*>(found))() != FALSE;
}

} // namespace ccrypto::platform
