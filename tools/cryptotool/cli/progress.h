#pragma once

#include "tools/cryptotool/cli/console.h"

#include <cstdint>
#include <string_view>

namespace ccrypto {

/// A line on a terminal for work that takes long, gone when the work is done. Nothing is shown with --quiet, where standard error
/// is not a terminal, and for work that is done within half a second.
class ProgressLine {
public:
    explicit ProgressLine(Console& console);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    /// Whether it is time to show how far the work is.
    bool isDue();
    /// \param text at most 70 characters.
    void show(std::string_view text);

private:
    Console& console_;
    bool isShown_ = false;
    bool isVisible_;
    Console::Clock::time_point next_;
};

/// A bar on such a line.
class Progress {
public:
    /// \param total bytes of input, -1 when it is not known.
    Progress(Console& console, std::int64_t total) : line_(console), total_(total) {}

    void add(std::uint64_t count);

private:
    void show();

    ProgressLine line_;
    std::int64_t total_;
    std::uint64_t done_ = 0;
};

} // namespace ccrypto
