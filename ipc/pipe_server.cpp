#include "ipc/pipe_server.h"

#include "core/diagnostics/auto_logger.h"
#include "ipc/overlapped_transfer.h"

#include <sddl.h>

#include <memory>

namespace {

struct LocalFreer {
    void operator()(void* memory) const { LocalFree(memory); }
};
using SecurityDescriptor = std::unique_ptr<void, LocalFreer>;

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

/// A mandatory label of low integrity with no-write-up. Null, with the reason in the log, when the system does not take it.
SecurityDescriptor LowIntegrityDescriptor(CCryptoAutoLogger& logger)
{
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorA("S:(ML;;NW;;;LW)", SDDL_REVISION_1, &descriptor, nullptr)) {
        logger.WriteErrorEx("The system refuses the low integrity label (%lu); the pipe is created without it", GetLastError());
        return nullptr;
    }
    return SecurityDescriptor(descriptor);
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
    // There is room for one instance, so the old one goes first.
    close();

    const SecurityDescriptor descriptor = secure && SystemHasIntegrityLabels() ? LowIntegrityDescriptor(logger) : nullptr;
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
    // Disconnecting throws away what the client has not read yet. Without a buffer a write ends when all of it was read, and
    // nothing is left to lose; but a buffer of 0 bytes is a wish, and the system may have rounded it up.
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
    // A client may come in the very moment the wait ends.
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
    // A client closes when it has read its response, and that ends this read; whatever else it might send ends it as well.
    char nothing;
    OverlappedTransfer read(pipe(), transferEvent());
    if (read.Read(&nothing, sizeof nothing))
        read.Wait(stop(), writeTimeout());
}
