#include "ipc/pipe_client.h"
#include "ipc/pipe_server.h"
#include "tests/ipc/raw_peers.h"
#include "tests/ipc/wire_bytes.h"
#include "tests/support/kernel_handles.h"
#include "tests/support/replaced_import.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <thread>

using namespace ccrypto;

namespace {

// What the system was asked for. Some of it leaves no trace that could be read back: Wine drops the integrity label, and time-outs
// are waited for by nobody.

struct PipeCreation {
    std::string name;
    DWORD openMode;
    DWORD pipeMode;
    DWORD instances;
    DWORD outBuffer;
    DWORD inBuffer;
    DWORD timeout;
    bool operator==(const PipeCreation&) const = default;
};

/// The one entry of the label's list, and how a child process gets the pipe.
struct PipeSecurity {
    DWORD attributesSize;
    BOOL inherited;
    WORD entries;
    BYTE entryType;
    BYTE entryFlags;
    ACCESS_MASK refused;
    DWORD level;
    bool operator==(const PipeSecurity&) const = default;
};

std::vector<PipeCreation> creations;
std::optional<PipeSecurity> security;

PipeSecurity ReadSecurity(const SECURITY_ATTRIBUTES& attributes)
{
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    PACL list = nullptr;
    GetSecurityDescriptorSacl(attributes.lpSecurityDescriptor, &present, &list, &defaulted);
    void* entry = nullptr;
    if (!present || list == nullptr || !GetAce(list, 0, &entry))
        return {};
    auto* const label = static_cast<SYSTEM_MANDATORY_LABEL_ACE*>(entry);
    return {attributes.nLength,
            attributes.bInheritHandle,
            list->AceCount,
            label->Header.AceType,
            label->Header.AceFlags,
            label->Mask,
            *GetSidSubAuthority(&label->SidStart, 0)};
}

HANDLE WINAPI RecordCreation(LPCSTR name, DWORD openMode, DWORD pipeMode, DWORD instances, DWORD outBuffer, DWORD inBuffer,
                             DWORD timeout, SECURITY_ATTRIBUTES* attributes)
{
    creations.push_back({name, openMode, pipeMode, instances, outBuffer, inBuffer, timeout});
    security.reset();
    if (attributes != nullptr)
        security = ReadSecurity(*attributes);
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

TEST(PipeSystemCalls, ServerCreatesOneInstanceWithALowLabel)
{
    const std::string name = peers::FreshPipeName();
    const ReplacedImport creation(nullptr, "CreateNamedPipeA", RecordCreation);
    // PIPE_ACCESS_DUPLEX, WRITE_DAC and FILE_FLAG_OVERLAPPED; messages in both directions.
    const PipeCreation expected = {name, 0x40040003, 6, 1, 0, 10, 0};
    // No-write-up at level low, S-1-16-4096.
    const PipeSecurity low = {24, TRUE, 1, SYSTEM_MANDATORY_LABEL_ACE_TYPE, 0, SYSTEM_MANDATORY_LABEL_NO_WRITE_UP, 0x1000};
    for (const bool secure : {true, false}) {
        SCOPED_TRACE(secure);
        creations.clear();
        CCryptoPipeServer server(name.c_str(), secure, false);
        EXPECT_FALSE(server.isListening());
        EXPECT_EQ(creations, std::vector{expected});
        EXPECT_EQ(security, secure ? std::optional(low) : std::nullopt);
    }
}

struct Opening {
    DWORD wait = 0;
    DWORD access = 0;
    DWORD sharing = 0;
    bool attributes = false;
    DWORD disposition = 0;
    DWORD flags = 0;
    bool operator==(const Opening&) const = default;
};

Opening opening;

TEST(PipeSystemCalls, ClientWaitsAndOpensForItselfAlone)
{
    const ReplacedImport waiting(
        nullptr, "WaitNamedPipeA", +[](LPCSTR, DWORD milliseconds) -> BOOL {
            opening.wait = milliseconds;
            return TRUE;
        });
    const ReplacedImport open(
        nullptr, "CreateFileA",
        +[](LPCSTR, DWORD access, DWORD sharing, SECURITY_ATTRIBUTES* attributes, DWORD disposition, DWORD flags,
            HANDLE) -> HANDLE {
            opening = {opening.wait, access, sharing, attributes != nullptr, disposition, flags};
            SetLastError(ERROR_ACCESS_DENIED);
            return INVALID_HANDLE_VALUE;
        });
    CCryptoPipeClient client(peers::FreshPipeName().c_str(), 1, false);
    EXPECT_FALSE(client.OpenPipe());
    const Opening expected = {15000, GENERIC_READ | GENERIC_WRITE, 0, false, OPEN_EXISTING, FILE_FLAG_OVERLAPPED};
    EXPECT_EQ(opening, expected);
}

std::vector<DWORD> patience;

TEST(PipeSystemCalls, ClientThatOthersOvertakeWaitsForWhatIsLeft)
{
    constexpr DWORD whole = 100;
    const peers::BusyTimeout busyTimeout(whole);
    const ReplacedImport waiting(
        nullptr, "WaitNamedPipeA", +[](LPCSTR, DWORD milliseconds) -> BOOL {
            patience.push_back(milliseconds);
            Sleep(whole / 4);
            return TRUE;
        });
    const ReplacedImport open(
        nullptr, "CreateFileA", +[](LPCSTR, DWORD, DWORD, SECURITY_ATTRIBUTES*, DWORD, DWORD, HANDLE) -> HANDLE {
            SetLastError(ERROR_PIPE_BUSY);
            return INVALID_HANDLE_VALUE;
        });
    patience.clear();
    CCryptoPipeClient client(peers::FreshPipeName().c_str(), 1, false);
    EXPECT_FALSE(client.OpenPipe());
    EXPECT_EQ(client.status(), CCryptoPipeRequestData::statusBusy);
    ASSERT_GE(patience.size(), 2U);
    EXPECT_EQ(patience.front(), whole);
    EXPECT_LT(patience.back(), whole);
}

std::vector<DWORD> waits;
HANDLE firstOfWait = nullptr;

/// Keeps the time-out of a wait, which then is over.
DWORD WINAPI RecordWait(DWORD, const HANDLE* handles, BOOL, DWORD milliseconds)
{
    waits.push_back(milliseconds);
    firstOfWait = handles[0];
    return WAIT_TIMEOUT;
}

TEST(PipeSystemCalls, WaitsHaveTheirTimeouts)
{
    const std::string name = peers::FreshPipeName();
    CCryptoPipeServer server(name.c_str(), false, false);
    CCryptoPipeClient client(name.c_str(), 1, false);
    const std::string large(100000, 'x');
    char character = 0;

    const ReplacedImport waiting(nullptr, "WaitForMultipleObjects", RecordWait);
    const auto waitOf = [](const std::function<bool()>& operation) {
        waits.clear();
        EXPECT_FALSE(operation());
        return waits;
    };
    EXPECT_EQ(waitOf([&] { return server.ConnectPipe(); }), std::vector<DWORD>{120000});
    ASSERT_TRUE(client.OpenPipe());
    ASSERT_TRUE(server.ConnectPipe());
    EXPECT_EQ(waitOf([&] { return server.ReadPipe(&character, 1); }), std::vector<DWORD>{240000});
    EXPECT_EQ(waitOf([&] { return client.ReadPipe(&character, 1); }), std::vector<DWORD>{240000});
    EXPECT_EQ(waitOf([&] { return server.WritePipe(large.data(), 100000); }), std::vector<DWORD>{60000});
    EXPECT_EQ(waitOf([&] { return client.WritePipe(large.data(), 100000); }), std::vector<DWORD>{60000});

    // Stop comes first, so that it wins over a completion at the same moment.
    server.Stop();
    EXPECT_EQ(WaitForSingleObject(firstOfWait, 0), WAIT_TIMEOUT) << "the client's, which nobody stopped";
    client.Stop();
    EXPECT_EQ(WaitForSingleObject(firstOfWait, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(firstOfWait, 0), WAIT_OBJECT_0) << "manual reset";
}

std::string lateName;
platform::ScopedHandle lateClient;

TEST(PipeSystemCalls, ClientThatComesAsTheWaitEndsIsKept)
{
    lateName = peers::FreshPipeName();
    CCryptoPipeServer server(lateName.c_str(), false, false);
    const ReplacedImport waiting(
        nullptr, "WaitForMultipleObjects", +[](DWORD, const HANDLE*, BOOL, DWORD) -> DWORD {
            lateClient = peers::Connect(lateName);
            return WAIT_TIMEOUT;
        });
    EXPECT_TRUE(server.ConnectPipe());
    lateClient.reset();
}

TEST(PipeSystemCalls, EveryHandleIsGivenBack)
{
    const auto exchange = [] {
        const std::string name = peers::FreshPipeName();
        CCryptoPipeServer server(name.c_str(), true, false);
        std::thread thread([&] {
            CCryptoPipeClient client(name.c_str(), 1, false);
            EXPECT_TRUE(client.CallWithoutReading());
        });
        EXPECT_TRUE(server.Read());
        thread.join();
        CCryptoPipeClient missing(peers::FreshPipeName().c_str(), 1, false);
        EXPECT_FALSE(missing.Call());
    };
    exchange();
    const std::uint32_t before = HighestHandleNumber();
    for (int round = 0; round < 10; ++round)
        exchange();
    EXPECT_EQ(HighestHandleNumber(), before);
}

} // namespace
