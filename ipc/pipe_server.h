#pragma once

#include "ipc/base_pipe.h"

#include <cstdint>

/// The answering end of a pipe, for one client at a time: Read, look at the items, StartMessage, add items, Write; and again.
class CCryptoPipeServer : public CCryptoBasePipe {
public:
    /// Creates the pipe at once; isListening() says whether that worked. \param secure see CreatePipe.
    CCryptoPipeServer(const char* name, bool secure, bool appendSession);
    ~CCryptoPipeServer() override;

    /// Creates the pipe's only instance; one that is there is closed first, its client with it.
    /// \param secure lets processes of low integrity connect as well. Where the system refuses the label, that is logged as an
    /// error and the pipe is created without it, which keeps those processes out and admits no others.
    [[nodiscard]] bool CreatePipe(bool secure);
    bool isListening() const { return isOpen(); }

    /// Waits for a client, at most the connect time-out.
    [[nodiscard]] bool ConnectPipe();

    /// Waits for a client and reads its request. On failure the client is disconnected, and the next Read waits for another.
    [[nodiscard]] bool Read();
    /// Sends the message as the response and disconnects the client, once it has read the response; it has the write time-out to do
    /// so.
    bool Write();
    /// Disconnects the client without a response, for the requests that want none.
    void Disconnect();

protected:
    /// Takes over a pipe that was created for overlapped transfers.
    void Listen(HANDLE pipe);

private:
    bool CreateInstance(bool secure, CCryptoAutoLogger& logger);
    void AwaitClose();

    bool buffersResponses_ = false;
};
