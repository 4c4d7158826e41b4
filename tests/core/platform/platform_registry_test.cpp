#include "core/platform/registry.h"
#include "tests/core/settings/scratch_registry.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

using namespace ccrypto;

using platform::RegistryAccess;
using platform::RegistryHive;
using platform::RegistryKey;

namespace {

constexpr const char* productPath = "SOFTWARE\\Brannock\\Product\\";

class RegistryTest : public ::testing::Test {
protected:
    static bool Put(RegistryHive hive, const std::string& path, const char* name, std::string_view text)
    {
        RegistryKey key;
        return key.create(hive, path.c_str(), false) == platform::registrySuccess &&
               key.setText(name, text.data(), static_cast<std::uint32_t>(text.size())) == platform::registrySuccess;
    }

    /// The value, or its status in parentheses.
    static std::string Get(RegistryHive hive, const std::string& path, const char* name, std::uint32_t size = 300)
    {
        RegistryKey key;
        if (const std::uint32_t status = key.open(hive, path.c_str(), RegistryAccess::query); status != 0)
            return "(no key: " + std::to_string(status) + ")";
        std::array<char, 300> buffer{};
        bool isText = false;
        const std::uint32_t status = key.queryValue(name, buffer.data(), size, isText);
        if (status != 0)
            return "(" + std::to_string(status) + ")";
        return isText ? std::string(buffer.data(), size) : "(no text)";
    }

private:
    ScratchRegistry registry_;
};

} // namespace

TEST_F(RegistryTest, HivesAndKeysAndValuesAreApart)
{
    ASSERT_TRUE(Put(RegistryHive::localMachine, productPath, "level", "3"));
    ASSERT_TRUE(Put(RegistryHive::currentUser, productPath, "level", "user's"));
    ASSERT_TRUE(Put(RegistryHive::localMachine, std::string(productPath) + "sub", "level", "below"));
    ASSERT_TRUE(Put(RegistryHive::localMachine, productPath, "other", ""));
    ASSERT_TRUE(Put(RegistryHive::localMachine, productPath, nullptr, "unnamed"));
    EXPECT_EQ(Get(RegistryHive::localMachine, productPath, "level"), "3");
    EXPECT_EQ(Get(RegistryHive::currentUser, productPath, "level"), "user's");
    EXPECT_EQ(Get(RegistryHive::localMachine, "SOFTWARE\\Brannock\\Product\\sub", "level"), "below");
    EXPECT_EQ(Get(RegistryHive::localMachine, productPath, "other"), "");
    EXPECT_EQ(Get(RegistryHive::localMachine, productPath, ""), "unnamed");

    ASSERT_TRUE(Put(RegistryHive::localMachine, productPath, "level", "12"));
    EXPECT_EQ(Get(RegistryHive::localMachine, productPath, "level"), "12");
}

TEST_F(RegistryTest, CaseDoesNotMatter)
{
    ASSERT_TRUE(Put(RegistryHive::localMachine, productPath, "debugLevel", "3"));
    EXPECT_EQ(Get(RegistryHive::localMachine, "software\\BRANNOCK\\product", "DEBUGLEVEL"), "3");
    ASSERT_TRUE(Put(RegistryHive::localMachine, "Software\\brannock\\PRODUCT", "DebugLevel", "4"));
    EXPECT_EQ(Get(RegistryHive::localMachine, productPath, "debugLevel"), "4");
}

TEST_F(RegistryTest, MissingAndTooLongHaveCodesOfTheirOwn)
{
    EXPECT_EQ(Get(RegistryHive::localMachine, productPath, "level"), "(no key: 2)");
    ASSERT_TRUE(Put(RegistryHive::localMachine, productPath, "level", "12345678"));
    EXPECT_EQ(Get(RegistryHive::currentUser, productPath, "level"), "(no key: 2)");
    EXPECT_EQ(Get(RegistryHive::localMachine, productPath, "other"), "(2)");
    EXPECT_EQ(Get(RegistryHive::localMachine, std::string(productPath) + "level", "other"), "(no key: 2)");
    EXPECT_EQ(Get(RegistryHive::localMachine, productPath, "level", 7), "(234)");
}

