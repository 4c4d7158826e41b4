#pragma once

#include "core/log/log_output.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>

/// The state of the log, one per process. It exists before any constructor has run and after every destructor has, so static
/// objects may log at any time. Except for the callback, writing a line neither takes a lock of the library (CCryptoCS) nor writes
/// another line.
namespace ccrypto::logging {

namespace state {
inline constinit std::atomic<std::uint32_t> level{0};
inline constinit std::atomic<bool> profiling{false};
inline constinit std::atomic<std::uint32_t> linesUnderWay{0};
inline constinit std::atomic<std::uint32_t> forcesUnderWay{0};
} // namespace state

/// An operation writes when its depth is below the level: 0 is off, 1 shows the outermost operations alone.
[[nodiscard]] inline std::uint32_t Level()
{
    return state::level.load(std::memory_order_relaxed);
}

[[nodiscard]] inline bool Shows(std::uint32_t depth)
{
    return depth < Level();
}

/// Whether lines give the time that operations took.
[[nodiscard]] inline bool Profiling()
{
    return state::profiling.load(std::memory_order_relaxed);
}

/// Writes one line when `depth` is shown; the thread's last system error stays what it was. Without memory the line is lost.
/// \param timingPrefix empty, or the elapsed time that takes the place of the time of day.
void WriteLine(std::uint32_t depth, std::string_view timingPrefix, std::string_view text) noexcept;

/// While one lives, threads pause after each line, so that the one to be ended by force is soon met where it holds no lock of the
/// log.
struct ForceUnderWay {
    ForceUnderWay() { ++state::forcesUnderWay; }
    ~ForceUnderWay() { --state::forcesUnderWay; }
};

/// Whether no thread holds a lock of the log at this moment.
inline bool NoLineUnderWay()
{
    return state::linesUnderWay == 0;
}

/// Puts new settings in force; lines being written still go to the previous output. \param output may be null with level 0.
void Configure(std::uint32_t level, bool profiling, std::shared_ptr<LogOutput> output);

/// From now on nothing is written; takes no lock.
inline void TurnOff()
{
    state::level = 0;
}

/// The output in force; null before the first Configure.
[[nodiscard]] std::shared_ptr<LogOutput> CurrentOutput();

} // namespace ccrypto::logging
