#pragma once

#include "core/platform/win32/scoped_handle.h"
#include "ipc/session.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The other end of a pipe, by plain blocking Win32 calls, so that it can do what the library's own never would.
namespace ccrypto::peers {

/// Time-outs in milliseconds: one that a test waits out, and one that it does not.
inline constexpr std::uint32_t soon = 100;
inline constexpr std::uint32_t never = 600000;

/// How long clients wait for a busy server while one lives.
class BusyTimeout {
public:
    explicit BusyTimeout(std::uint32_t milliseconds) : before_(std::exchange(CurrentSession().busyTimeout, milliseconds)) {}
    ~BusyTimeout() { CurrentSession().busyTimeout = before_; }
    BusyTimeout(const BusyTimeout&) = delete;
    BusyTimeout& operator=(const BusyTimeout&) = delete;

private:
    std::uint32_t before_;
};

/// A pipe name that no other test of any process uses.
inline std::string FreshPipeName()
{
    static int number = 0;
    return "\\\\.\\pipe\\ipc_tests_" + std::to_string(GetCurrentProcessId()) + "_" + std::to_string(++number);
}

inline bool WriteMessage(HANDLE pipe, std::string_view message)
{
    DWORD written = 0;
    return WriteFile(pipe, message.data(), static_cast<DWORD>(message.size()), &written, nullptr) && written == message.size();
}

/// Up to `count` bytes; fewer when the other end goes.
inline std::string ReadBytes(HANDLE pipe, std::uint32_t count)
{
    std::string bytes(count, '\0');
    std::uint32_t filled = 0;
    DWORD got = 0;
    while (filled < count && ReadFile(pipe, bytes.data() + filled, count - filled, &got, nullptr) && got != 0)
        filled += got;
    bytes.resize(filled);
    return bytes;
}

inline platform::ScopedHandle Connect(const std::string& name, DWORD flags = 0)
{
    WaitNamedPipeA(name.c_str(), 10000);
    return platform::ScopedHandle(
        CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, flags, nullptr));
}

inline platform::ScopedHandle Listen(const std::string& name, DWORD direction = PIPE_ACCESS_DUPLEX)
{
    return platform::ScopedHandle(
        CreateNamedPipeA(name.c_str(), direction, PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1, 65536, 65536, 0, nullptr));
}

/// A whole request, header and body.
inline std::string ReadRequest(HANDLE pipe)
{
    std::string request = ReadBytes(pipe, 12);
    if (request.size() != 12)
        return request;
    std::uint32_t length = 0;
    for (int index = 11; index >= 8; --index)
        length = length << 8 | static_cast<unsigned char>(request[static_cast<std::size_t>(index)]);
    return request + ReadBytes(pipe, length);
}

} // namespace ccrypto::peers
