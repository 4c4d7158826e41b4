#include "tests/support/captured_log.h"

#include "core/log/log.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

using namespace ccrypto;

namespace {

constexpr std::string_view capturedTag = " captured ";

std::mutex captureGuard;
std::vector<std::string> captured;
std::function<void(const std::string&)> listener;

void Capture(const char* line)
{
    std::string_view text = line;
    text.remove_prefix(std::min(text.find(capturedTag) + capturedTag.size(), text.size()));
    text.remove_prefix(std::min(text.find_first_not_of('-'), text.size()));
    if (text.find_first_not_of('=') == std::string_view::npos)
        return;
    {
        const std::lock_guard lock(captureGuard);
        captured.emplace_back(text);
    }
    if (listener)
        listener(std::string(text));
}

} // namespace

namespace ccrypto {

CapturedLog::CapturedLog(std::function<void(const std::string&)> onLine)
{
    captured.clear();
    listener = std::move(onLine);
    logging::Configure(255, false, std::make_shared<LogOutput>(LogOutput::Settings{Capture, "captured", "", false}));
}

CapturedLog::~CapturedLog()
{
    logging::Configure(0, false, nullptr);
}

std::vector<std::string> CapturedLog::texts() const
{
    const std::lock_guard lock(captureGuard);
    return captured;
}

} // namespace ccrypto
