#include "core/platform/registry.h"
#include "core/platform/win32/registry_view.h"
#include "tests/core/settings/scratch_registry.h"

#include <windows.h>

#include <gtest/gtest.h>

using namespace ccrypto;

TEST(RegistryView, FollowsVersionAndProcessor)
{
    EXPECT_EQ(platform::RegistryViewFlag(6, 9), 0x100U);
    EXPECT_EQ(platform::RegistryViewFlag(10, 9), 0x100U);
    EXPECT_EQ(platform::RegistryViewFlag(5, 9), 0x200U);
    EXPECT_EQ(platform::RegistryViewFlag(6, 0), 0x200U);
    EXPECT_EQ(platform::RegistryViewFlag(10, 12), 0x200U);
    EXPECT_EQ(platform::RegistryViewFlag(), 0x100U);
}

TEST(RegistryView, NumbersAreNoText)
{
    const ScratchRegistry registry;
    const DWORD number = 7;
    ASSERT_EQ(RegSetKeyValueA(HKEY_LOCAL_MACHINE, "key", "number", REG_DWORD, &number, sizeof(number)), ERROR_SUCCESS);
    platform::RegistryKey key;
    ASSERT_EQ(key.open(platform::RegistryHive::localMachine, "key", platform::RegistryAccess::query), platform::registrySuccess);
    DWORD read = 0;
    std::uint32_t size = sizeof(read);
    bool isText = true;
    EXPECT_EQ(key.queryValue("number", &read, size, isText), platform::registrySuccess);
    EXPECT_FALSE(isText);
    EXPECT_EQ(read, number);
}
