#include "core/platform/registry.h"
#include "core/settings/settings_registry.h"
#include "core/settings/settings_registry_iterator.h"
#include "tests/core/settings/scratch_registry.h"
#include "tests/support/collected_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

using namespace ccrypto;

using platform::RegistryHive;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

namespace {

constexpr const char* keyPath = "SOFTWARE\\Brannock\\Settings Tests\\";

void Store(RegistryHive hive, const std::string& path, const char* name, std::string_view value)
{
    platform::RegistryKey key;
    ASSERT_EQ(key.create(hive, path.c_str(), false), platform::registrySuccess);
    ASSERT_EQ(key.setText(name, value.data(), static_cast<std::uint32_t>(value.size())), platform::registrySuccess);
}

struct SoftwareKey {
    SoftwareKey() { EXPECT_EQ(platform::RegistryKey().create(RegistryHive::localMachine, "SOFTWARE", false), 0u); }
};

class Settings : public testing::Test {
protected:
    void store(const char* name, std::string_view value) { Store(RegistryHive::localMachine, keyPath, name, value); }

    std::string text(const char* name) { return std::string(settings.GetString(name).view()); }

    ScratchRegistry registry;
    /// The key that every machine has, and that lasts.
    SoftwareKey software;
    CCryptoSettingsRegistry settings{nullptr, "Settings Tests", nullptr};
};

std::vector<std::string> NamesOf(ICryptoSettingsGroupIterator& items)
{
    std::vector<std::string> names;
    for (char name[64]; items.GetNext(name, sizeof name);)
        names.emplace_back(name);
    return names;
}

/// Counts how many of it live.
class CountedSettings : public CCryptoSettingsRegistry {
public:
    CountedSettings() : CCryptoSettingsRegistry(nullptr, "Settings Tests", nullptr) { ++living; }
    ~CountedSettings() override { --living; }

    inline static int living = 0;
};

} // namespace

TEST_F(Settings, ReadTheUsersHiveFirstOnlyWhenAsked)
{
    store("both", "machine");
    store("machine only", "machine");
    Store(RegistryHive::currentUser, keyPath, "both", "user");
    Store(RegistryHive::currentUser, keyPath, "user only", "user");

    const auto read = [this](const char* name, std::uint32_t flags) {
        char buffer[16] = "untouched";
        return settings.GetValue(name, buffer, sizeof buffer, flags) ? std::string(buffer) : "missing" + std::string(buffer);
    };
    EXPECT_EQ(read("both", 0), "machine");
    EXPECT_EQ(read("both", ICryptoSettings::userFirst), "user");
    EXPECT_EQ(read("machine only", ICryptoSettings::userFirst), "machine");
    EXPECT_EQ(read("user only", ICryptoSettings::userFirst), "user");
    EXPECT_EQ(read("user only", 0), "missing");
}

TEST_F(Settings, TakeIntegersFromTheirText)
{
    struct Case {
        std::string_view text;
        std::uint32_t value;
    };
    constexpr std::uint32_t defaultValue = 77;
    const Case cases[] = {{"42", 42},
                          {"abc", 0},
                          {"", 0},
                          {" \t+7x", 7},
                          {"-1", 0xFFFFFFFF},
                          {"0x10", 0},
                          {"2147483648", 0x7FFFFFFF},
                          {"-99999999999999999", 0x80000000},
                          {"00000000000000000012", 12},
                          {"000000000000000000012", defaultValue}};
    for (const Case& test : cases) {
        SCOPED_TRACE(test.text);
        store("number", test.text);
        EXPECT_EQ(settings.GetIntegerOrDefault("number", defaultValue), test.value);
    }
    std::uint32_t untouched = 5;
    EXPECT_FALSE(settings.GetInteger("no number", untouched, 0));
    EXPECT_EQ(untouched, 5u);
    EXPECT_EQ(settings.GetIntegerOrDefault("no number", defaultValue), defaultValue);
}

