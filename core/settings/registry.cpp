#include "core/settings/registry.h"

#include "core/base/c_text.h"
#include "core/diagnostics/auto_logger.h"

#include <array>
#include <cstring>
#include <string>

using namespace ccrypto;

using platform::RegistryAccess;
using platform::RegistryHive;
using platform::RegistryKey;

namespace {

bool IsMissing(const char* text)
{
    return text == nullptr || *text == '\0';
}

} // namespace

CCryptoRegistry::Answer CCryptoRegistry::QueryTerminated(const RegistryKey& key, const char* name, char* buffer,
                                                         std::uint32_t& size)
{
    const std::uint32_t room = size;
    Answer answer;
    if (buffer == nullptr || room == 0) {
        answer.status = platform::registryMoreData;
        size = 0;
        return answer;
    }
    std::memset(buffer, 0, room);
    answer.status = key.queryValue(name, buffer, size, answer.isText);
    const bool unterminated = size > room || (size == room && buffer[room - 1] != '\0');
    if (answer.status == platform::registrySuccess && unterminated)
        answer.status = platform::registryMoreData;
    if (answer.status != platform::registrySuccess) {
        std::memset(buffer, 0, room);
        size = 0;
    }
    return answer;
}

bool CCryptoRegistry::getRegValue(const char* path, const char* name, char* buffer, std::uint32_t& size, bool reportMissing,
                                  bool userFirst)
{
    CCryptoAutoLogger logger("CCryptoRegistry::getRegValue", ccrypto::LoggerMode::quietResultExpected, "%s\\%s", OrEmpty(path),
                             OrEmpty(name));

    const std::uint32_t room = size;
    size = 0;
    if (buffer != nullptr && room != 0)
        std::memset(buffer, 0, room);
    if (path == nullptr || name == nullptr)
        return logger.fail(false, "No key or value name defined");

    for (const RegistryHive hive : {RegistryHive::currentUser, RegistryHive::localMachine}) {
        const bool last = hive == RegistryHive::localMachine;
        if (!last && !userFirst)
            continue;
        RegistryKey key;
        if (const std::uint32_t status = key.open(hive, path, RegistryAccess::query); status != platform::registrySuccess) {
            if (last)
                logger.setWindowsError(status);
            continue;
        }
        std::uint32_t count = room;
        const Answer answer = QueryTerminated(key, name, buffer, count);
        if (answer.status == platform::registrySuccess) {
            size = count;
            return answer.isText ? logger.setRetValue(ResultStatus::info, true, CCryptoString(buffer)) : logger.setResult(true);
        }
        if (answer.status == platform::registryNotFound) {
            if (!last)
                continue;
            if (!reportMissing)
                return logger.setRetValue(ResultStatus::info, false, "!--Not Found--!");
            logger.WriteError("Value not found");
            return logger.fail(false);
        }
        if (answer.status == platform::registryMoreData)
            logger.WriteError("Value is longer than %u bytes", room != 0 ? room - 1 : 0);
        logger.setWindowsError(answer.status);
    }
    return false;
}

bool CCryptoRegistry::setRegValue(const char* path, const char* name, std::string_view value)
{
    CCryptoAutoLogger logger("CCryptoRegistry::setRegValue", ccrypto::LoggerMode::quietResultExpected, "%s\\%s", OrEmpty(path),
                             OrEmpty(name));

    if (IsMissing(path) || IsMissing(name))
        return logger.fail(false, "No registry path or value name defined");
    if (value.find('\0') != std::string_view::npos)
        return logger.fail(false, "Value contains a zero byte, which would end it");

    RegistryKey key;
    if (const std::uint32_t status = key.create(RegistryHive::localMachine, path, false); status != platform::registrySuccess) {
        logger.setError("Open");
        logger.setWindowsError(status);
        return false;
    }
    const std::string text(value);
    if (const std::uint32_t status = key.setText(name, text.c_str(), static_cast<std::uint32_t>(text.size()));
        status != platform::registrySuccess) {
        logger.setWindowsError(status);
        return false;
    }
    return logger.setResult(true);
}
