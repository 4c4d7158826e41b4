#include "core/platform/clock.h"
#include "core/platform/file.h"
#include "core/platform/registry.h"
#include "core/settings/settings_registry.h"
#include "tests/core/settings/scratch_registry.h"
#include "tests/support/temporary_directory.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <stdlib.h>

#include <ctime>
#include <string>

using namespace ccrypto;

TEST(SystemSettings, TheVariableTzMovesNowAndConversionsAlike)
{
    ASSERT_EQ(_putenv("TZ=EST5"), 0);
    _tzset();
    const std::int64_t before = std::time(nullptr);
    std::int64_t now = 0;
    EXPECT_TRUE(platform::LocalToUnixSeconds(platform::LocalNow(), now));
    EXPECT_GE(now, before);
    EXPECT_LE(now, std::time(nullptr));
    _putenv("TZ=");
    _tzset();
}

TEST(SystemSettings, TheKeyOfNewSettingsGoesWithTheRestart)
{
    const ScratchRegistry registry;
    platform::RegistryKey software;
    ASSERT_EQ(software.create(platform::RegistryHive::localMachine, "SOFTWARE", false), platform::registrySuccess);
    const CCryptoSettingsRegistry settings("Company", "Volatile Tests", nullptr);
    // The system refuses a lasting key below one that is volatile.
    platform::RegistryKey below;
    const std::string path = std::string(settings.path()) + "below";
    EXPECT_EQ(below.create(platform::RegistryHive::localMachine, path.c_str(), false), std::uint32_t{ERROR_CHILD_MUST_BE_VOLATILE});
    EXPECT_EQ(below.create(platform::RegistryHive::localMachine, path.c_str(), true), platform::registrySuccess);
}

TEST(SystemSettings, AValueOfAnyTypeNeedsSpaceForItsZeroByte)
{
    const ScratchRegistry registry;
    CCryptoSettingsRegistry settings("Company", "Type Tests", nullptr);
    ASSERT_TRUE(settings.SetValue(element("text"), element("1")));
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, settings.path(), 0, KEY_SET_VALUE | KEY_WOW64_64KEY, &key), ERROR_SUCCESS);
    // An integer has 20 bytes at most.
    const std::string digits = "00000000000000000007" + std::string("7");
    const auto store = [&](const char* name, DWORD type, std::size_t length) {
        return RegSetValueExA(key, name, 0, type, reinterpret_cast<const BYTE*>(digits.data()), static_cast<DWORD>(length));
    };
    for (const DWORD type : {REG_BINARY, REG_EXPAND_SZ}) {
        SCOPED_TRACE(type);
        EXPECT_EQ(store("fits", type, 20), ERROR_SUCCESS);
        EXPECT_EQ(store("fills", type, 21), ERROR_SUCCESS);
        EXPECT_EQ(settings.GetIntegerOrDefault("fits", 1), 7u);
        EXPECT_EQ(settings.GetIntegerOrDefault("fills", 1), 1u);
    }
    RegCloseKey(key);
}

TEST(SystemSettings, AHiddenFileIsEmptied)
{
    const TemporaryDirectory directory;
    const std::string name = directory / u8"hidden";
    platform::File file;
    ASSERT_TRUE(file.open(name.c_str(), platform::FileMode::write));
    ASSERT_TRUE(file.append("12345", 5));
    file.close();
    ASSERT_TRUE(SetFileAttributesA(name.c_str(), FILE_ATTRIBUTE_HIDDEN));
    ASSERT_TRUE(file.open(name.c_str(), platform::FileMode::write));
    EXPECT_EQ(file.size(), 0);
}