TEST_F(Settings, RefuseValuesThatDoNotFit)
{
    const std::string longText(261, 'x');
    store("255", longText.substr(0, 255));
    store("256", longText.substr(0, 256));
    store("260", longText.substr(0, 260));
    store("261", longText);
    store("terminated", std::string_view("abc\0", 4));
    CollectedLog log(9);
    EXPECT_EQ(text("255").size(), 255u);
    EXPECT_EQ(text("256"), "");
    EXPECT_THAT(log.texts(), Contains(EndsWith("Value is longer than 255 bytes")));
    EXPECT_EQ(settings.GetLongString("260").length(), 260u);
    EXPECT_TRUE(settings.GetLongString("261").isEmpty());
    EXPECT_EQ(text("terminated"), "abc");

    char exact[3] = {'?', '?', '?'};
    store("exact", "abc");
    EXPECT_FALSE(settings.GetValue("exact", exact, 3, 0));
    EXPECT_EQ(exact[0], '\0');
    EXPECT_FALSE(settings.GetValue("exact", exact, 0, 0));
}

TEST_F(Settings, LogWhatWasFound)
{
    store("name", "value");
    store("forged", "x\r\nforged line");
    const std::string shown = "CCryptoRegistry::getRegValue(" + std::string(keyPath) + "\\";
    char buffer[32];
    std::uint32_t size = sizeof buffer;
    CollectedLog log(9);
    EXPECT_TRUE(settings.GetValue("name", buffer, sizeof buffer, 0));
    EXPECT_TRUE(settings.GetValue("forged", buffer, sizeof buffer, 0));
    EXPECT_FALSE(settings.GetValue("none", buffer, sizeof buffer, 0));
    EXPECT_FALSE(settings.GetValue("none", buffer, sizeof buffer, ICryptoSettings::reportMissing));
    EXPECT_FALSE(CCryptoRegistry::getRegValue(nullptr, "name", buffer, size, false, false));
    EXPECT_FALSE(CCryptoRegistry::setRegValue(keyPath, "", "value"));
    EXPECT_TRUE(CCryptoSettingsRegistry(nullptr, "Settings Tests", "no/../such").GetString("name").isEmpty());

    std::vector<std::string> texts = log.texts();
    std::erase(texts, std::string(40, '='));
    ASSERT_GE(texts.size(), 7u);
    texts.resize(7);
    EXPECT_THAT(texts, testing::ElementsAre(shown + "name) : value", shown + "forged) : x\\r\\nforged line",
                                            shown + "none) : !--Not Found--!", "ERROR in " + shown + "none) : : Value not found",
                                            shown + "none) :  - ERROR",
                                            "CCryptoRegistry::getRegValue(\\name) : No key or value name defined",
                                            "CCryptoRegistry::setRegValue(" + std::string(keyPath) +
                                                "\\) : No registry path or value name defined"));
}

TEST_F(Settings, WriteTextToTheMachinesHive)
{
    EXPECT_TRUE(settings.SetValue(element("name"), element("v\xC3\xA4lue")));
    EXPECT_EQ(text("name"), "v\xC3\xA4lue");
    EXPECT_TRUE(settings.SetValue(element("name"), element(std::uint32_t{12})));
    EXPECT_EQ(settings.GetIntegerOrDefault("name", 0), 12u);
    EXPECT_FALSE(settings.SetValue(element(), element("value")));
    EXPECT_FALSE(settings.SetValue(element(std::string_view("na\0me", 5)), element("value")));
    EXPECT_FALSE(settings.SetValue(element("name"), element(std::string_view("1\0", 2))));
    EXPECT_EQ(settings.GetString("name").view(), "12");

    CCryptoSettingsRegistry below(nullptr, "Settings Tests", "a/b");
    EXPECT_STREQ(below.path(), "SOFTWARE\\Brannock\\Settings Tests\\a\\b");
    EXPECT_TRUE(below.SetValue(element("name"), element("below")));
    EXPECT_EQ(below.GetString("name").view(), "below");
    CCryptoSettingsRegistry company("Company", "Settings Tests", nullptr);
    EXPECT_TRUE(company.GetString("name").isEmpty());
}

