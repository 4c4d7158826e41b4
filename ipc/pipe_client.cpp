#include "ipc/pipe_client.h"

#include "core/auto_logger.h"
#include "ipc/session.h"

CCryptoPipeClient::CCryptoPipeClient(const char* name, std::int32_t requestType, bool appendSession)
    : CCryptoBasePipe(static_cast<std::uint32_t>(requestType), defaultConnectTimeout, defaultReadTimeout, defaultWriteTimeout)
{
    CCryptoAutoLogger logger("CCryptoPipeClient::CCryptoPipeClient", 0, "Client (%s), Type = %d", name, requestType);
    SetName(name, appendSession);
    logger.setResult(true);
}

CCryptoPipeClient::~CCryptoPipeClient()
{
    close();
}

bool CCryptoPipeClient::OpenPipe()
{
    CCryptoAutoLogger logger("CCryptoPipeClient::OpenPipe");
    if (!WaitNamedPipeA(name().c_str(), CurrentSession().busyTimeout)) {
        const DWORD error = GetLastError();
        close();
        if (error == ERROR_SEM_TIMEOUT) {
            setStatus(statusBusy);
            return logger.setRetValue(3, false, "Timeout");
        }
        setStatus(statusNoPipe);
        logger.setWindowsError(error);
        return false;
    }

    open(CreateFileA(name().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr));
    if (!isOpen()) {
        logger.setLastWindowsError();
        return false;
    }
    return logger.setResult(true);
}

bool CCryptoPipeClient::Call()
{
    CCryptoAutoLogger logger("CCryptoPipeClient::Call");
    if (!OpenPipe())
        return logger.setRetValue(3, false, "Failed to open pipe; Server not running?");

    const bool answered = WriteRequest() && ReadRequest();
    close();
    if (answered && status() != statusGood)
        return logger.setRetValue(3, false, "The server answered with status %d", status());
    return logger.setResult(answered);
}

bool CCryptoPipeClient::CallWithoutReading()
{
    CCryptoAutoLogger logger("CCryptoPipeClient::CallWithoutReading");
    if (!OpenPipe())
        return logger.setRetValue(3, false, "Failed to open pipe; Server not running?");

    const bool written = WriteRequest();
    close();
    return logger.setResult(written);
}
