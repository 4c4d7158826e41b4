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
    appendShared,  ///< as append, for a file in a folder that others can write to; see File
};

/// A file of bytes. Names are UTF-8 and may be longer than 260 characters on Windows too; a null name is as an empty one.
/// Failures leave LastError(). Sockets and folders are refused.
///
/// On POSIX mode read takes a pipe, too: it is read to its end when it is opened, and its content is then a file as any other. More
/// than 64 MiB, an end that does not come within a minute, and a pipe that nobody has opened for writing are failures. Other modes
/// refuse pipes. So does Windows in every mode, since the server of a pipe may act as the user who opens it.
///
/// On POSIX a file that appendShared creates may be written by every user, whatever the umask is, and one that exists must be a
/// file with a single name: links, which another user may have planted, are not followed. On Windows only those who administer the
/// machine can plant a link.
class File {
public:
    [[nodiscard]] bool open(const char* name, FileMode mode);
    bool isOpen() const { return static_cast<bool>(handle_); }
    void close() { handle_.reset(); }

    /// \return the number of bytes read from `position`, fewer than `count` at the end of the file; -1 on failure.
    [[nodiscard]] std::int64_t readAt(std::uint64_t position, void* target, std::uint32_t count);
    /// All of it or failure. In the append modes the bytes go to the end of the file, whatever `position` says.
    [[nodiscard]] bool writeAt(std::uint64_t position, const void* source, std::uint32_t count);
    [[nodiscard]] bool append(const void* source, std::uint32_t count);
    /// -1 on failure.
    [[nodiscard]] std::int64_t size() const;
    /// In the append modes, too.
    [[nodiscard]] bool truncate(std::uint64_t size);

    static bool Remove(const char* name);
    /// Gives the file `from` the name `to`, in one step; a file of that name is gone then.
    [[nodiscard]] static bool Replace(const char* from, const char* to);

private:
    struct Kind {
        using Value = std::intptr_t;
        static Value none() { return -1; }
        static void close(Value value);
    };

    ccrypto::SystemHandle<Kind> handle_;
};

} // namespace ccrypto::platform
