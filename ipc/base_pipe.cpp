#include "ipc/base_pipe.h"

#include "core/diagnostics/auto_logger.h"
#include "core/log/log_writers.h"
#include "ipc/overlapped_transfer.h"
#include "ipc/session.h"

#include <cstdio>

using namespace ccrypto;

/// What the log says of a transfer in one direction.
struct CCryptoBasePipe::TransferTexts {
    const char* operation;
    const char* timedOut;
    const char* wrongCount;
    const char* noResult; ///< after the system's error; may be null
};

CCryptoBasePipe::CCryptoBasePipe(std::uint32_t requestType, std::uint32_t connectTimeout, std::uint32_t readTimeout,
                                 std::uint32_t writeTimeout)
    : CCryptoPipeRequestData(requestType), connectTimeout_(connectTimeout), readTimeout_(readTimeout), writeTimeout_(writeTimeout),
      transferEvent_(CreateEventA(nullptr, TRUE, FALSE, nullptr))
{
    if (!transferEvent_ || stop_.event() == nullptr)
        WriteErrorEx_G("CCryptoBasePipe: No events from the system (%lu); every transfer will fail", GetLastError());
}

CCryptoBasePipe::~CCryptoBasePipe()
{
    Stop();
}

void CCryptoBasePipe::SetName(const char* name, bool appendSession)
{
    CCryptoAutoLogger logger("CCryptoBasePipe::SetName");
    name_ = name;
    if (appendSession) {
        char suffix[sizeof "_ffffffff"];
        std::snprintf(suffix, sizeof suffix, "_%x", CurrentSession().number());
        name_ += suffix;
    }
    logger.WriteLog("%s", name_.c_str());
    logger.setResult(true);
}

void CCryptoBasePipe::SetTimeouts(std::uint32_t connectTimeout, std::uint32_t readTimeout, std::uint32_t writeTimeout)
{
    connectTimeout_ = connectTimeout;
    readTimeout_ = readTimeout;
    writeTimeout_ = writeTimeout;
}

void CCryptoBasePipe::Stop()
{
    CCryptoAutoLogger logger("CCryptoBasePipe::Stop");
    logger.setResult(stop_.Raise());
}

bool CCryptoBasePipe::LogStop(const char* operation)
{
    CCryptoAutoLogger logger(operation);
    return logger.fail(false, "Stop event");
}

void CCryptoBasePipe::DisconnectStopped(const char* operation)
{
    LogStop(operation);
    DisconnectNamedPipe(pipe_.get());
}

bool CCryptoBasePipe::RefusedByStop(const char* operation)
{
    if (!stop_.isRaised())
        return false;
    DisconnectStopped(operation);
    return true;
}

bool CCryptoBasePipe::FinishTransfer(OverlappedTransfer& transfer, std::uint32_t count, std::uint32_t milliseconds,
                                     const TransferTexts& texts, CCryptoAutoLogger& logger)
{
    switch (transfer.Wait(stop_, milliseconds)) {
    case OverlappedTransfer::Outcome::done:
        break;
    case OverlappedTransfer::Outcome::stopped:
        DisconnectStopped(texts.operation);
        return logger.setResult(false);
    case OverlappedTransfer::Outcome::timedOut:
        return logger.fail(false, "%s", texts.timedOut);
    case OverlappedTransfer::Outcome::failed:
        logger.setWindowsError(transfer.error());
        if (texts.noResult != nullptr && !transfer.waitFailed())
            logger.setError(texts.noResult);
        return false;
    }

    if (transfer.transferred() != count)
        return logger.fail(false, "%s", texts.wrongCount);
    return logger.setResult(true);
}

bool CCryptoBasePipe::ReadPipe(void* buffer, std::uint32_t count)
{
    static constexpr TransferTexts texts = {"CCryptoBasePipe::ReadPipe", "Timeout; Read cancelled", "Not enough data",
                                            "GetOverlappedResult() failed"};
    CCryptoAutoLogger logger(texts.operation);

    if (RefusedByStop(texts.operation))
        return logger.setResult(false);
    OverlappedTransfer transfer(pipe_.get(), transferEvent_.get());
    if (!transfer.Read(buffer, count)) {
        logger.setWindowsError(transfer.error());
        return false;
    }
    return FinishTransfer(transfer, count, readTimeout_, texts, logger);
}

bool CCryptoBasePipe::WritePipe(const void* buffer, std::uint32_t count)
{
    static constexpr TransferTexts texts = {"CCryptoBasePipe::WritePipe", "Timeout; Write cancelled",
                                            "Wrong number of bytes written", nullptr};
    CCryptoAutoLogger logger(texts.operation);

    if (RefusedByStop(texts.operation))
        return logger.setResult(false);
    OverlappedTransfer transfer(pipe_.get(), transferEvent_.get());
    if (!transfer.Write(buffer, count)) {
        logger.setWindowsError(transfer.error());
        return false;
    }
    return FinishTransfer(transfer, count, writeTimeout_, texts, logger);
}

bool CCryptoBasePipe::WriteRequest()
{
    CCryptoAutoLogger logger("CCryptoBasePipe::WriteRequest");
    if (!isComplete())
        return logger.fail(false, "%s", messageIncomplete);

    for (std::uint32_t index = 0; GetPart(index) != nullptr; ++index) {
        if (!WritePipe(GetPart(index), GetPartSize(index)))
            return logger.setResult(false);
    }
    return logger.setResult(position() == 0 || WritePipe(bodyBytes(), position()));
}

bool CCryptoBasePipe::ReadRequest()
{
    CCryptoAutoLogger logger("CCryptoBasePipe::ReadRequest");
    for (std::uint32_t index = 0; GetPart(index) != nullptr; ++index) {
        if (!ReadPipe(GetPart(index), GetPartSize(index))) {
            DropBody();
            return logger.setResult(false);
        }
    }

    const std::uint32_t announced = position();
    if (!ReceiveBody())
        return logger.fail(false, "A body of %u bytes is announced; the limit is %u bytes", announced, maximumBody);
    if (announced != 0 && !ReadPipe(bodyBytes(), announced)) {
        DropBody();
        return logger.setResult(false);
    }
    return logger.setResult(true);
}
