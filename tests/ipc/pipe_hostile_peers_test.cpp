#include "ipc/pipe_client.h"
#include "ipc/pipe_server.h"
#include "tests/ipc/raw_peers.h"
#include "tests/ipc/wire_bytes.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

using namespace ccrypto;

namespace {

// What the other end may do that the library's own never would.

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

TEST(PipePeers, HostileClientsLeaveTheServerInService)
{
    const std::string name = peers::FreshPipeName();
    CCryptoPipeServer server(name.c_str(), false, false);
    server.SetTimeouts(peers::never, peers::soon, peers::never);
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

TEST(PipePeers, ClientTakesGoodResponsesAlone)
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
    server.SetTimeouts(peers::never, peers::never, 1000);
    EXPECT_TRUE(server.Write());
    done.set_value();
    client.join();
}

TEST(PipePeers, ResponseIsKeptUntilItIsRead)
{
    const std::string name = peers::FreshPipeName();
    CCryptoPipeServer server(name.c_str(), false, false);
    KeepsTheResponseUntilItIsRead(server, name);
}

TEST(PipePeers, BufferedResponseIsKeptUntilItIsRead)
{
    const std::string name = peers::FreshPipeName();
    BufferingServer server(name);
    KeepsTheResponseUntilItIsRead(server, name);
}

} // namespace