TEST_F(RegistryTest, AVolatileKeyHoldsNoValueYet)
{
    RegistryKey key;
    ASSERT_EQ(key.create(RegistryHive::localMachine, productPath, true), platform::registrySuccess);
    EXPECT_EQ(Get(RegistryHive::localMachine, productPath, "level"), "(2)");
    EXPECT_EQ(key.create(RegistryHive::localMachine, productPath, false), platform::registrySuccess);
    EXPECT_EQ(key.setText("level", "1", 1), platform::registrySuccess);
    EXPECT_EQ(Get(RegistryHive::localMachine, productPath, "level"), "1");
}

TEST_F(RegistryTest, SubKeysComeOneByOneInOrder)
{
    for (const char* group : {"beta", "Alpha", "gamma"})
        ASSERT_TRUE(Put(RegistryHive::localMachine, std::string(productPath) + "cards\\" + group, "name", group));
    ASSERT_TRUE(Put(RegistryHive::localMachine, std::string(productPath) + "cards", "a value", "is no sub-key"));

    RegistryKey parent;
    ASSERT_EQ(parent.open(RegistryHive::localMachine, productPath, RegistryAccess::read), platform::registrySuccess);
    RegistryKey cards;
    ASSERT_EQ(cards.openBelow(parent, "cards", RegistryAccess::read), platform::registrySuccess);
    std::string names;
    std::array<char, 6> name{};
    for (std::uint32_t index = 0; cards.enumerate(index, name.data(), name.size()) == platform::registrySuccess; ++index) {
        RegistryKey item;
        ASSERT_EQ(item.openBelow(cards, name.data(), RegistryAccess::query), platform::registrySuccess);
        std::array<char, 20> value{};
        std::uint32_t size = value.size();
        bool isText = false;
        ASSERT_EQ(item.queryValue("name", value.data(), size, isText), platform::registrySuccess);
        EXPECT_EQ(std::string_view(value.data(), size), name.data());
        names += std::string(name.data()) + " ";
    }
    EXPECT_EQ(names, "Alpha beta gamma ");
    EXPECT_EQ(cards.enumerate(3, name.data(), name.size()), platform::registryNoMoreItems);
    EXPECT_EQ(cards.enumerate(0, name.data(), 5), platform::registryMoreData);

    EXPECT_EQ(cards.openBelow(parent, "missing", RegistryAccess::read), platform::registryNotFound);
    EXPECT_FALSE(cards.isOpen());
}

TEST_F(RegistryTest, AKeyDoesOnlyWhatItWasOpenedFor)
{
    ASSERT_TRUE(Put(RegistryHive::localMachine, productPath, "level", "1"));
    std::array<char, 20> buffer{};
    std::uint32_t size = buffer.size();
    bool isText = false;
    RegistryKey key;
    EXPECT_NE(key.setText("level", "2", 1), platform::registrySuccess);
    EXPECT_NE(key.queryValue("level", buffer.data(), size, isText), platform::registrySuccess);
    ASSERT_EQ(key.open(RegistryHive::localMachine, productPath, RegistryAccess::query), platform::registrySuccess);
    EXPECT_NE(key.setText("level", "2", 1), platform::registrySuccess);
    EXPECT_NE(key.enumerate(0, buffer.data(), size), platform::registrySuccess);
    ASSERT_EQ(key.open(RegistryHive::localMachine, productPath, RegistryAccess::write), platform::registrySuccess);
    EXPECT_NE(key.queryValue("level", buffer.data(), size, isText), platform::registrySuccess);
    EXPECT_EQ(Get(RegistryHive::localMachine, productPath, "level"), "1");
}

TEST_F(RegistryTest, NoNameLeavesTheHive)
{
    ASSERT_TRUE(Put(RegistryHive::currentUser, "secret", "value", "not for the machine's hive"));
    ASSERT_TRUE(Put(RegistryHive::localMachine, "key", "value", "text"));
    const std::string hostile[] = {"..\\user\\secret",
                                   "../user/secret",
                                   "key\\..\\..\\user\\secret",
                                   "key\\../../user/secret",
                                   ".\\secret",
                                   "\n",
                                   std::string(3000, 'k'),
                                   "key\\" + std::string(256, 'k')};
    for (const std::string& path : hostile) {
        SCOPED_TRACE(path);
        EXPECT_EQ(Get(RegistryHive::localMachine, path, "value").find("(no key"), 0U);
    }
    for (const char* name : {"..", "../../user/secret/value", "..\\..\\user\\secret\\value", "/etc/passwd"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(Get(RegistryHive::localMachine, "key", name).front(), '(');
    }
}
