#include "ipc/pipe_server.h"

#include "core/diagnostics/auto_logger.h"
#include "ipc/overlapped_transfer.h"

#include <sddl.h>

using namespace ccrypto;

namespace {

struct LocalMemoryKind {
    using Value = PSECURITY_DESCRIPTOR;
    static Value none() { return nullptr; }
    static void close(Value value) { LocalFree(value); }
};
using SecurityDescriptor = ccrypto::SystemHandle<LocalMemoryKind>;

constexpr DWORD noRequest = 0;
constexpr DWORD openMode = PIPE_ACCESS_DUPLEX | WRITE_DAC | FILE_FLAG_OVERLAPPED;
constexpr DWORD pipeMode = PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT;
constexpr DWORD instances = 1;
constexpr DWORD outBuffer = 0;
constexpr DWORD inBuffer = 10;

/// Integrity labels came with version 6.
bool SystemHasIntegrityLabels()
{
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    return GetVersionExA(&version) && version.dwMajorVersion >= 6;
}

/// A mandatory label of low integrity with no-write-up. None, with the reason in the log, when the system refuses it.
SecurityDescriptor LowIntegrityDescriptor(CCryptoAutoLogger& logger)
{
    SecurityDescriptor descriptor;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorA("S:(ML;;NW;;;LW)", SDDL_REVISION_1, descriptor.receive(), nullptr)) {
        logger.WriteErrorEx("The system refuses the low integrity label (%lu); the pipe is created without it", GetLastError());
    }
    return descriptor;
}

} // namespace

CCryptoPipeServer::CCryptoPipeServer(const char* name, bool secure, bool appendSession)
    : CCryptoBasePipe(noRequest, defaultConnectTimeout, defaultReadTimeout, defaultWriteTimeout)
{
    CCryptoAutoLogger logger("CCryptoPipeServer::CCryptoPipeServer", ccrypto::LoggerMode::resultExpected, "Server:%s", name);
    SetName(name, appendSession);
    CreateInstance(secure, logger);
}

CCryptoPipeServer::~CCryptoPipeServer()
{
    close();
}

bool CCryptoPipeServer::CreatePipe(bool secure)
{
    CCryptoAutoLogger logger("CCryptoPipeServer::CreatePipe");
    return CreateInstance(secure, logger);
}

bool CCryptoPipeServer::CreateInstance(bool secure, CCryptoAutoLogger& logger)
{
    // Only one instance may exist, so the old one is closed first.
    close();

    const SecurityDescriptor descriptor =
        secure && SystemHasIntegrityLabels() ? LowIntegrityDescriptor(logger) : SecurityDescriptor();
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, descriptor.get(), TRUE};

    Listen(CreateNamedPipeA(name().c_str(), openMode, pipeMode, instances, outBuffer, inBuffer, 0,
                            descriptor ? &attributes : nullptr));
    if (!isOpen()) {
        logger.setLastWindowsError();
        return false;
    }
    return logger.setResult(true);
}

void CCryptoPipeServer::Listen(HANDLE pipe)
{
    open(pipe);
    // Disconnecting discards what the client has not read yet. Without a buffer a write ends when all of it was read, and nothing
    // can be lost; but a size of 0 is only a request, and the system may have rounded it up.
    DWORD outSize = 0;
    buffersResponses_ = isOpen() && !(GetNamedPipeInfo(pipe, nullptr, &outSize, nullptr, nullptr) && outSize == 0);
}

bool CCryptoPipeServer::ConnectPipe()
{
    static constexpr const char* operation = "CCryptoPipeServer::ConnectPipe";
    OverlappedTransfer connection(pipe(), transferEvent());
    OverlappedTransfer::Outcome outcome = OverlappedTransfer::Outcome::failed;
    if (connection.Connect())
        outcome = connection.Wait(stop(), connectTimeout());

    if (outcome == OverlappedTransfer::Outcome::done)
        return true;
    // A client may connect at the moment the wait ends.
    if (outcome == OverlappedTransfer::Outcome::timedOut && connection.Cancel())
        return true;
    if (outcome == OverlappedTransfer::Outcome::stopped)
        LogStop(operation);
    if (outcome == OverlappedTransfer::Outcome::failed)
        CCryptoAutoLogger(operation).setWindowsError(connection.error());
    DisconnectNamedPipe(pipe());
    return false;
}

bool CCryptoPipeServer::Read()
{
    if (!ConnectPipe())
        return false;
    if (!ReadRequest()) {
        DisconnectNamedPipe(pipe());
        return false;
    }
    CCryptoAutoLogger logger("CCryptoPipeServer::Read");
    return logger.setResult(true);
}

bool CCryptoPipeServer::Write()
{
    CCryptoAutoLogger logger("CCryptoPipeServer::Write");
    const bool written = WriteRequest();
    if (written && buffersResponses_)
        AwaitClose();
    DisconnectNamedPipe(pipe());
    return logger.setResult(written);
}

void CCryptoPipeServer::Disconnect()
{
    DisconnectNamedPipe(pipe());
}

void CCryptoPipeServer::AwaitClose()
{
    // A client closes when it has read its response, and that ends this read, as does anything else that it might send.
    char nothing;
    OverlappedTransfer read(pipe(), transferEvent());
    if (read.Read(&nothing, sizeof nothing))
        read.Wait(stop(), writeTimeout());
}
