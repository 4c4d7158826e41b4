#include "ipc/overlapped_transfer.h"
#include "ipc/pipe_client.h"
#include "ipc/pipe_server.h"
#include "ipc/session.h"
#include "tests/ipc/raw_peers.h"
#include "tests/ipc/wire_bytes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <thread>

using namespace ccrypto;

using namespace std::string_literals;

namespace {

constexpr std::uint32_t soon = 100;
constexpr std::uint32_t never = 600000;

std::uint32_t sessionNumber = 0;

TEST(PipeName, EndsInTheSessionNumber)
{
    const struct {
        std::uint32_t session;
        bool append;
        const char* name;
    } cases[] = {{1, true, "\\\\.\\pipe\\PennwickGUIServer_1"},
                 {26, true, "\\\\.\\pipe\\PennwickGUIServer_1a"},
                 {0, true, "\\\\.\\pipe\\PennwickGUIServer_0"},
                 {0xFFFFFFFF, true, "\\\\.\\pipe\\PennwickGUIServer_ffffffff"},
                 {1, false, "\\\\.\\pipe\\PennwickGUIServer"}};
    const auto answered = CurrentSession().number;
    CurrentSession().number = [] { return sessionNumber; };
    for (const auto& test : cases) {
        sessionNumber = test.session;
        EXPECT_EQ(CCryptoPipeClient("\\\\.\\pipe\\PennwickGUIServer", 1, test.append).name(), test.name);
    }
    CurrentSession().number = answered;
}

TEST(PipeName, SessionNumberIsThatOfTheProcess)
{
    DWORD expected = 0;
    ASSERT_TRUE(ProcessIdToSessionId(GetCurrentProcessId(), &expected));
    EXPECT_EQ(CurrentSession().number(), expected);
}

/// Serves until stopped: every request is answered with its own first text, twice, and status 0.
class EchoServer {
public:
    explicit EchoServer(const std::string& name) : server_(name.c_str(), false, false), thread_([this] { Serve(); }) {}
    ~EchoServer()
    {
        server_.Stop();
        thread_.join();
    }

private:
    void Serve()
    {
        const char* text = nullptr;
        while (server_.Read()) {
            const std::string heard = server_.GetString(text, true) && text != nullptr ? text : "";
            server_.StartMessage();
            server_.AddData(heard.c_str());
            server_.AddData(heard.c_str());
            server_.Write();
        }
    }

