#pragma once

#include "tools/cryptotool/console.h"

#include <chrono>
#include <cstdint>

/// A bar on a terminal's line for work that takes long; nothing where standard error is no terminal, or where the work is soon
/// done.
class Progress {
public:
    /// \param total bytes of input, -1 when it is not known.
    Progress(Console& console, std::int64_t total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void add(std::uint64_t count);

private:
    using Clock = std::chrono::steady_clock;

    void show();

    Console& console_;
    std::int64_t total_;
    std::uint64_t done_ = 0;
    bool isShown_ = false;
    bool isTerminal_;
    Clock::time_point next_;
};
