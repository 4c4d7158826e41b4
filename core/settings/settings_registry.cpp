#include "core/settings/settings_registry.h"

#include "core/base/c_text.h"
#include "core/diagnostics/auto_logger.h"
#include "core/settings/settings_registry_iterator.h"

#include <algorithm>
#include <string>

using namespace ccrypto;

namespace {

std::string KeyPath(const char* company, const char* product, const char* subPath)
{
    std::string sub(OrEmpty(subPath));
    std::replace(sub.begin(), sub.end(), '/', '\\');
    return "SOFTWARE\\" + std::string(company != nullptr ? company : "Brannock") + "\\" + std::string(OrEmpty(product)) + "\\" +
           sub;
}

} // namespace

CCryptoSettingsRegistry::CCryptoSettingsRegistry(const char* company, const char* product, const char* subPath)
    : path_(std::string_view(KeyPath(company, product, subPath)))
{
    platform::RegistryKey key;
    static_cast<void>(key.create(platform::RegistryHive::localMachine, path_.c_str(), true));
}

CCryptoSettingsRegistry::~CCryptoSettingsRegistry() = default;

void CCryptoSettingsRegistry::Reload() {}

bool CCryptoSettingsRegistry::GetInteger(const char* name, std::uint32_t& value, std::uint32_t flags)
{
    return ICryptoSettings::GetInteger(name, value, flags);
}

element CCryptoSettingsRegistry::GetString(const char* name)
{
    return ICryptoSettings::GetString(name);
}

bool CCryptoSettingsRegistry::GetValue(const char* name, char* buffer, std::uint32_t size, std::uint32_t flags)
{
    return getRegValue(path_.c_str(), name, buffer, size, (flags & reportMissing) != 0, (flags & userFirst) != 0);
}

element CCryptoSettingsRegistry::GetLongString(const char* name)
{
    return ICryptoSettings::GetLongString(name);
}

std::uint32_t CCryptoSettingsRegistry::GetIntegerOrDefault(const char* name, std::uint32_t defaultValue)
{
    return ICryptoSettings::GetIntegerOrDefault(name, defaultValue);
}

bool CCryptoSettingsRegistry::SetValue(const element& name, const element& value)
{
    // A name that a zero byte would cut short is refused.
    const CCryptoString wholeName(name);
    const bool usable = wholeName.view().find('\0') == std::string_view::npos;
    return setRegValue(path_.c_str(), usable ? wholeName.c_str() : nullptr, CCryptoString(value).view());
}

std::unique_ptr<ICryptoSettingsGroupIterator> CCryptoSettingsRegistry::Group(const char* name)
{
    CCryptoAutoLogger logger("CCryptoSettingsRegistry::Group", ccrypto::LoggerMode::quietResultExpected, "%s", OrEmpty(name));

    platform::RegistryKey key;
    if (const std::uint32_t status = key.open(platform::RegistryHive::localMachine, path_.c_str(), platform::RegistryAccess::read);
        status != platform::registrySuccess) {
        logger.setWindowsError(status);
        return nullptr;
    }
    std::unique_ptr<ICryptoSettingsGroupIterator> items = CCryptoSettingsRegistryIter::Open(name, key);
    logger.setResult(items != nullptr);
    return items;
}
