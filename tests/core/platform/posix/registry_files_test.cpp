#include "core/platform/process.h"
#include "core/platform/registry.h"
#include "tests/core/settings/scratch_registry.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>

using namespace ccrypto;

using platform::RegistryAccess;
using platform::RegistryHive;
using platform::RegistryKey;

namespace {

class RegistryFiles : public ::testing::Test {
protected:
    RegistryFiles() { EXPECT_EQ(key_.create(RegistryHive::localMachine, "key", false), platform::registrySuccess); }

    static std::filesystem::path Folder() { return std::filesystem::path(getenv("CRYPTO_REGISTRY_MACHINE")) / "key"; }

    static std::string Get(const char* name)
    {
        RegistryKey key;
        std::array<char, 100> buffer{};
        std::uint32_t size = buffer.size();
        bool isText = false;
        const bool found = key.open(RegistryHive::localMachine, "key", RegistryAccess::query) == platform::registrySuccess &&
                           key.queryValue(name, buffer.data(), size, isText) == platform::registrySuccess;
        return found ? std::string(buffer.data(), size) : "(missing)";
    }

    RegistryKey& key() { return key_; }

private:
    ScratchRegistry registry_;
    RegistryKey key_;
};

} // namespace

TEST_F(RegistryFiles, MayEndInALineFeed)
{
    for (const char* text : {"1\n", "/tmp/log\n", "two\n\n", "\n", ""}) {
        std::ofstream(Folder() / "value", std::ios::binary) << text;
        const std::string_view whole(text);
        EXPECT_EQ(Get("value"), whole.substr(0, whole.ends_with('\n') ? whole.size() - 1 : whole.size()));
    }
}

TEST_F(RegistryFiles, HaveKeyPathsWithinLimits)
{
    std::string longest;
    for (int count = 0; count < 8; ++count)
        longest += std::string(255, 'k') + '\\';
    std::string deepest;
    for (int count = 0; count < 32; ++count)
        deepest += "k\\";
    ASSERT_EQ(longest.size(), 2048u);
    for (const std::string& path : {longest, deepest}) {
        RegistryKey key;
        EXPECT_EQ(key.open(RegistryHive::localMachine, path.c_str(), RegistryAccess::query), std::uint32_t{ENOENT});
        EXPECT_EQ(key.open(RegistryHive::localMachine, (path + 'k').c_str(), RegistryAccess::query), std::uint32_t{EINVAL});
    }
    EXPECT_EQ(key().setText(std::string(255, 'n').c_str(), "1", 1), platform::registrySuccess);
    EXPECT_EQ(key().setText(std::string(256, 'n').c_str(), "1", 1), std::uint32_t{EINVAL});
}

TEST_F(RegistryFiles, AreWrittenBesideWhatAnotherWriterLeft)
{
    // Another process may have written with the same thread id, as those of two containers do.
    std::filesystem::create_directory(Folder() / (".new-" + std::to_string(platform::CurrentThreadId())));
    EXPECT_EQ(key().setText("value", "1", 1), platform::registrySuccess);
    EXPECT_EQ(Get("value"), "1");
    std::filesystem::remove(Folder() / (".new-" + std::to_string(platform::CurrentThreadId())));
    const std::filesystem::directory_iterator files(Folder());
    EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}
