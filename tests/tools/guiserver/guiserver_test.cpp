#include "ipc/gui_client.h"
#include "ipc/pipe_client.h"
#include "ipc/session.h"
#include "tests/ipc/raw_peers.h"
#include "tests/ipc/wire_bytes.h"
#include "tests/support/child_program.h"

#include <gtest/gtest.h>

#include <cstdio>

using namespace ccrypto;

namespace {

std::string ProgramLine(const std::string& options)
{
    return "\"" PROGRAM_DIR "/guiserver.exe\" " + options;
}

/// A pipe of this process' own, which the GUI client finds by the session number put in its place.
class GuiServerProgram : public ::testing::Test {
protected:
    void SetUp() override
    {
        CurrentSession().number = [] { return static_cast<std::uint32_t>(GetCurrentProcessId()); };
        CurrentSession().hasInputDesktop = [] { return true; };
        CurrentSession().pause = [](std::uint32_t) {};
        char number[16];
        std::snprintf(number, sizeof number, "%lx", GetCurrentProcessId());
        pipe_ = "\\\\.\\pipe\\PennwickGUIServer_" + std::string(number);
    }

    std::string Server(const std::string& options) const { return ProgramLine("--pipe " + pipe_ + " " + options); }

    std::string pipe_;
};

TEST_F(GuiServerProgram, ShowsTheFilesToSign)
{
    ChildProgram server(Server("--once"));
    EXPECT_EQ(server.Line(), "listening on " + pipe_);
    EXPECT_TRUE(CGUIClient(false).SetPdfDocumentToSign("C:\\a.pdf*C:\\\xC3\xA4.pdf"));
    EXPECT_EQ(server.Rest(), "[1] 1 Greeting, 0 bytes\n"
                             "  answered with status 0\n"
                             "[2] 22 SetPdfDocumentToSign, 24 bytes\n"
                             "    C:\\a.pdf\n"
                             "    C:\\\xC3\xA4.pdf\n"
                             "  not answered\n"
                             "[3] 12 Farewell, 0 bytes\n"
                             "  answered with status 0\n");
    EXPECT_EQ(server.ExitCode(), 0U);
}

TEST_F(GuiServerProgram, AnswersEveryOperation)
{
    ChildProgram server(Server("--once --hex --json --pin 4711 --puk 87654321 --select 1 --grant-after 2"));
    EXPECT_EQ(server.Line(), "{\"listening\":\"\\\\\\\\.\\\\pipe\\\\" + pipe_.substr(9) + "\"}");
    {
        CGUIClient client(false);
        ASSERT_EQ(client.status(), 0U);
        const CCryptoString items[] = {"one", "two"};
        std::uint32_t selection = 0;
        element pin;
        element puk;
        EXPECT_TRUE(client.SelectionDialog(0, items, "which", selection));
        EXPECT_EQ(selection, 1U);
        EXPECT_TRUE(client.PinDialog({}, pin));
        EXPECT_EQ(pin.view(), "4711");
        EXPECT_TRUE(client.PinDialogEx({}, pin));
        EXPECT_TRUE(client.PINAndPUKDialog({}, pin, puk));
        EXPECT_EQ(puk.view(), "87654321");
        EXPECT_TRUE(client.SetPinCache(1, "card", "4711"));
        EXPECT_TRUE(client.GetPinCache(1, "card", pin));
        EXPECT_TRUE(client.BeginGuiTransaction("me"));
        EXPECT_TRUE(client.EndGuiTransaction("me"));
        EXPECT_TRUE(client.PopUpInfo(1, "a") && client.PopUpWarning(1, "b") && client.PopUpError(1, "c") && client.Cancel());
        EXPECT_EQ(client.Manager(1, 2), 1U);
        EXPECT_EQ(client.Confirm(1, 2, "sure?"), 1U);
        EXPECT_EQ(client.RunScript("a", "b", "c"), 1U);
        EXPECT_EQ(client.UpdateKVApp(), 1U);
        EXPECT_TRUE(client.SetDataToSign("data"));
    }
    const std::string told = server.Rest();
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 21);
    EXPECT_EQ(told.find("\"wellFormed\":false"), std::string::npos);
    EXPECT_EQ(told.find("4711"), std::string::npos);
    EXPECT_EQ(told.find("87654321"), std::string::npos);
    EXPECT_EQ(server.ExitCode(), 0U);
}

