#include "ipc/gui_client.h"
#include "ipc/gui_connection.h"
#include "ipc/pipe_server.h"
#include "ipc/session.h"
#include "tests/ipc/raw_peers.h"
#include "tests/ipc/wire_bytes.h"
#include "tests/support/captured_log.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <thread>

using namespace ccrypto;

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;

namespace {

constexpr std::uint32_t rightAway = 50;

struct LogCase {
    const char* name;
    /// The server has `client` connected, and time-outs of 50 milliseconds.
    std::function<void(CCryptoPipeServer& server, platform::ScopedHandle& client)> run;
    std::vector<std::string> lines;
};

char byte;

const LogCase logCases[] = {
    {"nothing comes",
     [](CCryptoPipeServer& server, auto&) { server.ReadPipe(&byte, 1); },
     {"CCryptoBasePipe::ReadPipe - OUT WITH ERROR", "ERROR: Timeout; Read cancelled"}},
    {"too little comes",
     [](CCryptoPipeServer& server, platform::ScopedHandle& client) {
         peers::WriteMessage(client.get(), "abc");
         char bytes[4];
         server.ReadPipe(bytes, sizeof bytes);
     },
     {"ERROR: Not enough data"}},
    {"the client goes while the server reads",
     [](CCryptoPipeServer& server, platform::ScopedHandle& client) {
         server.SetTimeouts(rightAway, CCryptoBasePipe::defaultReadTimeout, rightAway);
         std::thread leaver([&] { client.reset(); });
         server.ReadRequest();
         leaver.join();
     },
     {"CCryptoBasePipe::ReadPipe - OUT WITH ERROR", "CCryptoBasePipe::ReadRequest - OUT WITH WARNING"}},
    {"nothing is read",
     [](CCryptoPipeServer& server, auto&) { server.WritePipe(std::string(5000, 'x').data(), 5000); },
     {"CCryptoBasePipe::WritePipe - OUT WITH ERROR", "ERROR: Timeout; Write cancelled"}},
    {"stop a read",
     [](CCryptoPipeServer& server, auto&) {
         server.Stop();
         server.ReadPipe(&byte, 1);
     },
     {"CCryptoBasePipe::Stop - OUT", "CCryptoBasePipe::ReadPipe - OUT WITH ERROR", "ERROR: Stop event"}},
    {"stop a write",
     [](CCryptoPipeServer& server, auto&) {
         server.Stop();
         server.Write();
     },
     {"CCryptoBasePipe::WritePipe - OUT WITH ERROR", "ERROR: Stop event", "CCryptoPipeServer::Write - OUT WITH WARNING"}},
    {"stop a connect",
     [](CCryptoPipeServer& server, auto&) {
         server.Disconnect();
         server.Stop();
         EXPECT_FALSE(server.Read());
     },
     {"CCryptoPipeServer::ConnectPipe - OUT WITH ERROR", "ERROR: Stop event"}},
    {"a body above the limit",
     [](CCryptoPipeServer& server, platform::ScopedHandle& client) {
         std::thread writer([&] { peers::WriteMessage(client.get(), wire::Header(1, 0, 0x2000000)); });
         server.ReadRequest();
         writer.join();
     },
     {"ERROR: A body of 33554432 bytes is announced; the limit is 16777216 bytes"}},
};

TEST(PipeLog, SaysWhyATransferFailed)
{
    for (const LogCase& test : logCases) {
        SCOPED_TRACE(test.name);
        const std::string name = peers::FreshPipeName();
        CCryptoPipeServer server(name.c_str(), false, false);
        platform::ScopedHandle client = peers::Connect(name);
        ASSERT_TRUE(server.ConnectPipe());
        server.SetTimeouts(rightAway, rightAway, rightAway);

        const CapturedLog log;
        test.run(server, client);
        EXPECT_THAT(log.texts(), IsSupersetOf(test.lines));
    }
}

TEST(PipeLog, SaysWhyACallFailed)
{
    const std::string name = peers::FreshPipeName();
    const CapturedLog missing;
    EXPECT_FALSE(CCryptoPipeClient(name.c_str(), 4, false).Call());
    EXPECT_THAT(missing.texts(), IsSupersetOf<std::string>(
                                     {"CCryptoPipeClient::CCryptoPipeClient(Client (" + name + "), Type = 4) - IN", name,
                                      "CCryptoPipeClient::OpenPipe - OUT WITH ERROR", "CCryptoPipeClient::Call - OUT WITH ERROR",
                                      "ERROR: Failed to open pipe; Server not running?"}));
    EXPECT_THAT(missing.texts(), Not(Contains("ERROR: Timeout")));
}

TEST(PipeLog, SaysThatTheServerStayedBusy)
{
    const std::string name = peers::FreshPipeName();
    const platform::ScopedHandle server = peers::Listen(name);
    const platform::ScopedHandle otherClient = peers::Connect(name);
    const peers::BusyTimeout busyTimeout(rightAway);
    const CapturedLog busy;
    EXPECT_FALSE(CCryptoPipeClient(name.c_str(), 4, false).CallWithoutReading());
    EXPECT_THAT(busy.texts(), IsSupersetOf<std::string>({"ERROR: Timeout", "CCryptoPipeClient::CallWithoutReading - OUT WITH ERROR",
                                                         "ERROR: Failed to open pipe; Server not running?"}));
}

TEST(PipeLog, TimeOutOfAConnectIsSilent)
{
    CCryptoPipeServer server(peers::FreshPipeName().c_str(), false, false);
    server.SetTimeouts(rightAway, rightAway, rightAway);
    const CapturedLog log;
    EXPECT_FALSE(server.Read());
    EXPECT_TRUE(log.texts().empty());
}

TEST(GuiClientLog, NamesTheReasonAndHoldsNoPin)
{
    const Session session = CurrentSession();
    CurrentSession().number = [] { return static_cast<std::uint32_t>(GetCurrentProcessId()); };
    CurrentSession().hasInputDesktop = [] { return false; };
    {
        const CapturedLog log;
        CGUIClient(false).Cancel();
        EXPECT_THAT(log.texts(), IsSupersetOf<std::string>({"WARNING: No desktop => no GUI", "CGUIClient::Cancel - IN"}));
    }

    CurrentSession().hasInputDesktop = [] { return true; };
    auto server = std::make_unique<CCryptoPipeServer>(CGUI::pipeName, false, true);
    std::thread thread([&] {
        while (server->Read()) {
            server->StartMessage();
            server->AddInt(1);
            server->AddData("471147", 6);
            server->Write();
        }
    });
    const CapturedLog log;
    {
        CGUIClient client(false);
        element pin;
        EXPECT_TRUE(client.PinDialog({}, pin));
        EXPECT_TRUE(client.GetPinCache(1, "card", pin));
        EXPECT_TRUE(client.SetPinCache(1, "card", "471147"));
        EXPECT_TRUE(client.Authenticate({}, [](const element&, CCryptoString&) { return true; }));
        EXPECT_FALSE(client.Authenticate({}, [](const element&, CCryptoString& reason) {
            reason = "blocked";
            return false;
        }));
        EXPECT_FALSE(client.Authenticate({}, {}));
        server->Stop();
        thread.join();
        server.reset();
        EXPECT_FALSE(client.Authenticate({}, [](const element&, CCryptoString&) { return true; }));
    }
    CurrentSession() = session;

    const auto texts = log.texts();
    EXPECT_THAT(texts, IsSupersetOf<std::string>({"Desktop ok", "Authenticate.res = true", "Authenticate.res = false",
                                                  "ERROR: Authentication failed: blocked", "ERROR: PinDialog() failed"}));
    EXPECT_THAT(texts, Not(Contains(HasSubstr("471147"))));
}

} // namespace
