#include "ipc/session.h"

#include "core/platform/system_handle.h"

#include <windows.h>

#include <wtsapi32.h>

#include <cstring>

namespace ccrypto {

namespace {

struct DesktopKind {
    using Value = HDESK;
    static Value none() { return nullptr; }
    static void close(Value value) { CloseDesktop(value); }
};

struct TerminalMemoryKind {
    using Value = char*;
    static Value none() { return nullptr; }
    static void close(Value value) { WTSFreeMemory(value); }
};

std::uint32_t SessionNumber()
{
    ccrypto::SystemHandle<TerminalMemoryKind> answer;
    DWORD size = 0;
    DWORD number = 0;
    if (WTSQuerySessionInformationA(WTS_CURRENT_SERVER_HANDLE, WTS_CURRENT_SESSION, WTSSessionId, answer.receive(), &size) &&
        size >= sizeof number) {
        std::memcpy(&number, answer.get(), sizeof number);
        return number;
    }
    return ProcessIdToSessionId(GetCurrentProcessId(), &number) ? number : 0;
}

bool HasInputDesktop()
{
    return static_cast<bool>(ccrypto::SystemHandle<DesktopKind>(OpenInputDesktop(0, FALSE, DESKTOP_READOBJECTS)));
}

void Pause(std::uint32_t milliseconds)
{
    Sleep(milliseconds);
}

} // namespace

Session& CurrentSession()
{
    static Session session = {SessionNumber, HasInputDesktop, Pause, 15000};
    return session;
}

} // namespace ccrypto
