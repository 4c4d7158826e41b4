#pragma once

#include "core/platform/named_mutex.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace ccrypto {

class LogLine;

/// Receives every finished line, zero-terminated, without its line end. Lines that the callback's own work writes go to the file
/// alone.
using LogCallback = void (*)(const char* line);

/// Where lines go: a callback, and a text file that processes and threads share. Its settings never change; a change of settings
/// is a new output. Any thread may deliver.
class LogOutput {
public:
    struct Settings {
        LogCallback callback = nullptr;
        /// At most 19 characters are kept.
        std::string tag;
        /// The file; empty for none.
        std::string path;
        /// Every thread writes a file of its own: ".LOG" of the path becomes "-%04x.LOG" of the thread id.
        bool filePerThread = false;
    };

    explicit LogOutput(Settings settings);

    const Settings& settings() const { return settings_; }

    /// Makes the mutex that guards the file, named "AutoLogger_" and the tag; otherwise the first line does. \return whether it is
    /// open.
    bool openMutex();

    /// Hands the line to the callback and appends it to the file, which users share. A file that stays busy for a second loses the
    /// line; until it is free again, the lines after that one wait a hundredth of the time, so that a program that holds the file
    /// does not hold up this one. A file that cannot take the whole line, as on a full disk, takes none of it. Where the system has
    /// no mutex to give, the line is appended unguarded.
    void deliver(LogLine& line);

private:
    void callBack(const char* line);
    void append(std::string_view line);
    std::string threadPath() const;

    Settings settings_;
    std::mutex opening_;
    platform::NamedMutex mutex_;
    std::atomic<bool> busy_{false};
    std::mutex calling_;
    std::vector<std::uint32_t> threadsInCallback_;
};

} // namespace ccrypto
