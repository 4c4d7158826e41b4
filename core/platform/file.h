#pragma once

#include "core/platform/system_handle.h"

#include <cstdint>

namespace ccrypto::platform {

/// What ends a folder in a path of this system.
extern const char pathSeparator;

/// The folder of log files when the settings name none: "C:\" on Windows, "/var/log/" on POSIX, where an unprivileged process
/// writes no file unless the settings name a folder.
extern const char* const defaultLogDirectory;

enum class FileMode {
    read,          ///< must exist
    write,         ///< created, or emptied when it exists
    append,        ///< created when missing; every write goes to the end
    readWrite,     ///< created when missing; contents kept
    create,        ///< must not exist, not even as a link; to be written
    createPrivate, ///< the same, for the file's owner alone; on Windows for those whom the folder grants it
    appendShared,  ///< as append; on POSIX a file that is created may be written by every user, whatever the umask is
};

/// A file of bytes. Names are UTF-8 and may be longer than 260 characters on Windows too; a null name is as an empty one.
/// Failures leave LastError(). Pipes, sockets and folders are refused.
class File {
public:
    [[nodiscard]] bool open(const char* name, FileMode mode);
    bool isOpen() const { return static_cast<bool>(handle_); }
    void close() { handle_.reset(); }

    /// \return the number of bytes read from `position`, fewer than `count` at the end of the file; -1 on failure.
    std::int64_t readAt(std::uint64_t position, void* target, std::uint32_t count);
    /// All of it or failure. In the append modes the bytes go to the end of the file, whatever `position` says.
    bool writeAt(std::uint64_t position, const void* source, std::uint32_t count);
    bool append(const void* source, std::uint32_t count);
    /// -1 on failure.
    std::int64_t size() const;
    bool truncate(std::uint64_t size);

    static bool Remove(const char* name);
    /// Gives the file `from` the name `to`, in one step; a file of that name is gone then.
    static bool Replace(const char* from, const char* to);

private:
    struct Kind {
        using Value = std::intptr_t;
        static Value none() { return -1; }
        static void close(Value value);
    };

    ccrypto::SystemHandle<Kind> handle_;
};

} // namespace ccrypto::platform
