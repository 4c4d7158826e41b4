#include "ipc/pipe_client.h"
#include "ipc/pipe_server.h"
#include "ipc/session.h"
#include "tests/ipc/raw_peers.h"
#include "tests/ipc/wire_bytes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace ccrypto;

using namespace std::string_literals;

namespace {

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
    const peers::BusyTimeout busyTimeout(peers::soon);
    CCryptoPipeClient client(name.c_str(), 1, false);
    EXPECT_FALSE(client.Call());
    EXPECT_EQ(client.status(), CCryptoPipeRequestData::statusBusy);
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

TEST(PipeTransport, ResponseThatLostAnItemIsNotSent)
{
    const std::string name = peers::FreshPipeName();
    CCryptoPipeServer server(name.c_str(), false, false);
    const platform::ScopedHandle client = peers::Connect(name);
    ASSERT_TRUE(server.ConnectPipe());
    server.StartMessage();
    EXPECT_FALSE(server.AddData("x", CCryptoPipeRequestData::maximumBody));
    EXPECT_FALSE(server.Write());
    EXPECT_EQ(peers::ReadBytes(client.get(), 1), "") << "disconnected";
}

TEST(PipeTransport, ConnectionEndsWithItsCall)
{
    const std::string name = peers::FreshPipeName();
    const platform::ScopedHandle pipe = peers::Listen(name);
    std::thread server([&] {
        ConnectNamedPipe(pipe.get(), nullptr);
        peers::ReadRequest(pipe.get());
        peers::WriteMessage(pipe.get(), wire::Header(3, 0, 0));
        EXPECT_EQ(peers::ReadBytes(pipe.get(), 1), "");
    });
    CCryptoPipeClient client(name.c_str(), 3, false);
    EXPECT_TRUE(client.Call());
    server.join();
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