    CCryptoPipeServer server_;
    std::thread thread_;
};

TEST(PipeTransport, CarriesRequestsAndResponses)
{
    const std::string name = peers::FreshPipeName();
    const EchoServer server(name);
    CCryptoPipeClient client(name.c_str(), 4, false);
    for (const std::size_t size : {0U, 1U, 100U, 70000U, 3000000U, 5U}) {
        SCOPED_TRACE(size);
        const std::string text(size, 'x');
        const char* first = nullptr;
        const char* second = nullptr;
        client.StartMessage();
        client.AddData(text.c_str());
        ASSERT_TRUE(client.Call());
        ASSERT_TRUE(client.GetString(first, false));
        ASSERT_TRUE(client.GetString(second, true));
        EXPECT_EQ(text, first);
        EXPECT_EQ(text, second);
    }
}

TEST(PipeTransport, ServesClientsThatComeAtOnce)
{
    const std::string name = peers::FreshPipeName();
    const EchoServer server(name);
    constexpr int count = 4;
    std::vector<std::thread> clients;
    clients.reserve(count);
    std::atomic<int> answered = 0;
    for (int index = 0; index < count; ++index)
        clients.emplace_back([&, index] {
            const std::string text = "client " + std::to_string(index);
            for (int call = 0; call < 10; ++call) {
                CCryptoPipeClient client(name.c_str(), 1, false);
                client.AddData(text.c_str());
                const char* heard = nullptr;
                ASSERT_TRUE(client.Call());
                ASSERT_TRUE(client.GetString(heard, false));
                EXPECT_EQ(text, heard);
                ++answered;
            }
        });
    for (std::thread& client : clients)
        client.join();
    EXPECT_EQ(answered, 40);
}

TEST(PipeTransport, ClientLeavesWithoutReading)
{
    const std::string name = peers::FreshPipeName();
    CCryptoPipeServer server(name.c_str(), false, false);
    std::string files;
    for (int index = 0; index < 10000; ++index)
        files += "C:\\Users\\somebody\\Documents\\contract " + std::to_string(index) + ".pdf*";
    for (const std::string& text : {files, "x"s, ""s}) {
        std::thread client([&] {
            CCryptoPipeClient pipe(name.c_str(), 22, false);
            pipe.AddData(text.c_str());
            EXPECT_TRUE(pipe.CallWithoutReading());
        });
        const char* heard = nullptr;
        EXPECT_TRUE(server.Read());
        client.join();
        ASSERT_TRUE(server.GetString(heard, true));
        EXPECT_EQ(text, heard);
        EXPECT_EQ(server.requestType(), 22U);
        server.Disconnect();
    }
}

TEST(PipeTransport, ServesAClientThatCameBeforeItWaited)
{
    const std::string name = peers::FreshPipeName();
    CCryptoPipeServer server(name.c_str(), false, false);
    const platform::ScopedHandle client = peers::Connect(name, FILE_FLAG_OVERLAPPED);
    OVERLAPPED overlapped = {};
    const std::string request = wire::Header(7, 0, 0);
    WriteFile(client.get(), request.data(), static_cast<DWORD>(request.size()), nullptr, &overlapped);
    EXPECT_TRUE(server.Read());
    EXPECT_EQ(server.requestType(), 7U);
}

TEST(PipeTransport, MissingServerIsReportedAtOnce)
{
    CCryptoPipeClient client(peers::FreshPipeName().c_str(), 1, false);
    EXPECT_FALSE(client.Call());
    EXPECT_EQ(client.status(), CCryptoPipeRequestData::statusNoPipe);
    EXPECT_FALSE(client.CallWithoutReading());
}

TEST(PipeTransport, BusyServerIsReportedAfterTheWait)
{
    const std::string name = peers::FreshPipeName();
    const platform::ScopedHandle server = peers::Listen(name);
    const platform::ScopedHandle otherClient = peers::Connect(name);
    ASSERT_TRUE(otherClient);

    EXPECT_EQ(CurrentSession().busyTimeout, 15000U);
    CurrentSession().busyTimeout = soon;
    CCryptoPipeClient client(name.c_str(), 1, false);
    EXPECT_FALSE(client.Call());
    EXPECT_EQ(client.status(), CCryptoPipeRequestData::statusBusy);
    CurrentSession().busyTimeout = 15000;
}

TEST(PipeTransport, PipeThatCannotBeOpenedIsNotTriedAgain)
{
    const std::string name = peers::FreshPipeName();
    const platform::ScopedHandle server = peers::Listen(name, PIPE_ACCESS_OUTBOUND);
    CCryptoPipeClient client(name.c_str(), 1, false);
    EXPECT_FALSE(client.Call());
    EXPECT_EQ(client.status(), CCryptoPipeRequestData::statusGood);
}

TEST(PipeTransport, MessageThatLostAnItemOpensNoConnection)
{
    CCryptoPipeClient client(peers::FreshPipeName().c_str(), 1, false);
    EXPECT_FALSE(client.AddData("x", CCryptoPipeRequestData::maximumBody));
    EXPECT_FALSE(client.Call());
    EXPECT_FALSE(client.CallWithoutReading());
    EXPECT_EQ(client.status(), CCryptoPipeRequestData::statusGood);
}

TEST(PipeTransport, EveryCallSendsARequestOfTheClientsOwn)
{
    const std::string name = peers::FreshPipeName();
    CCryptoPipeClient client(name.c_str(), 3, false);
    EXPECT_FALSE(client.Call());
    EXPECT_NE(client.status(), CCryptoPipeRequestData::statusGood);
    for (const std::int32_t status : {-3, 0}) {
        platform::ScopedHandle pipe = peers::Listen(name);
        std::string request;
        std::thread server([&] {
            ConnectNamedPipe(pipe.get(), nullptr);
            request = peers::ReadRequest(pipe.get());
            peers::WriteMessage(pipe.get(), wire::Header(99, status, 0));
            FlushFileBuffers(pipe.get());
            pipe.reset();
        });
        EXPECT_EQ(client.Call(), status == 0);
        server.join();
        EXPECT_EQ(request, wire::Header(3, 0, 0));
    }
}

struct HostileClient {
    const char* name;
    std::vector<std::string> messages;
    bool leaves; ///< closes at once, and does not wait to be disconnected
};

const HostileClient hostileClients[] = {
    {"comes and goes", {}, true},
    {"says nothing", {}, false},
    {"one byte, then nothing", {"x"}, false},
    {"one byte, then gone", {"x"}, true},
    {"a long message in place of a header", {std::string(500, '\0')}, false},
    {"header and body in one", {wire::Header(22, 0, 6) + wire::Text("")}, false},
    {"an announced body that never comes", {wire::Header(22, 0, 10)}, false},
    {"gone before the body", {wire::Header(22, 0, 10)}, true},
    {"a body shorter than announced", {wire::Header(22, 0, 10), "abc"}, false},
    {"a body longer than announced", {wire::Header(22, 0, 10), std::string(500, 'x')}, false},
    {"the greatest body", {wire::Header(22, 0, 0xFFFFFFFF)}, false},
    {"a body just above the limit", {wire::Header(22, 0, CCryptoPipeRequestData::maximumBody + 1)}, false},
};

TEST(PipeTransport, HostileClientsLeaveTheServerInService)
{
    const std::string name = peers::FreshPipeName();
    CCryptoPipeServer server(name.c_str(), false, false);
    server.SetTimeouts(never, soon, never);
    for (const HostileClient& hostile : hostileClients) {
        SCOPED_TRACE(hostile.name);
        std::promise<void> served;
        std::thread client([&] {
            platform::ScopedHandle pipe = peers::Connect(name);
            EXPECT_TRUE(pipe);
            for (const std::string& message : hostile.messages)
                peers::WriteMessage(pipe.get(), message);
            if (hostile.leaves)
                pipe.reset();
            served.get_future().wait();
        });
        EXPECT_FALSE(server.Read());
        const std::uint8_t* data = nullptr;
        std::uint32_t length = 0;
        EXPECT_FALSE(server.GetData(data, length, false));
        EXPECT_EQ(server.body().size(), 0U);
        served.set_value();
        client.join();

        std::thread good([&] {
            CCryptoPipeClient pipe(name.c_str(), 6, false);
            pipe.AddInt(7);
            EXPECT_TRUE(pipe.CallWithoutReading());
        });
        std::uint32_t value = 0;
        EXPECT_TRUE(server.Read());
        good.join();
        EXPECT_TRUE(server.GetInt(value, true));
        EXPECT_EQ(value, 7U);
        server.Disconnect();
    }
}

struct AnswerCase {
    const char* name;
    std::vector<std::string> messages;
    bool good;
    std::int32_t status;
    std::size_t bodyLength;
};

const AnswerCase answerCases[] = {
    {"empty response", {wire::Header(1, 0, 0)}, true, 0, 0},
    {"response with a body", {wire::Header(1, 0, 9), wire::Int(7)}, true, 0, 9},
    {"bad status", {wire::Header(1, -3, 0)}, false, -3, 0},
    {"bad status and a body", {wire::Header(1, 5, 9), wire::Int(7)}, false, 5, 9},
    {"server dies before the header", {}, false, 0, 0},
    {"server dies within the header", {"abc"}, false, 0, 0},
    {"server dies between header and body", {wire::Header(1, 0, 9)}, false, 0, 0},
    {"server dies within the body", {wire::Header(1, 0, 9), "abc"}, false, 0, 0},
    {"greatest body", {wire::Header(1, 0, 0xFFFFFFFF)}, false, 0, 0},
};

TEST(PipeTransport, ClientTakesGoodResponsesAlone)
{
    for (const AnswerCase& test : answerCases) {
        SCOPED_TRACE(test.name);
        const std::string name = peers::FreshPipeName();
        platform::ScopedHandle pipe = peers::Listen(name);
        std::string request;
        std::thread server([&] {
            ConnectNamedPipe(pipe.get(), nullptr);
            request = peers::ReadRequest(pipe.get());
            for (const std::string& message : test.messages)
                peers::WriteMessage(pipe.get(), message);
            if (test.good)
                FlushFileBuffers(pipe.get());
            pipe.reset();
        });
        CCryptoPipeClient client(name.c_str(), 3, false);
        client.AddData("question");
        EXPECT_EQ(client.Call(), test.good);
        server.join();
        EXPECT_EQ(request, wire::Header(3, 0, 14) + wire::Text("question"));
        EXPECT_EQ(client.body().size(), test.bodyLength);
        EXPECT_EQ(client.position(), 0U);
        EXPECT_EQ(client.status(), test.status);
    }
}

/// A server whose writes end before anybody has read them, as they may where the system rounds a buffer up.
class BufferingServer : public CCryptoPipeServer {
public:
    explicit BufferingServer(const std::string& name) : CCryptoPipeServer(peers::FreshPipeName().c_str(), false, false)
    {
        Listen(CreateNamedPipeA(name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED, PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE,
                                1, 1U << 20, 1U << 20, 0, nullptr));
    }
};

void KeepsTheResponseUntilItIsRead(CCryptoPipeServer& server, const std::string& name)
{
    const std::string body = wire::Text(std::string(100000, 'x'));
    std::promise<void> done;
    std::thread client([&] {
        const platform::ScopedHandle pipe = peers::Connect(name);
        EXPECT_TRUE(peers::WriteMessage(pipe.get(), wire::Header(1, 0, 0)));
        // Byte for byte, as slowly as a client may.
        std::string header;
        for (int index = 0; index < 12; ++index)
            header += peers::ReadBytes(pipe.get(), 1);
        EXPECT_EQ(header, wire::Header(1, 0, static_cast<std::uint32_t>(body.size())));
        EXPECT_EQ(peers::ReadBytes(pipe.get(), static_cast<std::uint32_t>(body.size())), body);
        done.get_future().wait();
    });
    ASSERT_TRUE(server.Read());
    server.StartMessage();
    server.AddData(std::string(100000, 'x').c_str());
    // The client holds the connection although it has read everything; the server does not wait for ever.
    server.SetTimeouts(never, never, 1000);
    EXPECT_TRUE(server.Write());
    done.set_value();
    client.join();
}

TEST(PipeTransport, ResponseIsKeptUntilItIsRead)
{
    const std::string name = peers::FreshPipeName();
    CCryptoPipeServer server(name.c_str(), false, false);
    KeepsTheResponseUntilItIsRead(server, name);
}

TEST(PipeTransport, BufferedResponseIsKeptUntilItIsRead)
{
    const std::string name = peers::FreshPipeName();
    BufferingServer server(name);
    KeepsTheResponseUntilItIsRead(server, name);
}

TEST(PipeTransport, ClientThatReadsNothingTimesOut)
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
    server.SetTimeouts(never, never, soon);
    EXPECT_FALSE(server.Write());
    done.set_value();
    client.join();
}

