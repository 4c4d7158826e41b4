#include "tools/cryptotool/cli/reason.h"

#include "core/diagnostics/failure.h"
#include "core/platform/process.h"

#include <optional>

namespace ccrypto {

void StartReason()
{
    ForgetFailure();
}

std::string LastReason(const char* otherwise)
{
    const std::optional<Failure> failure = LastFailure();
    return failure && !failure->text.empty() ? failure->text : otherwise;
}

std::string SystemReason()
{
    const std::uint32_t code = platform::LastError();
    std::string text = platform::SystemErrorText(code);
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == '.' || text.back() == ' '))
        text.pop_back();
    return text.empty() ? "system error " + std::to_string(code) : text;
}

} // namespace ccrypto
