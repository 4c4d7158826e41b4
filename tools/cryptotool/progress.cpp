#include "tools/cryptotool/progress.h"

#include <algorithm>
#include <string>

namespace {

constexpr std::chrono::milliseconds quietTime(500);
constexpr std::chrono::milliseconds interval(100);
constexpr std::size_t barWidth = 40;

} // namespace

Progress::Progress(Console& console, std::int64_t total)
    : console_(console), total_(total), isTerminal_(console.errorIsTerminal()), next_(Clock::now() + quietTime)
{
}

Progress::~Progress()
{
    if (isShown_)
        console_.writeError("\r" + std::string(barWidth + 30, ' ') + "\r");
}

void Progress::add(std::uint64_t count)
{
    done_ += count;
    if (!isTerminal_ || Clock::now() < next_)
        return;
    next_ = Clock::now() + interval;
    show();
}

void Progress::show()
{
    isShown_ = true;
    const std::string megabytes = std::to_string(done_ >> 20) + " MiB";
    if (total_ <= 0) {
        console_.writeError("\r" + megabytes);
        return;
    }
    const double part = std::min(1.0, static_cast<double>(done_) / static_cast<double>(total_));
    const auto filled = static_cast<std::size_t>(part * barWidth);
    console_.writeError("\r[" + std::string(filled, '#') + std::string(barWidth - filled, ' ') + "] " +
                        std::to_string(static_cast<int>(part * 100)) + " % " + megabytes);
}
