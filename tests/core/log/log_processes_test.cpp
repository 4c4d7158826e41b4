#include "core/platform/named_mutex.h"
#include "core/platform/process.h"
#include "tests/core/log/companion.h"
#include "tests/support/collected_log.h"
#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

using namespace ccrypto;

namespace {

constexpr int processCount = 2;
constexpr int threadCount = 8;
constexpr int lineCount = 50;

} // namespace

TEST(LogFile, HoldsEveryLineOfProcessesAndThreadsWhole)
{
    const TemporaryDirectory directory;
    const std::string path = directory / u8"shared.LOG";
    const std::string gateName = "core_tests_gate_" + std::to_string(platform::CurrentProcessId());
    platform::NamedMutex gate;
    ASSERT_TRUE(gate.open(gateName.c_str()) && gate.lock(1000));

    std::vector<Companion> companions;
    for (int process = 0; process < processCount; ++process) {
        companions.emplace_back("log_companion", '"' + path + "\" " + gateName + ' ' + std::to_string(process) + ' ' +
                                                     std::to_string(threadCount) + ' ' + std::to_string(lineCount));
        ASSERT_TRUE(companions.back().says("ready"));
    }
    gate.unlock();
    for (Companion& companion : companions)
        EXPECT_TRUE(companion.end());
    std::error_code ignored;
    std::filesystem::remove("/tmp/" + gateName + ".mutex", ignored);

    std::multiset<std::string> written;
    for (const std::string& text : TextsOfFile(path, "companions"))
        written.insert(text);
    for (int process = 0; process < processCount; ++process) {
        for (int thread = 0; thread < threadCount; ++thread) {
            for (int line = 0; line < lineCount; ++line) {
                const std::string text = "process " + std::to_string(process) + " thread " + std::to_string(thread) + " line " +
                                         std::to_string(line) + ' ' + std::string(300, 'x') + '.';
                EXPECT_EQ(written.count(text), 1u) << text;
            }
        }
    }
    EXPECT_EQ(written.size(), std::size_t{processCount * threadCount * lineCount});
}
