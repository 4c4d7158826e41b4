#include "core/platform/process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <thread>

using namespace ccrypto;

TEST(Process, ThreadsHaveNumbersOfTheirOwn)
{
    const std::uint32_t own = platform::CurrentThreadId();
    std::uint32_t other = 0;
    std::thread([&] { other = platform::CurrentThreadId(); }).join();
    EXPECT_NE(own, 0U);
    EXPECT_NE(other, 0U);
    EXPECT_NE(own, other);
    EXPECT_EQ(platform::CurrentThreadId(), own);
}

TEST(Process, ErrorTextExistsForKnownCodesAlone)
{
    EXPECT_FALSE(platform::SystemErrorText(2).empty());
    EXPECT_NE(platform::SystemErrorText(2), platform::SystemErrorText(5));
    EXPECT_EQ(platform::SystemErrorText(0xDEADBEEF), "");
}

TEST(Process, KnowsItsHost)
{
    std::string path;
    std::uint32_t error = 0;
    ASSERT_TRUE(platform::HostExecutablePath(path, error));
    EXPECT_NE(path.find("core_tests"), std::string::npos) << path;
    EXPECT_NE(platform::CommandLine().find("core_tests"), std::string::npos) << platform::CommandLine();
    EXPECT_EQ(platform::CommandLine().find('\0'), std::string::npos);
    const std::u8string directory = std::filesystem::current_path().u8string();
    EXPECT_EQ(platform::CurrentDirectory(), std::string(directory.begin(), directory.end()));
    EXPECT_NE(platform::ComputerName(), "");
}
