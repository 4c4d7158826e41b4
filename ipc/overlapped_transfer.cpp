#include "ipc/overlapped_transfer.h"

namespace ccrypto {

OverlappedTransfer::OverlappedTransfer(HANDLE pipe, HANDLE event) : pipe_(pipe)
{
    overlapped_.hEvent = event;
}

OverlappedTransfer::~OverlappedTransfer()
{
    Cancel();
}

bool OverlappedTransfer::Started(BOOL completed)
{
    completed_ = completed != FALSE;
    error_ = completed ? ERROR_SUCCESS : GetLastError();
    pending_ = completed_ || error_ == ERROR_IO_PENDING;
    return pending_;
}

bool OverlappedTransfer::Read(void* buffer, std::uint32_t count)
{
    return Started(ReadFile(pipe_, buffer, count, nullptr, &overlapped_));
}

bool OverlappedTransfer::Write(const void* buffer, std::uint32_t count)
{
    return Started(WriteFile(pipe_, buffer, count, nullptr, &overlapped_));
}

bool OverlappedTransfer::Connect()
{
    if (Started(ConnectNamedPipe(pipe_, &overlapped_)))
        return true;
    if (error_ != ERROR_PIPE_CONNECTED && error_ != ERROR_NO_DATA)
        return false;

    // Nothing is under way; the connection is already there.
    overlapped_.Internal = 0;
    error_ = ERROR_SUCCESS;
    pending_ = true;
    completed_ = true;
    return true;
}

OverlappedTransfer::Outcome OverlappedTransfer::Wait(const StopSignal& stop, std::uint32_t milliseconds)
{
    if (completed_)
        return stop.isRaised() ? Outcome::stopped : Result();

    const HANDLE handles[] = {stop.event(), overlapped_.hEvent};
    switch (WaitForMultipleObjects(2, handles, FALSE, milliseconds)) {
    case WAIT_OBJECT_0:
        return Outcome::stopped;
    case WAIT_OBJECT_0 + 1:
        return Result();
    case WAIT_TIMEOUT:
        return Outcome::timedOut;
    default:
        error_ = GetLastError();
        waitFailed_ = true;
        return Outcome::failed;
    }
}

OverlappedTransfer::Outcome OverlappedTransfer::Result()
{
    pending_ = false;
    if (GetOverlappedResult(pipe_, &overlapped_, &transferred_, FALSE))
        return Outcome::done;
    error_ = GetLastError();
    return Outcome::failed;
}

bool OverlappedTransfer::Cancel()
{
    if (!pending_)
        return false;
    pending_ = false;
    // The peer has no say in this: cancelling completes the operation whatever the other end does.
    CancelIoEx(pipe_, &overlapped_);
    return GetOverlappedResult(pipe_, &overlapped_, &transferred_, TRUE) != FALSE;
}

} // namespace ccrypto
