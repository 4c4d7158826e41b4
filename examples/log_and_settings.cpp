// Keeps settings of a product of yours and writes what it does to the library's log.
//
//     log_and_settings FOLDER        turns the log on; its file goes to FOLDER
//
// Settings are values of HKEY_LOCAL_MACHINE\SOFTWARE\Example Company\Greeter; on POSIX a folder tree stands for the registry, which
// the environment variable CRYPTO_REGISTRY_MACHINE names.

#include "core/core.h"

#include <cstdio>
#include <memory>

namespace {

std::uint32_t Greet(const char* whom)
{
    CCryptoAutoLogger logger("Greet");

    ICryptoSettings* const settings = CCryptoSettings::Instance();
    if (settings == nullptr)
        return logger.fail(0U, "There are no settings");
    const std::uint32_t times = settings->GetIntegerOrDefault("greetings", 1);
    if (times > 3)
        return logger.fail(0U, "%u greetings are too many", times);
    for (std::uint32_t i = 0; i < times; ++i)
        std::printf("Hello %s\n", whom);
    return logger.succeed(times);
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 2) {
        std::fputs("usage: log_and_settings FOLDER\n", stderr);
        return 2;
    }
    const CCryptoSettings settings(std::make_unique<CCryptoSettingsRegistry>("Example Company", "Greeter", nullptr));
    ICryptoSettings& store = *CCryptoSettings::Instance();
    if (!store.SetValue(element("debugLevel"), element("10")) || !store.SetValue(element("debugDir"), element(arguments[1])) ||
        !store.SetValue(element("greetings"), element("2"))) {
        std::fprintf(stderr, "the settings cannot be written: %s\n", CCryptoErrorHandler::LastErrorText().c_str());
        return 1;
    }
    // Reads the settings of the log, and lives as long as the process uses the library.
    const CCryptoProcessLogger log(nullptr, "Greeter", "greeter");

    return Greet("world") != 0 ? 0 : 1;
}
