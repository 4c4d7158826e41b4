#include "ipc/overlapped_transfer.h"
#include "ipc/pipe_client.h"
#include "ipc/pipe_server.h"
#include "tests/ipc/raw_peers.h"
#include "tests/ipc/wire_bytes.h"

#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <thread>

using namespace ccrypto;

namespace {

// How a wait ends that the other end does not end: by time-out, or by Stop from another thread.

TEST(PipeWaits, ConnectTimesOut)
{
    CCryptoPipeServer server(peers::FreshPipeName().c_str(), false, false);
    server.SetTimeouts(peers::soon, peers::never, peers::never);
    EXPECT_FALSE(server.ConnectPipe());
    EXPECT_FALSE(server.Read());
}

TEST(PipeWaits, ClientThatReadsNothingTimesOut)
{
    const std::string name = peers::FreshPipeName();
    CCryptoPipeServer server(name.c_str(), false, false);
    std::promise<void> done;
    std::thread client([&] {
        const platform::ScopedHandle pipe = peers::Connect(name);
        EXPECT_TRUE(peers::WriteMessage(pipe.get(), wire::Header(1, 0, 0)));
        done.get_future().wait();
    });
    ASSERT_TRUE(server.Read());
    server.StartMessage();
    server.AddData(std::string(100000, 'x').c_str());
    server.SetTimeouts(peers::never, peers::never, peers::soon);
    EXPECT_FALSE(server.Write());
    done.set_value();
    client.join();
}

TEST(PipeWaits, LateBytesDoNotReachAnAbandonedBuffer)
{
    const std::string name = peers::FreshPipeName();
    CCryptoPipeServer server(name.c_str(), false, false);
    const platform::ScopedHandle client = peers::Connect(name);
    ASSERT_TRUE(server.ConnectPipe());
    server.SetTimeouts(peers::never, peers::soon, peers::never);

    std::string abandoned(8, '.');
    std::string buffer(8, '.');
    EXPECT_FALSE(server.ReadPipe(abandoned.data(), 8));
    ASSERT_TRUE(peers::WriteMessage(client.get(), "too late"));
    EXPECT_TRUE(server.ReadPipe(buffer.data(), 8));
    EXPECT_EQ(abandoned, "........");
    EXPECT_EQ(buffer, "too late");
}

TEST(PipeWaits, ConnectionOfTheLastMomentIsKept)
{
    const std::string name = peers::FreshPipeName();
    const platform::ScopedHandle pipe(CreateNamedPipeA(name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                                       PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1, 0, 0, 0, nullptr));
    const platform::ScopedHandle event(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    const StopSignal stop;
    for (const bool comes : {false, true}) {
        OverlappedTransfer connection(pipe.get(), event.get());
        ASSERT_TRUE(connection.Connect());
        EXPECT_EQ(connection.Wait(stop, 0), OverlappedTransfer::Outcome::timedOut);
        const platform::ScopedHandle client = comes ? peers::Connect(name) : platform::ScopedHandle();
        EXPECT_EQ(connection.Cancel(), comes);
    }
}

TEST(PipeWaits, NothingIsSentAfterStop)
{
    const std::string name = peers::FreshPipeName();
    CCryptoPipeServer server(name.c_str(), false, false);
    const platform::ScopedHandle client = peers::Connect(name, FILE_FLAG_OVERLAPPED);
    ASSERT_TRUE(server.ConnectPipe());
    char character = '.';
    DWORD got = 0;
    OVERLAPPED overlapped = {};
    ReadFile(client.get(), &character, 1, nullptr, &overlapped);
    server.Stop();
    EXPECT_FALSE(server.WritePipe("x", 1));
    EXPECT_FALSE(GetOverlappedResult(client.get(), &overlapped, &got, TRUE));
    EXPECT_EQ(character, '.');
}

struct StopCase {
    const char* name;
    bool connected;
    std::function<bool(CCryptoPipeServer&)> operation;
};

const StopCase stopCases[] = {
    {"connect", false, [](CCryptoPipeServer& server) { return server.ConnectPipe(); }},
    {"read a request", false, [](CCryptoPipeServer& server) { return server.Read(); }},
    {"read", true,
     [](CCryptoPipeServer& server) {
         char character;
         return server.ReadPipe(&character, 1);
     }},
    {"write", true, [](CCryptoPipeServer& server) { return server.WritePipe(std::string(100000, 'x').data(), 100000); }},
    {"answer", true, [](CCryptoPipeServer& server) { return server.Write(); }},
};

TEST(PipeWaits, StopEndsEveryWait)
{
    for (const StopCase& test : stopCases) {
        SCOPED_TRACE(test.name);
        for (int round = 0; round < 10; ++round) {
            const std::string name = peers::FreshPipeName();
            CCryptoPipeServer server(name.c_str(), false, false);
            server.SetTimeouts(peers::never, peers::never, peers::never);
            platform::ScopedHandle client;
            if (test.connected) {
                client = peers::Connect(name);
                ASSERT_TRUE(server.ConnectPipe());
            }
            std::promise<void> started;
            std::thread thread([&] {
                started.set_value();
                EXPECT_FALSE(test.operation(server));
            });
            if (round % 2 == 0)
                started.get_future().wait();
            server.Stop();
            thread.join();
            EXPECT_FALSE(test.operation(server));
        }
    }
}

TEST(PipeWaits, NothingIsOpenedAfterStop)
{
    const std::string name = peers::FreshPipeName();
    CCryptoPipeServer server(name.c_str(), false, false);
    CCryptoPipeClient client(name.c_str(), 1, false);
    client.Stop();
    EXPECT_FALSE(client.OpenPipe());
    EXPECT_TRUE(peers::Connect(name)) << "the server's only instance is free";
}

TEST(PipeWaits, StopEndsACall)
{
    const std::string name = peers::FreshPipeName();
    const platform::ScopedHandle server = peers::Listen(name);
    CCryptoPipeClient client(name.c_str(), 1, false);
    std::thread thread([&] { EXPECT_FALSE(client.Call()); });
    ConnectNamedPipe(server.get(), nullptr);
    peers::ReadRequest(server.get());
    client.Stop();
    thread.join();
}

} // namespace
