#include "tests/shellext/temporary_files.h"

#include <windows.h>

#include <stdexcept>

using namespace ccrypto;

namespace ccrypto {

TemporaryFiles::TemporaryFiles()
{
    static int number = 0;
    wchar_t path[MAX_PATH];
    if (GetTempPathW(MAX_PATH, path) == 0)
        throw std::runtime_error("no temporary folder");
    // The long form, which is what the shell hands out.
    wchar_t longPath[MAX_PATH];
    if (GetLongPathNameW(path, longPath, MAX_PATH) == 0)
        throw std::runtime_error("the temporary folder is not there");
    folder_ = longPath + std::wstring(L"shellext-") + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++number);
    CreateDirectoryW(folder_.c_str(), nullptr);
}

TemporaryFiles::~TemporaryFiles()
{
    for (const std::wstring& file : files_)
        DeleteFileW(file.c_str());
    for (const std::wstring& folder : folders_)
        RemoveDirectoryW(folder.c_str());
    RemoveDirectoryW(folder_.c_str());
}

std::wstring TemporaryFiles::create(const std::wstring& name)
{
    std::wstring path = folder_ + L"\\" + name;
    const std::size_t separator = name.rfind(L'\\');
    if (separator != std::wstring::npos) {
        folders_.push_back(folder_ + L"\\" + name.substr(0, separator));
        CreateDirectoryW(folders_.back().c_str(), nullptr);
    }
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        throw std::runtime_error("a temporary file could not be made");
    CloseHandle(file);
    files_.push_back(path);
    return path;
}

} // namespace ccrypto
