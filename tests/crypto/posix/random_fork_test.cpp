#include "core/platform/random_bytes.h"
#include "crypto/random/seeded_generator.h"
#include "tests/crypto/base/vector_file.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

using namespace ccrypto;

TEST(ProcessRandom, GivesAForkedChildOtherBytes)
{
    Bytes before(32);
    ASSERT_TRUE(ICryptoRandom::Instance().generate(before)); // the parent's generator is seeded
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    Bytes bytes(32);
    const bool there = ICryptoRandom::Instance().generate(bytes);
    if (child == 0) {
        const bool written = there && write(ends[1], bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
        _exit(written ? 0 : 1);
    }
    Bytes ofChild(32);
    EXPECT_EQ(read(ends[0], ofChild.data(), ofChild.size()), static_cast<ssize_t>(ofChild.size()));
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(there);
    EXPECT_NE(Hex(bytes), Hex(ofChild));
    close(ends[0]);
    close(ends[1]);
}

TEST(SeededGenerator, BeginsAnewInAForkedChild)
{
    std::size_t asked = 0;
    std::uint8_t next = 0;
    ccrypto::internal::SeededGenerator generator([&](std::span<std::uint8_t> bytes) {
        asked = bytes.size();
        for (std::uint8_t& byte : bytes)
            byte = next++;
        return true;
    });
    Bytes bytes(8);
    ASSERT_TRUE(generator.generate(bytes) && generator.generate(bytes));
    const std::size_t ofReseed = asked;
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0)
        _exit(generator.generate(bytes) && asked > ofReseed ? 0 : 1); // entropy and a nonce
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

// The system call is not seen by the C library, whose handlers of forks do not run.
TEST(ProcessRandom, NoticesEveryKindOfFork)
{
    const std::uint64_t before = platform::ForkGeneration();
    EXPECT_EQ(platform::ForkGeneration(), before);
    for (const bool byLibrary : {true, false}) {
        const auto child = byLibrary ? fork() : static_cast<pid_t>(syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0));
        ASSERT_GE(child, 0);
        if (child == 0) {
            const std::uint64_t after = platform::ForkGeneration();
            _exit(after != before && platform::ForkGeneration() == after ? 0 : 1);
        }
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0) << byLibrary;
    }
    EXPECT_EQ(platform::ForkGeneration(), before);
}
