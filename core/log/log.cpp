#include "core/log/log.h"

#include "core/base/never_destroyed.h"
#include "core/log/log_line.h"
#include "core/platform/clock.h"
#include "core/platform/process.h"

#include <new>
#include <utility>

namespace ccrypto::logging {

namespace {

constinit NeverDestroyed<std::atomic<std::shared_ptr<LogOutput>>> currentOutput;

struct LineUnderWay {
    LineUnderWay() { ++state::linesUnderWay; }
    ~LineUnderWay()
    {
        --state::linesUnderWay;
        constexpr std::uint32_t pause = 2;
        if (state::forcesUnderWay != 0)
            platform::SleepMilliseconds(pause);
    }
};

} // namespace

void Configure(std::uint32_t level, bool profiling, std::shared_ptr<LogOutput> output)
{
    currentOutput->store(std::move(output));
    state::profiling = profiling;
    state::level = level;
}

std::shared_ptr<LogOutput> CurrentOutput()
{
    return currentOutput->load();
}

void WriteLine(std::uint32_t depth, std::string_view timingPrefix, std::string_view text) noexcept
{
    if (!Shows(depth))
        return;
    const LineUnderWay underWay;
    const std::shared_ptr<LogOutput> output = CurrentOutput();
    if (output == nullptr)
        return;

    const std::uint32_t lastError = platform::LastError();
    LogLine line({.timingPrefix = timingPrefix, .tag = output->settings().tag, .depth = depth, .profiling = Profiling()}, text);
    try {
        output->deliver(line);
    } catch (const std::bad_alloc&) {
        // The line is lost, as with a full disk: destructors write lines, and so does a process that ends for want of memory.
    }
    platform::SetLastError(lastError);
}

} // namespace ccrypto::logging
