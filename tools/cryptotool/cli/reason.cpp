#include "tools/cryptotool/cli/reason.h"

#include "core/diagnostics/failure.h"
#include "core/platform/process.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace ccrypto {

namespace {

/// How the library begins what it says of any structure that does not match. They do not name what was expected.
constexpr std::string_view generalReasons[] = {"Loading failed!", "ParseNode() failed"};

} // namespace

void StartReason()
{
    ForgetFailure();
}

std::string LastReason(const char* otherwise)
{
    const std::optional<Failure> failure = LastFailure();
    if (!failure || failure->text.empty())
        return otherwise;
    const bool isGeneral =
        std::ranges::any_of(generalReasons, [&](std::string_view start) { return failure->text.starts_with(start); });
    return isGeneral ? otherwise + (": " + failure->text) : failure->text;
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
