#include "core/settings/settings_registry_iterator.h"

#include "core/base/c_text.h"
#include "core/diagnostics/auto_logger.h"

#include <array>
#include <cstring>
#include <string>

using namespace ccrypto;

using platform::RegistryAccess;

namespace {

// A key name has at most 255 characters, of at most 4 bytes each.
constexpr std::size_t keyNameSize = 255 * 4 + 1;

} // namespace

CCryptoSettingsRegistryIter::CCryptoSettingsRegistryIter(const char* group, const platform::RegistryKey& parent)
{
    CCryptoAutoLogger logger("CCryptoSettingsRegistryIter::CCryptoSettingsRegistryIter", ccrypto::LoggerMode::quietResultExpected,
                             "%s", OrEmpty(group));

    if (group == nullptr || *group == '\0') {
        logger.setError("No group name defined");
        return;
    }
    const std::uint32_t status = group_.openBelow(parent, group, RegistryAccess::read);
    if (status != platform::registrySuccess)
        logger.setWindowsError(status);
    else
        logger.setResult(true);
}

CCryptoSettingsRegistryIter::~CCryptoSettingsRegistryIter() = default;

std::unique_ptr<CCryptoSettingsRegistryIter> CCryptoSettingsRegistryIter::Open(const char* group,
                                                                               const platform::RegistryKey& parent)
{
    auto items = std::make_unique<CCryptoSettingsRegistryIter>(group, parent);
    return items->isOpen() ? std::move(items) : nullptr;
}

bool CCryptoSettingsRegistryIter::GetNext(char* name, std::uint32_t size)
{
    CCryptoAutoLogger logger("CCryptoSettingsRegistryIter::GetNext", ccrypto::LoggerMode::quietResultExpected, "%u", index_);

    item_.close();
    atItem_ = false;
    std::array<char, keyNameSize> itemName{};
    for (;;) {
        const std::uint32_t status = group_.enumerate(index_, itemName.data(), static_cast<std::uint32_t>(itemName.size()));
        if (status == platform::registryNoMoreItems)
            return logger.succeed(false);
        if (status != platform::registrySuccess) {
            logger.setWindowsError(status);
            return false;
        }
        ++index_;
        if (std::strlen(itemName.data()) < size)
            break;
        logger.WriteError("Name is longer than %u bytes: %s", size != 0 ? size - 1 : 0, itemName.data());
    }
    std::memcpy(name, itemName.data(), std::strlen(itemName.data()) + 1);
    atItem_ = true;
    if (const std::uint32_t status = item_.openBelow(group_, name, RegistryAccess::read); status != platform::registrySuccess)
        logger.setWindowsError(status);
    return logger.setRetValue(ResultStatus::info, true, CCryptoString(name));
}

bool CCryptoSettingsRegistryIter::GetValue(const char* name, char* buffer, std::uint32_t size, std::uint32_t flags)
{
    CCryptoAutoLogger logger("CCryptoSettingsRegistryIter::GetValue", ccrypto::LoggerMode::quietResultExpected, "%s",
                             OrEmpty(name));

    if (buffer != nullptr)
        std::memset(buffer, 0, size);
    if (name == nullptr)
        return logger.fail(false, "No key or value name defined");
    const std::uint32_t room = size;
    const Answer answer = QueryTerminated(atItem_ ? item_ : group_, name, buffer, size);
    if (answer.status == platform::registrySuccess)
        return answer.isText ? logger.setRetValue(ResultStatus::info, true, CCryptoString(buffer)) : logger.setResult(true);
    if (answer.status == platform::registryNotFound) {
        const bool reported = (flags & reportMissing) != 0;
        return reported ? logger.setRetValue(ResultStatus::info, false, "!--Not Found--!") : logger.succeed(false);
    }
    if (answer.status == platform::registryMoreData)
        logger.WriteError("Value is longer than %u bytes", room != 0 ? room - 1 : 0);
    logger.setWindowsError(answer.status);
    return false;
}

bool CCryptoSettingsRegistryIter::SetValue(const element& name, const element& value)
{
    CCryptoAutoLogger logger("CCryptoSettingsRegistryIter::SetValue", ccrypto::LoggerMode::quietResultExpected, "%s = %s",
                             CCryptoString(name).c_str(), CCryptoString(value).c_str());
    return logger.fail(false, "Function is not supported");
}

std::unique_ptr<ICryptoSettingsGroupIterator> CCryptoSettingsRegistryIter::Group(const char* name)
{
    return Open(name, group_);
}

void CCryptoSettingsRegistryIter::Reload() {}

bool CCryptoSettingsRegistryIter::GetInteger(const char* name, std::uint32_t& value, std::uint32_t flags)
{
    return ICryptoSettings::GetInteger(name, value, flags);
}

element CCryptoSettingsRegistryIter::GetString(const char* name)
{
    return ICryptoSettings::GetString(name);
}

element CCryptoSettingsRegistryIter::GetLongString(const char* name)
{
    return ICryptoSettings::GetLongString(name);
}

std::uint32_t CCryptoSettingsRegistryIter::GetIntegerOrDefault(const char* name, std::uint32_t defaultValue)
{
    return ICryptoSettings::GetIntegerOrDefault(name, defaultValue);
}
