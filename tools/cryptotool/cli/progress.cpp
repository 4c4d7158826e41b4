#include "tools/cryptotool/cli/progress.h"

#include <algorithm>
#include <chrono>
#include <string>

namespace ccrypto {

namespace {

constexpr std::chrono::milliseconds quietTime(500);
constexpr std::chrono::milliseconds interval(100);
constexpr std::size_t barWidth = 40;
constexpr std::size_t lineWidth = barWidth + 30;

} // namespace

ProgressLine::ProgressLine(Console& console)
    : console_(console), isVisible_(console.errorIsTerminal() && !console.isQuiet()), next_(console.now() + quietTime)
{
}

ProgressLine::~ProgressLine()
{
    if (isShown_)
        console_.writeError("\r" + std::string(lineWidth, ' ') + "\r");
}

bool ProgressLine::isDue()
{
    return isVisible_ && console_.now() >= next_;
}

void ProgressLine::show(std::string_view text)
{
    next_ = console_.now() + interval;
    isShown_ = true;
    // Blanks cover a longer text that was there before.
    console_.writeError("\r" + std::string(text) + std::string(lineWidth - std::min(lineWidth, text.size()), ' '));
}

void Progress::add(std::uint64_t count)
{
    done_ += count;
    if (line_.isDue())
        show();
}

void Progress::show()
{
    const std::string megabytes = std::to_string(done_ >> 20) + " MiB";
    if (total_ <= 0) {
        line_.show(megabytes);
        return;
    }
    const double part = std::min(1.0, static_cast<double>(done_) / static_cast<double>(total_));
    const auto filled = static_cast<std::size_t>(part * barWidth);
    line_.show("[" + std::string(filled, '#') + std::string(barWidth - filled, ' ') + "] " +
               std::to_string(static_cast<int>(part * 100)) + " % " + megabytes);
}

} // namespace ccrypto
