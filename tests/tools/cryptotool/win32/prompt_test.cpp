#include "core/platform/win32/scoped_handle.h"
#include "core/platform/win32/wide.h"
#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/small_files.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

using namespace ccrypto;

// Windows has them from version 1809 on, and the headers declare them for programs that ask for as much.
extern "C" {
__declspec(dllimport) HRESULT WINAPI CreatePseudoConsole(COORD size, HANDLE input, HANDLE output, DWORD flags, void** console);
__declspec(dllimport) void WINAPI ClosePseudoConsole(void* console);
}

namespace {

constexpr DWORD_PTR pseudoConsoleAttribute = 0x00020016;

struct BytePipe {
    BytePipe()
    {
        HANDLE ends[2] = {};
        EXPECT_TRUE(CreatePipe(&ends[0], &ends[1], nullptr, 0));
        readEnd.reset(ends[0]);
        writeEnd.reset(ends[1]);
    }
    /// \return false at the end.
    bool get(char& byte) const
    {
        DWORD got = 0;
        return ReadFile(readEnd.get(), &byte, 1, &got, nullptr) && got == 1;
    }

    platform::ScopedHandle readEnd;
    platform::ScopedHandle writeEnd;
};

/// The program in a console of its own, at which this test sits; its standard output and error go elsewhere.
class ProgramConsole {
public:
    explicit ProgramConsole(const std::string& arguments)
    {
        EXPECT_EQ(CreatePseudoConsole({200, 25}, typed_.readEnd.get(), shown_.writeEnd.get(), 0, &console_), S_OK);
        typed_.readEnd.reset();
        shown_.writeEnd.reset();
        EXPECT_TRUE(SetHandleInformation(written_.writeEnd.get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT));

        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        std::string attributes(size, '\0');
        auto* const list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(attributes.data());
        EXPECT_TRUE(InitializeProcThreadAttributeList(list, 1, 0, &size));
        EXPECT_TRUE(UpdateProcThreadAttribute(list, 0, pseudoConsoleAttribute, console_, sizeof console_, nullptr, nullptr));
        STARTUPINFOEXW startup = {};
        startup.StartupInfo.cb = sizeof startup;
        startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
        startup.StartupInfo.hStdOutput = written_.writeEnd.get();
        startup.StartupInfo.hStdError = written_.writeEnd.get();
        startup.lpAttributeList = list;
        PROCESS_INFORMATION process = {};
        std::wstring command = platform::Utf8ToWide("\"" PROGRAM_DIR "/cryptotool.exe\" " + arguments);
        EXPECT_TRUE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr,
                                   &startup.StartupInfo, &process));
        process_.reset(process.hProcess);
        CloseHandle(process.hThread);
        DeleteProcThreadAttributeList(list);
        written_.writeEnd.reset();
        // Without its program a console stays, and who reads from it waits.
        closing_ = std::thread([this] {
            exitCode();
            ClosePseudoConsole(console_);
        });
    }
    ~ProgramConsole()
    {
        TerminateProcess(process_.get(), 99);
        closing_.join();
    }
    ProgramConsole(const ProgramConsole&) = delete;
    ProgramConsole& operator=(const ProgramConsole&) = delete;

    /// What the console shows up to `text`, or up to the end. A blank may be shown as a move of the cursor.
    std::string shownUntil(const std::string& text) const
    {
        std::string shown;
        for (char byte = 0; (text.empty() || shown.find(text) == std::string::npos) && shown_.get(byte);)
            shown += byte;
        return shown;
    }
    void type(const std::string& text) const
    {
        DWORD count = 0;
        EXPECT_TRUE(WriteFile(typed_.writeEnd.get(), text.data(), static_cast<DWORD>(text.size()), &count, nullptr));
    }
    /// Standard output and error up to their end.
    std::string written() const
    {
        std::string text;
        for (char byte = 0; written_.get(byte);)
            text += byte;
        return text;
    }
    DWORD exitCode() const
    {
        DWORD code = 98;
        WaitForSingleObject(process_.get(), INFINITE);
        GetExitCodeProcess(process_.get(), &code);
        return code;
    }

private:
    BytePipe typed_;
    BytePipe shown_;
    BytePipe written_;
    void* console_ = nullptr;
    platform::ScopedHandle process_;
    std::thread closing_;
};

TEST(CryptotoolPrompt, AKeyIsTypedWithoutBeingShown)
{
    const TemporaryDirectory folder;
    const std::string file = folder / u8"text";
    // RFC 4231, 4.3.
    PutFile(file, "what do ya want for nothing?");
    ProgramConsole console("mac hmac-sha256 \"" + file + "\"");
    console.shownUntil("Enter the key:");
    console.type("Jefe\r");
    EXPECT_NE(console.written().find("5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843"), std::string::npos);
    EXPECT_EQ(console.exitCode(), 0U);
    EXPECT_EQ(console.shownUntil({}).find("Jefe"), std::string::npos);
}

TEST(CryptotoolPrompt, ANewPasswordIsTypedTwice)
{
    ProgramConsole console("key gen P-256 --form encrypted");
    console.shownUntil("Enter the password:");
    console.type("p\xC3\xA4iv\xC3\xA4\r");
    console.shownUntil("again:");
    console.type("paiva\r");
    EXPECT_EQ(console.written(), "cryptotool: password: the two lines differ\n");
    EXPECT_EQ(console.exitCode(), 1U);
}

} // namespace