TEST(PipeTransport, LateBytesDoNotReachAnAbandonedBuffer)
{
    const std::string name = peers::FreshPipeName();
    CCryptoPipeServer server(name.c_str(), false, false);
    const platform::ScopedHandle client = peers::Connect(name);
    ASSERT_TRUE(server.ConnectPipe());
    server.SetTimeouts(never, soon, never);

    std::string abandoned(8, '.');
    std::string buffer(8, '.');
    EXPECT_FALSE(server.ReadPipe(abandoned.data(), 8));
    ASSERT_TRUE(peers::WriteMessage(client.get(), "too late"));
    EXPECT_TRUE(server.ReadPipe(buffer.data(), 8));
    EXPECT_EQ(abandoned, "........");
    EXPECT_EQ(buffer, "too late");
}

TEST(PipeTransport, ConnectionOfTheLastMomentIsKept)
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

TEST(PipeTransport, NothingIsSentAfterStop)
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

TEST(PipeTransport, StopEndsEveryWait)
{
    for (const StopCase& test : stopCases) {
        SCOPED_TRACE(test.name);
        for (int round = 0; round < 10; ++round) {
            const std::string name = peers::FreshPipeName();
            CCryptoPipeServer server(name.c_str(), false, false);
            server.SetTimeouts(never, never, never);
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

TEST(PipeTransport, StopEndsACall)
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

TEST(PipeTransport, ConnectTimesOut)
{
    CCryptoPipeServer server(peers::FreshPipeName().c_str(), false, false);
    server.SetTimeouts(soon, never, never);
    EXPECT_FALSE(server.ConnectPipe());
    EXPECT_FALSE(server.Read());
}

TEST(PipeTransport, SecureServerListens)
{
    const std::string name = peers::FreshPipeName();
    CCryptoPipeServer server(name.c_str(), true, false);
    EXPECT_TRUE(server.isListening());
    EXPECT_TRUE(peers::Connect(name));
    CCryptoPipeServer second(name.c_str(), true, false);
    EXPECT_FALSE(second.isListening());
    EXPECT_FALSE(second.Read());

    EXPECT_TRUE(server.CreatePipe(false));
    EXPECT_TRUE(peers::Connect(name));
}

} // namespace
