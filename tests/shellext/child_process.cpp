#include "tests/shellext/child_process.h"

#include "core/platform/win32/scoped_handle.h"

#include <stdexcept>

using namespace ccrypto;

namespace {

using platform::ScopedHandle;

std::string ReadAll(HANDLE pipe)
{
    std::string text;
    char buffer[4096];
    DWORD read = 0;
    while (ReadFile(pipe, buffer, sizeof buffer, &read, nullptr) && read > 0)
        text.append(buffer, read);
    return text;
}

ChildResult Run(std::wstring commandLine)
{
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    if (!CreatePipe(&readEnd, &writeEnd, &inherited, 0))
        throw std::runtime_error("no pipe for the program's output");
    const ScopedHandle reading(readEnd);
    ScopedHandle writing(writeEnd);
    SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);

    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = writeEnd;
    start.hStdError = writeEnd;
    PROCESS_INFORMATION started = {};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &started))
        throw std::runtime_error("the program cannot be started: error " + std::to_string(GetLastError()));
    const ScopedHandle process(started.hProcess);
    const ScopedHandle thread(started.hThread);
    writing.reset();

    ChildResult result;
    result.output = ReadAll(readEnd);
    WaitForSingleObject(started.hProcess, INFINITE);
    GetExitCodeProcess(started.hProcess, &result.exitCode);
    return result;
}

} // namespace

namespace ccrypto {

ChildResult RunProgram(const std::wstring& name, const std::vector<std::wstring>& arguments)
{
    const std::string folder = PROGRAM_DIR;
    std::wstring commandLine = L"\"" + std::wstring(folder.begin(), folder.end()) + L"/" + name + L".exe\"";
    for (const std::wstring& argument : arguments)
        commandLine += L" \"" + argument + L"\"";
    return Run(commandLine);
}

} // namespace ccrypto
