#include "core/log/log_output.h"

#include "core/log/log_line.h"
#include "core/platform/file.h"
#include "core/platform/process.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>

namespace ccrypto {

namespace {

constexpr std::uint32_t patienceMilliseconds = 1000;
constexpr std::uint32_t patienceWithBusyFile = 10;
constexpr std::size_t usualThreads = 16;

struct Unlock {
    void operator()(platform::NamedMutex* mutex) const { mutex->unlock(); }
};

/// \param guarded nobody else writes to the file meanwhile.
void AppendLine(const char* path, std::string_view line, bool guarded)
{
    platform::File file;
    if (!file.open(path, platform::FileMode::appendShared))
        return;
    const std::int64_t end = file.size();
    if (file.append(line.data(), static_cast<std::uint32_t>(line.size())) || end < 0 || !guarded)
        return;
    // A full disk takes a part of the line, to which the next would be glued. Where the part cannot be removed, it stays.
    static_cast<void>(file.truncate(static_cast<std::uint64_t>(end)));
}

} // namespace

LogOutput::LogOutput(Settings settings) : settings_(std::move(settings))
{
    settings_.tag.resize(std::min(settings_.tag.size(), maxLogTag));
    // So that a process without memory still reaches the callback.
    threadsInCallback_.reserve(usualThreads);
}

bool LogOutput::openMutex()
{
    const std::lock_guard guard(opening_);
    return mutex_.isOpen() || mutex_.open(("AutoLogger_" + settings_.tag).c_str());
}

void LogOutput::deliver(LogLine& line)
{
    if (settings_.callback != nullptr)
        callBack(line.c_str());
    if (!settings_.path.empty())
        append(line.withLineEnd());
}

void LogOutput::callBack(const char* line)
{
    const std::uint32_t self = platform::CurrentThreadId();
    struct InCallback {
        LogOutput& output;
        std::uint32_t thread;

        ~InCallback()
        {
            const std::lock_guard guard(output.calling_);
            std::erase(output.threadsInCallback_, thread);
        }
    };
    {
        const std::lock_guard guard(calling_);
        if (std::find(threadsInCallback_.begin(), threadsInCallback_.end(), self) != threadsInCallback_.end())
            return;
        threadsInCallback_.push_back(self);
    }
    // The callback may throw; it is called again for the next line of its thread.
    const InCallback called{*this, self};
    settings_.callback(line);
}

void LogOutput::append(std::string_view line)
{
    std::unique_ptr<platform::NamedMutex, Unlock> held;
    if (openMutex()) {
        const bool had = mutex_.lock(busy_ ? patienceWithBusyFile : patienceMilliseconds);
        busy_ = !had;
        if (!had)
            return;
        held.reset(&mutex_);
    }
    AppendLine(settings_.filePerThread ? threadPath().c_str() : settings_.path.c_str(), line, held != nullptr);
}

std::string LogOutput::threadPath() const
{
    constexpr std::string_view extension = ".LOG";
    const std::size_t position = settings_.path.rfind(extension);
    if (position == std::string::npos)
        return settings_.path;

    char extended[24];
    std::snprintf(extended, sizeof extended, "-%04x.LOG", static_cast<unsigned>(platform::CurrentThreadId()));
    return std::string(settings_.path).replace(position, extension.size(), extended);
}

} // namespace ccrypto
