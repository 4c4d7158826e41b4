#include "core/platform/file.h"

#include "core/base/c_text.h"
#include "core/platform/win32/scoped_handle.h"
#include "core/platform/win32/wide.h"

#include <windows.h>

namespace ccrypto::platform {

const char pathSeparator = '\\';
const char* const defaultLogDirectory = "C:\\";

namespace {

struct ModeFlags {
    DWORD access;
    DWORD disposition;
};

ModeFlags FlagsOf(FileMode mode)
{
    switch (mode) {
    case FileMode::read:
        return {GENERIC_READ, OPEN_EXISTING};
    case FileMode::write:
        // Emptied once it is open, since opening a hidden file does not empty it unless the call says that it is hidden.
        return {GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS};
    case FileMode::append:
    case FileMode::appendShared:
        // The right to append without the right to write makes the system move every write to the end, other processes' included.
        return {FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE, OPEN_ALWAYS};
    case FileMode::create:
    case FileMode::createPrivate:
        return {GENERIC_READ | GENERIC_WRITE, CREATE_NEW};
    case FileMode::readWrite:
        break;
    }
    return {GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS};
}

/// The name as system calls take it: absolute and after "\\?\" when it is too long for them otherwise.
std::wstring SystemName(const char* name)
{
    std::wstring wide = Utf8ToWide(OrEmpty(name));
    if (wide.starts_with(L"\\\\?\\") || wide.starts_with(L"\\\\.\\"))
        return wide;
    const DWORD needed = GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr);
    if (needed < MAX_PATH)
        return wide;
    std::wstring full(needed, L'\0');
    const DWORD length = GetFullPathNameW(wide.c_str(), needed, full.data(), nullptr);
    if (length == 0 || length >= needed)
        return wide;
    full.resize(length);
    return full.starts_with(L"\\\\") ? L"\\\\?\\UNC\\" + full.substr(2) : L"\\\\?\\" + full;
}

HANDLE HandleOf(std::intptr_t handle)
{
    return reinterpret_cast<HANDLE>(handle); // the header holds what fits both systems
}

OVERLAPPED At(std::uint64_t position)
{
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(position);
    place.OffsetHigh = static_cast<DWORD>(position >> 32);
    return place;
}

bool Truncate(HANDLE file, std::uint64_t size)
{
    FILE_END_OF_FILE_INFO end{};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
    return SetFileInformationByHandle(file, FileEndOfFileInfo, &end, sizeof(end)) != FALSE;
}

/// Empties a file for mode write. \return success, or why an open file cannot be used.
DWORD RefusalOf(HANDLE file, FileMode mode)
{
    if (GetFileType(file) == FILE_TYPE_PIPE)
        return ERROR_SEEK_ON_DEVICE;
    return mode != FileMode::write || GetFileType(file) != FILE_TYPE_DISK || Truncate(file, 0) ? ERROR_SUCCESS : GetLastError();
}

// Stands for the end of the file at the moment of the write.
constexpr std::uint64_t endOfFile = 0xFFFFFFFFFFFFFFFF;

bool WriteAll(HANDLE file, std::uint64_t position, const void* source, std::uint32_t count)
{
    const auto* bytes = static_cast<const unsigned char*>(source);
    while (count != 0) {
        OVERLAPPED place = At(position);
        DWORD part = 0;
        if (!WriteFile(file, bytes, count, &part, &place) || part == 0)
            return false;
        bytes += part;
        count -= part;
        if (position != endOfFile)
            position += part;
    }
    return true;
}

} // namespace

void File::Kind::close(Value value)
{
    CloseHandle(HandleOf(value));
}

bool File::open(const char* name, FileMode mode)
{
    close();
    const ModeFlags flags = FlagsOf(mode);
    const HANDLE file = CreateFileW(SystemName(name).c_str(), flags.access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, flags.disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    // The system's value for no file is -1, too.
    handle_.reset(reinterpret_cast<std::intptr_t>(file));
    if (!isOpen())
        return false;
    const DWORD reason = RefusalOf(file, mode);
    if (reason != ERROR_SUCCESS) {
        close();
        SetLastError(reason);
    }
    return reason == ERROR_SUCCESS;
}

std::int64_t File::readAt(std::uint64_t position, void* target, std::uint32_t count)
{
    auto* const bytes = static_cast<unsigned char*>(target);
    std::uint32_t done = 0;
    while (done < count) {
        OVERLAPPED place = At(position + done);
        DWORD part = 0;
        if (!ReadFile(HandleOf(handle_.get()), bytes + done, count - done, &part, &place)) {
            if (GetLastError() == ERROR_HANDLE_EOF)
                break;
            return -1;
        }
        if (part == 0)
            break;
        done += part;
    }
    return done;
}

bool File::writeAt(std::uint64_t position, const void* source, std::uint32_t count)
{
    return WriteAll(HandleOf(handle_.get()), position, source, count);
}

bool File::append(const void* source, std::uint32_t count)
{
    return WriteAll(HandleOf(handle_.get()), endOfFile, source, count);
}

std::int64_t File::size() const
{
    LARGE_INTEGER size{};
    return GetFileSizeEx(HandleOf(handle_.get()), &size) ? size.QuadPart : -1;
}

bool File::truncate(std::uint64_t size)
{
    if (Truncate(HandleOf(handle_.get()), size))
        return true;
    if (GetLastError() != ERROR_ACCESS_DENIED)
        return false;
    // A file opened to append: the right to truncate comes with the right to write, which would let writes go anywhere.
    const ScopedHandle writable(
        ReOpenFile(HandleOf(handle_.get()), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, 0));
    return writable && Truncate(writable.get(), size);
}

bool File::Remove(const char* name)
{
    return DeleteFileW(SystemName(name).c_str()) != FALSE;
}

bool File::Replace(const char* from, const char* to)
{
    return MoveFileExW(SystemName(from).c_str(), SystemName(to).c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE;
}

} // namespace ccrypto::platform
