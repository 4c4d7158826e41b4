#include "ipc/pipe_client.h"

#include "core/diagnostics/auto_logger.h"
#include "ipc/session.h"

using namespace ccrypto;

CCryptoPipeClient::CCryptoPipeClient(const char* name, std::int32_t requestType, bool appendSession)
    : CCryptoBasePipe(static_cast<std::uint32_t>(requestType), defaultConnectTimeout, defaultReadTimeout, defaultWriteTimeout),
      requestType_(static_cast<std::uint32_t>(requestType))
{
    CCryptoAutoLogger logger("CCryptoPipeClient::CCryptoPipeClient", ccrypto::LoggerMode::resultExpected, "Client (%s), Type = %d",
                             name, requestType);
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
    const std::uint32_t patience = CurrentSession().busyTimeout;
    const ULONGLONG started = GetTickCount64();
    ULONGLONG waited = 0;
    // Another client may be quicker to take the instance that became free; then there is one to wait for again.
    do {
        if (stop().isRaised())
            return logger.fail(false, "Stop event");
        if (!WaitNamedPipeA(name().c_str(), static_cast<DWORD>(patience - waited))) {
            const DWORD error = GetLastError();
            close();
            if (error == ERROR_SEM_TIMEOUT)
                break;
            setStatus(statusNoPipe);
            logger.setWindowsError(error);
            return false;
        }

        open(CreateFileA(name().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr));
        if (isOpen())
            return logger.setResult(true);
        const DWORD error = GetLastError();
        if (error != ERROR_PIPE_BUSY) {
            logger.setWindowsError(error);
            return false;
        }
        waited = GetTickCount64() - started;
    } while (waited < patience);

    setStatus(statusBusy);
    return logger.fail(false, "Timeout");
}

bool CCryptoPipeClient::OpenToSend(CCryptoAutoLogger& logger)
{
    if (!isComplete())
        return logger.fail(false, "%s", messageIncomplete);
    if (!OpenPipe())
        return logger.fail(false, "Failed to open pipe; Server not running?");
    setRequestType(requestType_);
    setStatus(statusGood);
    return true;
}

bool CCryptoPipeClient::Call()
{
    CCryptoAutoLogger logger("CCryptoPipeClient::Call");
    if (!OpenToSend(logger))
        return false;

    const bool answered = WriteRequest() && ReadRequest();
    close();
    if (answered && status() != statusGood)
        return logger.fail(false, "The server answered with status %d", status());
    return logger.setResult(answered);
}

bool CCryptoPipeClient::CallWithoutReading()
{
    CCryptoAutoLogger logger("CCryptoPipeClient::CallWithoutReading");
    if (!OpenToSend(logger))
        return false;

    const bool written = WriteRequest();
    close();
    return logger.setResult(written);
}
