#include "core/settings/settings.h"

#include "core/base/never_destroyed.h"
#include "core/diagnostics/auto_logger.h"
#include "core/log/log_writers.h"
#include "core/platform/process.h"

#include <algorithm>
#include <limits>
#include <utility>

using namespace ccrypto;

namespace {

// One byte more than the value, for its terminator.
constexpr std::uint32_t integerSize = 20 + 1;
constexpr std::uint32_t stringSize = 255 + 1;
constexpr std::uint32_t longStringSize = 260 + 1;
constexpr std::size_t maxComputerName = 255;

constinit NeverDestroyed<std::unique_ptr<ICryptoSettings>> installed;

template <std::uint32_t size>
element TextValue(ICryptoSettings& settings, const char* name)
{
    char buffer[size];
    return settings.GetValue(name, buffer, size, 0) ? element(buffer) : element();
}

} // namespace

namespace ccrypto {

std::int32_t IntegerOfText(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+'))
        text.remove_prefix(1);

    constexpr std::int64_t largest = std::numeric_limits<std::int32_t>::max();
    std::int64_t magnitude = 0;
    for (const char digit : text) {
        if (digit < '0' || digit > '9')
            break;
        magnitude = std::min<std::int64_t>(magnitude * 10 + (digit - '0'), largest + 1);
    }
    return static_cast<std::int32_t>(negative ? -magnitude : std::min(magnitude, largest));
}

} // namespace ccrypto

bool ICryptoSettings::GetInteger(const char* name, std::uint32_t& value, std::uint32_t flags)
{
    char text[integerSize];
    if (!GetValue(name, text, integerSize, flags))
        return false;
    value = static_cast<std::uint32_t>(IntegerOfText(text));
    return true;
}

element ICryptoSettings::GetString(const char* name)
{
    return TextValue<stringSize>(*this, name);
}

element ICryptoSettings::GetLongString(const char* name)
{
    return TextValue<longStringSize>(*this, name);
}

std::uint32_t ICryptoSettings::GetIntegerOrDefault(const char* name, std::uint32_t defaultValue)
{
    std::uint32_t value = 0;
    return GetInteger(name, value, 0) ? value : defaultValue;
}

CCryptoSettings::CCryptoSettings(std::unique_ptr<ICryptoSettings> instance)
{
    *installed = std::move(instance);
}

CCryptoSettings::~CCryptoSettings()
{
    installed->reset();
}

ICryptoSettings* CCryptoSettings::Instance()
{
    if (*installed == nullptr)
        WriteErrorEx_G("CCryptoSettings::Instance is not set");
    return installed->get();
}

ICryptoSettings* CCryptoSettings::InstanceOrNull()
{
    return installed->get();
}

CCryptoString CCryptoSettings::ComputerName()
{
    CCryptoAutoLogger logger("CCryptoSettings::ComputerName", ccrypto::LoggerMode::resultOptional);

    const std::string full = platform::ComputerName();
    if (full.empty())
        return logger.fail(CCryptoString(), "The system does not know the computer's name");
    const CCryptoString name(std::string_view(full).substr(0, maxComputerName));
    return logger.setRetValue(ResultStatus::info, name, name);
}