TEST_F(GuiServerProgram, DeniesWhatAUserCanDeny)
{
    ChildProgram server(Server("--deny --pin 4711"));
    server.Line();
    CGUIClient client(false);
    std::uint32_t selection = 9;
    element pin;
    EXPECT_FALSE(client.SelectionDialog(0, {}, "", selection));
    EXPECT_FALSE(client.PinDialog({}, pin));
    EXPECT_FALSE(client.BeginGuiTransaction("me"));
    EXPECT_EQ(client.Confirm(0, 0, ""), 0U);
}

TEST_F(GuiServerProgram, HostileClientsDoNotEndIt)
{
    const std::string hostile[][2] = {
        {"", ""},
        {"x", ""},
        {std::string(500, 'x'), ""},
        {wire::Header(22, 0, 0xFFFFFFFF), ""},
        {wire::Header(22, 0, 10), ""},
        {wire::Header(22, 0, 3), "xyz"},
        {wire::Header(99, -1, 0), ""},
        {wire::Header(15, 0, 9), wire::Int(1)},
    };
    ChildProgram server(Server("--once --secure"));
    server.Line();
    for (const auto& messages : hostile) {
        const platform::ScopedHandle client = peers::Connect(pipe_);
        ASSERT_TRUE(client);
        for (const std::string& message : messages) {
            if (!message.empty())
                peers::WriteMessage(client.get(), message);
        }
    }
    ASSERT_EQ(CGUIClient(false).status(), 0U);
    server.Rest();
    EXPECT_EQ(server.ExitCode(), 0U);
}

TEST_F(GuiServerProgram, TakesBackAnAnswerThatIsNotRead)
{
    ChildProgram server(Server("--once --pin " + std::string(20000, '1')));
    server.Line();
    {
        const platform::ScopedHandle client = peers::Connect(pipe_);
        const std::string body = wire::Int(1) + wire::Text("card");
        peers::WriteMessage(client.get(), wire::Header(16, 0, static_cast<std::uint32_t>(body.size())));
        peers::WriteMessage(client.get(), body);
        peers::ReadBytes(client.get(), 12);
    }
    ASSERT_EQ(CGUIClient(false).status(), 0U);
    EXPECT_NE(server.Rest().find("[1] the client did not take the answer\n[2]"), std::string::npos);
}

TEST_F(GuiServerProgram, ClientsWithoutRequestsDoNotPutOffItsEnd)
{
    ChildProgram server(Server("--timeout 1"));
    server.Line();
    while (const platform::ScopedHandle client = peers::Connect(pipe_))
        peers::WriteMessage(client.get(), "x");
    EXPECT_EQ(server.ExitCode(), 1U);
}

TEST_F(GuiServerProgram, SaysWhatItDidNotUnderstand)
{
    const struct {
        const char* options;
        const char* said;
    } cases[] = {
        {"--timeout 4294968", "--timeout requires a number from 0 to 4294967\n"},
        {"--select", "--select requires a number from 0 to 4294967295\n"},
        {"--pipe name", "--pipe requires a name that begins with \\\\.\\pipe\\\n"},
        {"--puk 1", "--puk requires --pin\n"},
        {"-x", "argument 1 is not an option\n"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.options);
        ChildProgram server(ProgramLine(test.options));
        const std::string told = server.Rest();
        EXPECT_EQ(told.substr(0, told.find("See guiserver --help")), "guiserver: " + std::string(test.said));
        EXPECT_EQ(server.ExitCode(), 2U);
    }
}

TEST_F(GuiServerProgram, ExitCodeTellsWhatHappened)
{
    const platform::ScopedHandle taken = peers::Listen(pipe_);
    const struct {
        std::string options;
        DWORD code;
    } cases[] = {
        {"--help", 0},
        {"-h", 0},
        {"--pin", 2},
        {"--select x", 2},
        {"--select -1", 2},
        {"--pipe " + pipe_, 1},
        {"--pipe " + peers::FreshPipeName() + " --timeout 1", 1},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.options);
        ChildProgram server(ProgramLine(test.options));
        EXPECT_FALSE(server.Rest().empty());
        EXPECT_EQ(server.ExitCode(), test.code);
    }
}

TEST_F(GuiServerProgram, PinsAreNotRepeatedInComplaints)
{
    for (const char* options : {"--pin 4711 --puk", "--pin=4711", "--pin 12 4711", "4711", "--pni 4711"}) {
        SCOPED_TRACE(options);
        ChildProgram server(ProgramLine(options));
        const std::string told = server.Rest();
        EXPECT_TRUE(told.starts_with("guiserver: "));
        EXPECT_EQ(told.find("4711"), std::string::npos);
    }
}

} // namespace
