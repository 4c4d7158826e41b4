#include "crypto/random/random.h"
#include "tests/crypto/base/vector_file.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

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