TEST_F(Settings, WalkTheItemsOfAGroup)
{
    // Below a key that was made volatile the registry takes no other kind, so these come first.
    const std::string group = "SOFTWARE\\Company\\Group Tests\\readers";
    Store(RegistryHive::localMachine, group, "name", "group");
    Store(RegistryHive::localMachine, group + "\\one", "name", "first");
    Store(RegistryHive::localMachine, group + "\\one", "number", "1");
    Store(RegistryHive::localMachine, group + "\\two\\inner", "name", "deep");
    Store(RegistryHive::localMachine, group + "\\a name that does not fit", "name", "x");

    CCryptoSettingsRegistry parent("Company", "Group Tests", nullptr);
    CollectedLog log(9);
    EXPECT_EQ(parent.Group("no such group"), nullptr);
    EXPECT_EQ(parent.Group(nullptr), nullptr);
    EXPECT_EQ(parent.Group(""), nullptr);
    const auto items = parent.Group("readers");
    ASSERT_NE(items, nullptr);
    EXPECT_EQ(items->GetString("name").view(), "group");
    EXPECT_FALSE(items->GetValue("name", nullptr, 4, 0));
    char kept[] = "kept";
    EXPECT_FALSE(items->GetValue(nullptr, kept, 4, 0));
    EXPECT_EQ(kept[0], '\0');

    std::vector<std::string> names;
    for (char name[8]; items->GetNext(name, sizeof name);) {
        names.emplace_back(name);
        const bool first = names.back() == "one";
        EXPECT_EQ(items->GetString("name").view(), first ? "first" : "");
        EXPECT_EQ(items->GetIntegerOrDefault("number", 9), first ? 1u : 9u);
    }
    EXPECT_THAT(names, UnorderedElementsAre("one", "two"));
    EXPECT_THAT(log.texts(), Contains(testing::AllOf(testing::StartsWith("CCryptoSettingsRegistryIter::GetNext("),
                                                     testing::EndsWith(") : one"))));
    EXPECT_THAT(log.texts(), Contains(HasSubstr("Name is longer than 7 bytes: a name that does not fit")));
    EXPECT_FALSE(items->SetValue(element("name"), element("new")));
    EXPECT_THAT(log.texts(), Contains(HasSubstr("(name = new) : Function is not supported")));
    EXPECT_EQ(items->GetString("name").view(), "group");

    const auto nested = items->Group("two");
    ASSERT_NE(nested, nullptr);
    EXPECT_THAT(NamesOf(*nested), UnorderedElementsAre("inner"));
    EXPECT_FALSE(nested->GetNext(nullptr, 0));
}

TEST_F(Settings, AreOneInstanceAtATime)
{
    CollectedLog log(1);
    EXPECT_EQ(CCryptoSettings::InstanceOrNull(), nullptr);
    EXPECT_EQ(CCryptoSettings::Instance(), nullptr);
    EXPECT_EQ(CCryptoSettings::Instance(), nullptr);
    EXPECT_EQ(log.texts(), std::vector<std::string>(2, "ERROR: CCryptoSettings::Instance is not set"));
    {
        const CCryptoSettings first(std::make_unique<CountedSettings>());
        const CCryptoSettings second(std::make_unique<CountedSettings>());
        EXPECT_EQ(CountedSettings::living, 1);
        EXPECT_NE(CCryptoSettings::Instance(), nullptr);
    }
    EXPECT_EQ(CountedSettings::living, 0);
    EXPECT_EQ(CCryptoSettings::InstanceOrNull(), nullptr);
}

TEST(ComputerName, IsKnownAndLogged)
{
    CollectedLog log(9);
    const CCryptoString name = CCryptoSettings::ComputerName();
    EXPECT_FALSE(name.isEmpty());
    EXPECT_THAT(log.texts(), Contains("INFO: " + std::string(name.view())));
}
