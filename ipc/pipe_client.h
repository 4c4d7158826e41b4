#pragma once

#include "ipc/base_pipe.h"

#include <cstdint>

/// The asking end of a pipe: every call opens a connection, sends the message that was built, reads the response into the same
/// object, and closes. Refilled, it may be called again.
class CCryptoPipeClient : public CCryptoBasePipe {
public:
    CCryptoPipeClient(const char* name, std::int32_t requestType, bool appendSession);
    ~CCryptoPipeClient() override;

    /// Waits up to 15 seconds for the server to become free and opens its pipe. On failure the status is -4 when it stayed busy, -2
    /// when there is no such pipe, and unchanged when another client was quicker.
    bool OpenPipe();

    /// \return true when a response with status 0 has come; the item readers then read it. A response with another status is
    /// there to read too, but gives false.
    bool Call();
    /// \return true when the request was written; no response is waited for.
    bool CallWithoutReading();
};
