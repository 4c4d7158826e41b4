#pragma once

#include "ipc/base_pipe.h"

#include <cstdint>

/// The asking end of a pipe: every call opens a connection, sends the message that was built, reads the response into the same
/// object, and closes.
///
/// What a call leaves, the response's header or the status of a failed open, remains until StartMessage or the next call: refilled,
/// the object may be called again, and every call sends the request type of the constructor and status 0.
class CCryptoPipeClient : public CCryptoBasePipe {
public:
    CCryptoPipeClient(const char* name, std::int32_t requestType, bool appendSession);
    ~CCryptoPipeClient() override;

    /// Waits up to 15 seconds in all for the server to become free, again when another client takes it first, and opens its pipe.
    /// On failure the status is -4 when it stayed busy, -2 when it could not be waited for (for instance, no such pipe), and
    /// unchanged when the pipe was free and could not be opened.
    [[nodiscard]] bool OpenPipe();

    /// \return true when a response with status 0 has come; the item readers then read it. After a response with another status,
    /// which gives false, status() and body() hold what came, and every item reader fails.
    [[nodiscard]] bool Call();
    /// \return true when the request was written; no response is waited for.
    [[nodiscard]] bool CallWithoutReading();

private:
    /// Opens the pipe for the message, unless it cannot be sent anyway, and gives it the header of a request.
    bool OpenToSend(CCryptoAutoLogger& logger);

    std::uint32_t requestType_;
};
