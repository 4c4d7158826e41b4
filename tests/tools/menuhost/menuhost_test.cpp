#include "core/platform/win32/wide.h"
#include "tests/shellext/com/loaded_library.h"
#include "tests/support/child_program.h"
#include "tests/support/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

using namespace ccrypto;

using ::testing::HasSubstr;
using ::testing::Not;

namespace {

struct Ended {
    DWORD exitCode;
    std::string output; ///< standard output and standard error
};

Ended RunMenuHost(const std::vector<std::wstring>& arguments)
{
    std::string commandLine = "\"" PROGRAM_DIR "/menuhost.exe\"";
    for (const std::wstring& argument : arguments)
        commandLine += " \"" + platform::WideToUtf8(argument) + "\"";
    ChildProgram program(commandLine);
    std::string output = program.Rest();
    return {program.ExitCode(), std::move(output)};
}

/// The library registered for real, in the registry that programs started from here see.
class MenuHost : public ::testing::Test {
protected:
    MenuHost() { registered_ = library_.call("DllRegisterServer"); }
    ~MenuHost() override { library_.call("DllUnregisterServer"); }
    void SetUp() override { ASSERT_EQ(registered_, S_OK); }

    LoadedLibrary library_;
    HRESULT registered_;
    TemporaryDirectory folder_;
};

} // namespace

// The language is that of the environment the tests were started in; the build runs this case once for each.
TEST_F(MenuHost, ShowsTheEntryInTheUsersLanguage)
{
    const std::map<std::wstring, std::string> texts = {
        {L"en_US.UTF-8", "Sign .pdf document"},
        {L"fi_FI.UTF-8", "Allekirjoita .pdf-dokumentti"},
        {L"sv_FI.UTF-8", "Signera .PDF med elektronisk signatur"},
        {L"sv_SE.UTF-8", "Signera .PDF med elektronisk signatur"},
        {L"de_DE.UTF-8", "Sign .pdf document"},
    };
    wchar_t locale[64] = {};
    GetEnvironmentVariableW(L"LC_ALL", locale, 64);
    const auto expected = texts.find(locale);
    if (expected == texts.end())
        GTEST_SKIP() << "LC_ALL names no locale of the table";

    const Ended result = RunMenuHost({folder_.create(L"report.pdf").wstring()});
    EXPECT_EQ(result.exitCode, 0U);
    EXPECT_THAT(result.output, HasSubstr("QueryContextMenu    0x00000001 success, code 1\nitem                \"&" +
                                         expected->second + "\" command 0, verb \"PdfSignature\", help \"" + expected->second +
                                         "\", bitmap 16 x 16, 32 bits\nitem                separator\n"));
}

TEST_F(MenuHost, SaysWhatTheHandlerRefuses)
{
    struct Case {
        const char* name;
        std::vector<std::wstring> arguments;
        DWORD exitCode;
        const char* said;
    };
    const std::wstring document = folder_.create(L"report.pdf");
    const std::wstring note = folder_.create(L"note.txt");
    const Case cases[] = {
        {"another file", {note}, 1, "Initialize          0x80004005 E_FAIL"},
        {"no file there", {document + L"x"}, 1, "ERROR_FILE_NOT_FOUND; there is no such file"},
        {"files of two folders",
         {document, folder_.create(L"below\\other.pdf").wstring()},
         1,
         "Selection           0x80070057 E_INVALIDARG; the files must lie in one folder"},
        {"default item only", {L"--flags", L"CMF_EXPLORE,1", document}, 1, "QueryContextMenu    0x00000000 S_OK"},
        {"nobody to invoke", {L"--invoke", document}, 1, "InvokeCommand       0x80004005 E_FAIL"},
        {"as JSON", {L"--json", note}, 1, "{\"exit\": 1, \"calls\": [{\"call\": \"Selection\", \"result\": \"0x00000000\""},
        {"unknown option", {L"--loud", document}, 2, "not understood: --loud"},
        {"unknown flag", {L"--flags", L"CMF_NONE", document}, 2, "not understood: --flags CMF_NONE"},
        {"no file named", {}, 2, "no file named"},
        {"help", {L"--help"}, 0, "--show-seconds"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Ended result = RunMenuHost(c.arguments);
        EXPECT_EQ(result.exitCode, c.exitCode);
        EXPECT_THAT(result.output, HasSubstr(c.said));
    }
}

TEST_F(MenuHost, NoticesThatNothingIsRegistered)
{
    ASSERT_EQ(library_.call("DllUnregisterServer"), S_OK);
    const Ended result = RunMenuHost({folder_.create(L"report.pdf").wstring()});
    EXPECT_EQ(result.exitCode, 1U);
    EXPECT_THAT(result.output, HasSubstr("Registration        0x80070002 ERROR_FILE_NOT_FOUND; not registered: regsvr32 "));
    EXPECT_THAT(result.output, Not(HasSubstr("CoCreateInstance")));
    library_.call("DllRegisterServer");
}
