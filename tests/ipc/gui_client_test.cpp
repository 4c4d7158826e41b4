#include "ipc/gui_client.h"
#include "ipc/gui_connection.h"
#include "ipc/pipe_server.h"
#include "ipc/session.h"
#include "tests/ipc/raw_peers.h"
#include "tests/ipc/wire_bytes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <thread>

using namespace ccrypto;

using namespace std::string_literals;

namespace {

using Fill = std::function<void(CCryptoPipeServer&)>;

std::uint32_t pauses = 0;
std::uint32_t pausedFor = 0;

/// A session of this process' own, so that its pipe meets no other test's; waits between attempts are counted instead of waited.
class GuiClient : public ::testing::Test {
protected:
    void SetUp() override
    {
        pauses = 0;
        session_ = CurrentSession();
        CurrentSession().number = [] { return static_cast<std::uint32_t>(GetCurrentProcessId()); };
        CurrentSession().hasInputDesktop = [] { return true; };
        CurrentSession().pause = [](std::uint32_t milliseconds) {
            ++pauses;
            pausedFor = milliseconds;
        };
    }
    void TearDown() override { CurrentSession() = session_; }

private:
    Session session_;
};

/// Answers greeting and farewell, and every other request with one canned reply; keeps the requests.
class CannedServer {
public:
    explicit CannedServer(Fill reply, std::int32_t status = 0, bool answers = true)
        : server_(CGUI::pipeName, false, true), reply_(std::move(reply)), status_(status), answers_(answers),
          thread_([this] { Serve(); })
    {
    }
    ~CannedServer() { Finish(); }

    /// The requests between greeting and farewell, header and body. Ends the service.
    const std::vector<std::string>& Requests()
    {
        Finish();
        return requests_;
    }

    std::uint32_t greetings() const { return greetings_; }
    std::uint32_t farewells() const { return farewells_; }

private:
    void Serve()
    {
        while (server_.Read())
            Answer();
    }

    void Answer()
    {
        const std::uint32_t type = server_.requestType();
        const bool frame = type == 1 || type == 12;
        if (frame) {
            EXPECT_EQ(server_.body().size(), 0U);
            (type == 1 ? greetings_ : farewells_) += 1;
        } else {
            const auto body = server_.body();
            requests_.push_back(wire::Header(type, server_.status(), static_cast<std::uint32_t>(body.size())) +
                                std::string(body.begin(), body.end()));
        }
        if (!frame && !answers_)
            return server_.Disconnect();
        server_.StartMessage(frame ? 0 : status_);
        if (!frame)
            reply_(server_);
        server_.Write();
    }

    void Finish()
    {
        server_.Stop();
        if (thread_.joinable())
            thread_.join();
    }

