#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <string>

namespace {

/// The program on a terminal of its own, at which this test sits.
class Terminal {
public:
    /// \param environment words for env(1).
    explicit Terminal(const std::string& arguments, const std::string& environment = {})
    {
        const std::string command =
            "printf '%s' 'what do ya want for nothing?' | env " + environment + " " PROGRAM_DIR "/cryptotool " + arguments;
        child_ = forkpty(&master_, nullptr, nullptr, nullptr);
        if (child_ == 0) {
            execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
            _exit(127);
        }
    }
    ~Terminal() { close(master_); }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// What the terminal shows up to `text`, or up to the end.
    std::string shownUntil(const std::string& text)
    {
        std::string shown;
        char byte = 0;
        while ((text.empty() || !shown.ends_with(text)) && read(master_, &byte, 1) == 1)
            shown += byte;
        return shown;
    }
    void type(const std::string& text) { EXPECT_EQ(write(master_, text.data(), text.size()), static_cast<ssize_t>(text.size())); }
    void editNoLines()
    {
        termios modes = {};
        tcgetattr(master_, &modes);
        modes.c_lflag &= ~static_cast<tcflag_t>(ICANON);
        EXPECT_EQ(tcsetattr(master_, TCSANOW, &modes), 0);
    }
    bool showsTyping() const
    {
        termios modes = {};
        return tcgetattr(master_, &modes) == 0 && (modes.c_lflag & ECHO) != 0;
    }
    int end()
    {
        int status = 0;
        waitpid(child_, &status, 0);
        return status;
    }

private:
    int master_ = -1;
    pid_t child_ = -1;
};

TEST(CryptotoolPrompt, AKeyIsTypedWithoutBeingShown)
{
    Terminal terminal("mac hmac-sha256 -");
    EXPECT_EQ(terminal.shownUntil(": "), "Enter the key: ");
    EXPECT_FALSE(terminal.showsTyping());
    terminal.type("Jefe\n");
    EXPECT_EQ(terminal.shownUntil("\n"), "\r\n");
    EXPECT_EQ(terminal.shownUntil("\n"), "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843  -\r\n");
    EXPECT_TRUE(terminal.showsTyping());
    EXPECT_EQ(terminal.end(), 0);
}

TEST(CryptotoolPrompt, ALineHasItsLimit)
{
    // Without line editing the terminal passes on whatever comes.
    Terminal terminal("mac hmac-sha256 -");
    EXPECT_EQ(terminal.shownUntil(": "), "Enter the key: ");
    terminal.editNoLines();
    terminal.type(std::string(5000, 'k'));
    EXPECT_NE(terminal.shownUntil("").find("no line came from a terminal"), std::string::npos);
    EXPECT_EQ(WEXITSTATUS(terminal.end()), 1);
}

TEST(CryptotoolPrompt, AnInterruptedTerminalShowsTypingAgain)
{
    Terminal terminal("mac hmac-sha256 -; true");
    EXPECT_EQ(terminal.shownUntil(": "), "Enter the key: ");
    terminal.type("Je\x03");
    terminal.shownUntil("\n");
    terminal.end();
    EXPECT_TRUE(terminal.showsTyping());
}

TEST(CryptotoolColor, IsOffWhereTheEnvironmentSaysSo)
{
    const struct {
        const char* environment;
        const char* redirection;
        bool isColored;
    } cases[] = {
        {"-u NO_COLOR TERM=xterm", "", true},
        {"NO_COLOR= TERM=xterm", "", true},
        {"NO_COLOR=1 TERM=xterm", "", false},
        {"-u NO_COLOR TERM=dumb", "", false},
        {"-u NO_COLOR TERM=xterm", " 2>&1 | cat", false},
        {"NO_COLOR=1 TERM=dumb", " --color always", true},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(std::string(test.environment) + test.redirection);
        Terminal terminal(std::string("asn1 show /nonexistent") + test.redirection, test.environment);
        const std::string shown = terminal.shownUntil("");
        EXPECT_NE(shown.find("No such file"), std::string::npos);
        EXPECT_EQ(shown.find('\x1b') != std::string::npos, test.isColored) << shown;
        terminal.end();
    }
}

} // namespace
