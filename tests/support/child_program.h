#pragma once

#include "core/platform/win32/scoped_handle.h"
#include "core/platform/win32/wide.h"

#include <string>

namespace ccrypto {

/// A console program that is running, its standard output and error together at hand line by line.
class ChildProgram {
public:
    /// What it may write before somebody reads, in bytes.
    static constexpr DWORD pipeSize = 1U << 20;

    /// \param commandLine UTF-8.
    explicit ChildProgram(const std::string& commandLine)
    {
        SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
        platform::ScopedHandle childEnd;
        CreatePipe(output_.receive(), childEnd.receive(), &inheritable, pipeSize);
        SetHandleInformation(output_.get(), HANDLE_FLAG_INHERIT, 0);

        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = childEnd.get();
        startup.hStdError = childEnd.get();
        PROCESS_INFORMATION process = {};
        std::wstring wide = platform::Utf8ToWide(commandLine);
        if (CreateProcessW(nullptr, wide.data(), nullptr, nullptr, TRUE, CREATE_NEW_PROCESS_GROUP, nullptr, nullptr, &startup,
                           &process)) {
            process_.reset(process.hProcess);
            const platform::ScopedHandle thread(process.hThread);
        }
    }
    ~ChildProgram()
    {
        if (process_)
            TerminateProcess(process_.get(), 99);
    }

    /// The next line without its end; empty at the end of output.
    std::string Line()
    {
        std::string line;
        char byte;
        DWORD got;
        while (ReadFile(output_.get(), &byte, 1, &got, nullptr) && got == 1 && byte != '\n')
            line += byte;
        return line;
    }

    /// Everything up to the end of output.
    std::string Rest()
    {
        std::string rest;
        char bytes[4096];
        DWORD got;
        while (ReadFile(output_.get(), bytes, sizeof bytes, &got, nullptr) && got != 0)
            rest.append(bytes, got);
        return rest;
    }

    DWORD ExitCode()
    {
        DWORD code = 98;
        WaitForSingleObject(process_.get(), INFINITE);
        GetExitCodeProcess(process_.get(), &code);
        return code;
    }

private:
    platform::ScopedHandle process_;
    platform::ScopedHandle output_;
};

} // namespace ccrypto