    CCryptoPipeServer server_;
    Fill reply_;
    std::int32_t status_;
    bool answers_;
    std::vector<std::string> requests_;
    std::uint32_t greetings_ = 0;
    std::uint32_t farewells_ = 0;
    std::thread thread_;
};

std::string Told(const std::optional<std::uint32_t>& answer)
{
    return answer ? std::to_string(*answer) : "failed";
}

std::string Told(bool good)
{
    return good ? "good" : "failed";
}

std::string Told(bool good, const element& pin, const element& puk = element())
{
    return Told(good) + " " + std::string(pin.view()) + " " + std::string(puk.view());
}

const SGUIPinRequest pinRequest = {"title", 4, 8, "text", 3, "details"};
const std::string pinItems = wire::Text("title") + wire::Int(4) + wire::Int(8) + wire::Text("text");
const SGUIPukRequest pukRequest = {1, "title", 4, 8, 3};

struct Operation {
    const char* name;
    std::function<std::string(CGUIClient&)> run;
    std::uint32_t type;
    std::string body;
    bool answers; ///< a reply is read
    Fill reply;
    const char* good;
    const char* failed;
};

void NoItems(CCryptoPipeServer&) {}

Fill Integers(std::uint32_t first, std::optional<std::uint32_t> second = std::nullopt)
{
    return [=](CCryptoPipeServer& server) {
        server.AddInt(first);
        if (second)
            server.AddInt(*second);
    };
}

Fill Secrets(std::uint32_t result, const char* pin, const char* puk = nullptr)
{
    return [=](CCryptoPipeServer& server) {
        server.AddInt(result);
        server.AddData(pin, static_cast<std::uint32_t>(std::strlen(pin)));
        if (puk != nullptr)
            server.AddData(puk, static_cast<std::uint32_t>(std::strlen(puk)));
    };
}

std::string RunSelection(CGUIClient& client)
{
    const CCryptoString items[] = {"one", "two"};
    std::uint32_t selection = 99;
    const bool good = client.SelectionDialog(3, items, "which", selection);
    return Told(good) + " " + std::to_string(selection);
}

template <typename Ask>
std::string RunPin(Ask ask)
{
    element pin("left over");
    const bool good = ask(pin);
    return Told(good, pin);
}

std::string RunPuk(CGUIClient& client)
{
    element pin;
    element puk;
    const bool good = client.PINAndPUKDialog(pukRequest, pin, puk);
    return Told(good, pin, puk);
}

std::string RunAuthenticate(CGUIClient& client)
{
    return Told(client.Authenticate(pinRequest, [](const element& pin, CCryptoString& reason) {
        reason = "wrong";
        return pin.view() == "1234";
    }));
}

const Operation operations[] = {
    {"Manager", [](CGUIClient& c) { return Told(c.Manager(1, 2)); }, 2, wire::Int(1) + wire::Int(2), true, Integers(7), "7",
     "failed"},
    {"SelectionDialog", RunSelection, 4, wire::Int(3) + wire::Int(2) + wire::Text("one") + wire::Text("two") + wire::Text("which"),
     true, Integers(1, 1), "good 1", "failed 99"},
    {"PinDialog", [](CGUIClient& c) { return RunPin([&](element& pin) { return c.PinDialog(pinRequest, pin); }); }, 5, pinItems,
     true, Secrets(1, "1234"), "good 1234 ", "failed  "},
    {"SetDataToSign", [](CGUIClient& c) { return Told(c.SetDataToSign("data")); }, 6, wire::Text("data"), false, NoItems, "good",
     "good"},
    {"PopUpInfo", [](CGUIClient& c) { return Told(c.PopUpInfo(5, "text")); }, 7, wire::Int(5) + wire::Text("text"), true, NoItems,
     "good", "failed"},
    {"PopUpWarning", [](CGUIClient& c) { return Told(c.PopUpWarning(5, "")); }, 8, wire::Int(5) + wire::Text(""), true, NoItems,
     "good", "failed"},
    {"PopUpError", [](CGUIClient& c) { return Told(c.PopUpError(5, "text")); }, 9, wire::Int(5) + wire::Text("text"), true, NoItems,
     "good", "failed"},
    {"Confirm", [](CGUIClient& c) { return Told(c.Confirm(1, 2, "sure?")); }, 10, wire::Int(1) + wire::Int(2) + wire::Text("sure?"),
     true, Integers(0), "0", "failed"},
    {"Cancel", [](CGUIClient& c) { return Told(c.Cancel()); }, 11, "", true, NoItems, "good", "failed"},
    {"PinDialogEx", [](CGUIClient& c) { return RunPin([&](element& pin) { return c.PinDialogEx(pinRequest, pin); }); }, 13,
     pinItems + wire::Int(3) + wire::Text("details"), true, Secrets(1, "1234", "more"), "good 1234 ", "failed  "},
    {"PINAndPUKDialog", RunPuk, 14, wire::Int(1) + wire::Text("title") + wire::Int(4) + wire::Int(8) + wire::Int(3), true,
     Secrets(1, "1234", "87654321"), "good 1234 87654321", "failed  "},
    {"SetPinCache", [](CGUIClient& c) { return Told(c.SetPinCache(1, "card", "1234")); }, 15,
     wire::Int(1) + wire::Text("card") + wire::Text("1234"), true, NoItems, "good", "failed"},
    {"GetPinCache", [](CGUIClient& c) { return RunPin([&](element& pin) { return c.GetPinCache(1, "card", pin); }); }, 16,
     wire::Int(1) + wire::Text("card"), true, Secrets(1, "1234"), "good 1234 ", "failed  "},
    {"RunScript", [](CGUIClient& c) { return Told(c.RunScript("a", "b", "c")); }, 17,
     wire::Text("a") + wire::Text("b") + wire::Text("c"), true, Integers(7), "7", "failed"},
    {"UpdateKVApp", [](CGUIClient& c) { return Told(c.UpdateKVApp()); }, 18, "", true, Integers(7), "7", "failed"},
    {"BeginGuiTransaction", [](CGUIClient& c) { return Told(c.BeginGuiTransaction("me")); }, 20, wire::Text("me"), true,
     Integers(1), "good", "failed"},
    {"EndGuiTransaction", [](CGUIClient& c) { return Told(c.EndGuiTransaction("me")); }, 21, wire::Text("me"), true, NoItems,
     "good", "failed"},
    {"SetPdfDocumentToSign", [](CGUIClient& c) { return Told(c.SetPdfDocumentToSign("C:\\a.pdf")); }, 22,
     "\x02\x09\0\0\0C:\\a.pdf\0"s, false, NoItems, "good", "good"},
    {"Authenticate", RunAuthenticate, 13, pinItems + wire::Int(3) + wire::Text("details"), true, Secrets(1, "1234"), "good",
     "failed"},
};

TEST_F(GuiClient, EveryOperationSendsItsRequestAndTakesItsReply)
{
    for (const Operation& operation : operations) {
        SCOPED_TRACE(operation.name);
        CannedServer server(operation.reply, 0, operation.answers);
        {
            CGUIClient client(false);
            ASSERT_EQ(client.status(), CGUIClient::guiPresent);
            EXPECT_EQ(operation.run(client), operation.good);
        }
        const auto requests = server.Requests();
        ASSERT_EQ(requests.size(), 1U);
        EXPECT_EQ(requests[0], wire::Header(operation.type, 0, static_cast<std::uint32_t>(operation.body.size())) + operation.body);
        EXPECT_EQ(server.greetings(), 1U);
        EXPECT_EQ(server.farewells(), 1U);
    }
}

TEST_F(GuiClient, AnswersTheRequestTableDescribes)
{
    for (const Operation& operation : operations) {
        SCOPED_TRACE(operation.name);
        const GuiRequest* request = FindGuiRequest(operation.type);
        ASSERT_NE(request, nullptr);
        EXPECT_EQ(request->replies, operation.answers);
    }
    EXPECT_EQ(FindGuiRequest(3), nullptr);
    EXPECT_EQ(FindGuiRequest(19), nullptr);
}

struct BadReply {
    const char* name;
    std::int32_t status;
    Fill reply;
    bool harmless; ///< for an operation that expects no items
};

const BadReply badReplies[] = {
    {"status not 0", 1, Secrets(1, "1234", "87654321"), false},
    {"no result", 0, NoItems, true},
    {"wrong items", 0, [](CCryptoPipeServer& server) { server.AddData("text"); }, true},
    {"result 0", 0, [](CCryptoPipeServer& server) { server.AddInt(0), server.AddInt(1), server.AddData("1234"); }, true},
    {"an item too many", 0, [](CCryptoPipeServer& server) { server.AddInt(1), server.AddInt(1), server.AddInt(1); }, true},
};

TEST_F(GuiClient, BadRepliesFailTheOperation)
{
    for (const BadReply& bad : badReplies) {
        CannedServer server(bad.reply, bad.status);
        CGUIClient client(false);
        for (const Operation& operation : operations) {
            SCOPED_TRACE(bad.name + " to "s + operation.name);
            // A transaction is asked for 60 times, so one bad reply is enough for it.
            if (!operation.answers || (operation.type == 20 && bad.status == 0))
                continue;
            const bool expectsItems = FindGuiRequest(operation.type)->reply[0].kind != GuiItemKind::none;
            EXPECT_EQ(operation.run(client), bad.harmless && !expectsItems ? operation.good : operation.failed);
        }
    }
}

TEST_F(GuiClient, RefusalsFailTheDialogs)
{
    CannedServer server(Secrets(0, "1234", "87654321"));
    CGUIClient client(false);
    element pin;
    EXPECT_FALSE(client.PinDialogEx(pinRequest, pin));
    EXPECT_TRUE(pin.isEmpty());
    EXPECT_EQ(RunPuk(client), "failed  ");
    EXPECT_EQ(RunAuthenticate(client), "failed");
}

TEST_F(GuiClient, WrongPinIsNotAuthenticated)
{
    CannedServer server(Secrets(1, "4321"));
    CGUIClient client(false);
    EXPECT_EQ(RunAuthenticate(client), "failed");
}

TEST_F(GuiClient, TransactionIsAskedFor60Times)
{
    CannedServer server(Integers(0));
    EXPECT_FALSE(CGUIClient(false).BeginGuiTransaction("me"));
    EXPECT_EQ(server.Requests().size(), 60U);
    EXPECT_EQ(pauses, 60U);
    EXPECT_EQ(pausedFor, 500U);
}

TEST_F(GuiClient, TransactionIsGrantedInTheEnd)
{
    std::uint32_t asked = 0;
    CannedServer server([&](CCryptoPipeServer& pipe) { pipe.AddInt(++asked == 3); });
    EXPECT_TRUE(CGUIClient(false).BeginGuiTransaction("me"));
    EXPECT_EQ(server.Requests().size(), 3U);
    EXPECT_EQ(pauses, 2U);
}

struct GrantReply {
    const char* name;
    std::int32_t status;
    Fill reply;
    bool granted;
    std::size_t requests;
};

TEST_F(GuiClient, TransactionIsAskedForUntilAGrant)
{
    const GrantReply replies[] = {
        {"a grant", 0, Integers(1), true, 1},
        {"any number but 0 grants", 0, Integers(0x80000000), true, 1},
        {"a grant and a surplus item", 0, Integers(1, 1), false, 1},
        {"a grant with a bad status", 3, Integers(1), false, 60},
        {"a refusal and a surplus item", 0, Integers(0, 1), false, 60},
        {"nothing", 0, NoItems, false, 60},
    };
    for (const GrantReply& test : replies) {
        SCOPED_TRACE(test.name);
        CannedServer server(test.reply, test.status);
        EXPECT_EQ(CGUIClient(false).BeginGuiTransaction("me"), test.granted);
        EXPECT_EQ(server.Requests().size(), test.requests);
    }
}

TEST_F(GuiClient, FarewellCanBeSaidBeforehand)
{
    CannedServer server(NoItems);
    {
        CGUIClient client(false);
        client.SayFarewell();
    }
    server.Requests();
    EXPECT_EQ(server.farewells(), 2U);
}

TEST_F(GuiClient, NoDesktopMeansNoGui)
{
    CannedServer server(NoItems);
    for (const bool withoutGui : {false, true}) {
        CurrentSession().hasInputDesktop = [] { return false; };
        CGUIClient client(withoutGui);
        EXPECT_EQ(client.status(), CGUIClient::noGui);
        for (const Operation& operation : operations) {
            SCOPED_TRACE(operation.name);
            EXPECT_TRUE(operation.run(client).starts_with("failed"));
        }
        client.SayFarewell();
        CurrentSession().hasInputDesktop = [] { return true; };
    }
    EXPECT_TRUE(server.Requests().empty());
    EXPECT_EQ(server.greetings(), 0U);
    EXPECT_EQ(server.farewells(), 0U);
    EXPECT_EQ(pauses, 0U);
}

TEST_F(GuiClient, StatusSaysWhyThereIsNoGui)
{
    EXPECT_EQ(CGUIClient(false).status(), CGUIClient::noGui);

    const std::string name = CCryptoPipeClient(CGUI::pipeName, 1, true).name();
    const platform::ScopedHandle server = peers::Listen(name);
    const platform::ScopedHandle otherClient = peers::Connect(name);
    ASSERT_TRUE(otherClient);
    CurrentSession().busyTimeout = 50;
    EXPECT_EQ(CGUIClient(false).status(), CGUIClient::guiBusy);
}

TEST_F(GuiClient, RefusedGreetingMeansNoGui)
{
    const platform::ScopedHandle pipe = peers::Listen(CCryptoPipeClient(CGUI::pipeName, 1, true).name());
    std::thread server([&] {
        ConnectNamedPipe(pipe.get(), nullptr);
        EXPECT_EQ(peers::ReadRequest(pipe.get()), wire::Header(1, 0, 0));
        peers::WriteMessage(pipe.get(), wire::Header(1, 1, 0));
        FlushFileBuffers(pipe.get());
        DisconnectNamedPipe(pipe.get());
    });
    EXPECT_EQ(CGUIClient(false).status(), CGUIClient::noGui);
    server.join();
}

} // namespace
