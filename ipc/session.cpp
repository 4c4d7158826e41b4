#include "ipc/session.h"

#include <windows.h>

#include <wtsapi32.h>

#include <cstring>

namespace {

std::uint32_t SessionNumber()
{
    char* answer = nullptr;
    DWORD size = 0;
    if (WTSQuerySessionInformationA(WTS_CURRENT_SERVER_HANDLE, WTS_CURRENT_SESSION, WTSSessionId, &answer, &size)) {
        std::uint32_t number = 0;
        if (size >= sizeof number)
            std::memcpy(&number, answer, sizeof number);
        WTSFreeMemory(answer);
        return number;
    }

    DWORD number = 0;
    return ProcessIdToSessionId(GetCurrentProcessId(), &number) ? number : 0;
}

bool HasInputDesktop()
{
    const HDESK desktop = OpenInputDesktop(0, FALSE, DESKTOP_READOBJECTS);
    if (desktop == nullptr)
        return false;
    CloseDesktop(desktop);
    return true;
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
