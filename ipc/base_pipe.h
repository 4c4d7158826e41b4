#pragma once

#include "ipc/overlapped_transfer.h"
#include "ipc/pipe_request_data.h"

#include <cstdint>
#include <string>

class CCryptoAutoLogger;

/// One end of a named pipe, and the message that goes over it: time-outs, a stop event, and overlapped transfers of whole messages.
///
/// An object belongs to one thread; another may only call Stop. Failures are false results with the reason in the log.
class CCryptoBasePipe : public CCryptoPipeRequestData {
public:
    static constexpr std::uint32_t defaultConnectTimeout = 120000;
    static constexpr std::uint32_t defaultReadTimeout = 240000;
    static constexpr std::uint32_t defaultWriteTimeout = 60000;

    /// Time-outs in milliseconds.
    CCryptoBasePipe(std::uint32_t requestType, std::uint32_t connectTimeout, std::uint32_t readTimeout, std::uint32_t writeTimeout);
    ~CCryptoBasePipe() override;

    /// Receives a whole message in place of the one held; the cursor is at its first item. A message that announces more than
    /// `maximumBody` bytes is refused before anything is allocated for it. After a failure the message is without items.
    virtual bool ReadRequest();
    /// Sends the message as it was built: the header, then the body where there is one.
    bool WriteRequest();

    /// One transfer of exactly `count` bytes; none starts after Stop. ReadPipe leaves `buffer` undefined on failure.
    bool ReadPipe(void* buffer, std::uint32_t count);
    bool WritePipe(const void* buffer, std::uint32_t count);

    /// The pipe's name, followed when `appendSession` by "_" and the logon session's number in lower-case hexadecimal, which
    /// keeps the servers of different sessions apart.
    void SetName(const char* name, bool appendSession);
    const std::string& name() const { return name_; }

    /// In milliseconds, for the transfers that follow.
    void SetTimeouts(std::uint32_t connectTimeout, std::uint32_t readTimeout, std::uint32_t writeTimeout);

    /// Ends every wait of the object, present and future, but for the wait of a client for a busy server, which ends after its 15
    /// seconds at the latest. The only call for another thread.
    void Stop();

protected:
    /// The reason for not sending a message that lost an item.
    static constexpr const char* messageIncomplete = "The message has lost an item and is not sent";

    bool isOpen() const { return static_cast<bool>(pipe_); }
    HANDLE pipe() const { return pipe_.get(); }
    /// For one transfer at a time.
    HANDLE transferEvent() const { return transferEvent_.get(); }
    const ccrypto::StopSignal& stop() const { return stop_; }
    std::uint32_t connectTimeout() const { return connectTimeout_; }
    std::uint32_t writeTimeout() const { return writeTimeout_; }
    void open(HANDLE pipe) { pipe_.reset(pipe); }
    void close() { pipe_.reset(); }

    /// Writes the line of a wait that Stop ended, under `operation`. \return false.
    static bool LogStop(const char* operation);

private:
    struct TransferTexts;
    void DisconnectStopped(const char* operation);
    /// True when Stop came before the transfer; the other end is then disconnected.
    bool RefusedByStop(const char* operation);
    bool FinishTransfer(ccrypto::OverlappedTransfer& transfer, std::uint32_t count, std::uint32_t milliseconds,
                        const TransferTexts& texts, CCryptoAutoLogger& logger);

    std::uint32_t connectTimeout_;
    std::uint32_t readTimeout_;
    std::uint32_t writeTimeout_;
    ccrypto::platform::ScopedHandle pipe_;
    ccrypto::platform::ScopedHandle transferEvent_;
    ccrypto::StopSignal stop_;
    std::string name_;
};
