#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/small_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdlib>

using namespace ccrypto;

namespace {

/// A folder in which shell commands run the built program as $T.
class CryptotoolProgram : public ::testing::Test {
protected:
    int Run(const std::string& command)
    {
        const std::string whole =
            "cd '" + folder_.path().string() + "' && T='" PROGRAM_DIR "/cryptotool' && { " + command + "; } 2>error";
        const int status = std::system(whole.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    std::string Get(std::u8string_view name) const { return GetFile(folder_ / name); }

    TemporaryDirectory folder_;
};

TEST_F(CryptotoolProgram, StreamsAndPipesCarryBytes)
{
    EXPECT_EQ(Run("echo 'INTEGER = 10' >päivä; $T asn1 build päivä | $T gzip - | $T gunzip >out"), 0);
    EXPECT_EQ(Get(u8"out"), "\x02\x01\x0a");
    EXPECT_EQ(Run("mkfifo pipe; $T asn1 build päivä >pipe & $T asn1 show pipe >out"), 0);
    EXPECT_NE(Get(u8"out").find("INTEGER 10"), std::string::npos);
    EXPECT_EQ(Run("$T asn1 show nothing"), 1);
    EXPECT_EQ(Get(u8"error"), "cryptotool: nothing: No such file or directory\n");
    EXPECT_EQ(Run("$T asn1"), 2);
}

TEST_F(CryptotoolProgram, AClosedStreamIsNotTheNextFile)
{
    EXPECT_EQ(Run("$T hash sha256 - -o sum <&-"), 1);
    EXPECT_EQ(Get(u8"error"), "cryptotool: -: Bad file descriptor\n");
    EXPECT_EQ(Run("$T random 16 >&-"), 1);
    EXPECT_EQ(Get(u8"sum"), "");
}

TEST_F(CryptotoolProgram, NothingIsLeftWhenItIsInterrupted)
{
    // The pipe stays open, so the program waits for more with its file begun.
    EXPECT_EQ(Run("echo old >out; chmod 600 out; mkfifo pipe; exec 3<>pipe; $T gzip pipe -o out & head -c 300000 /dev/urandom >&3; "
                  "until find . -name 'out.*.part' -size +0 | grep -q . || ! kill -0 $!; do :; done; "
                  "stat -c %a out.*.part >rights; kill -TERM $!; wait $!"),
              128 + 15);
    // Nobody may read it who may not read what it replaces.
    EXPECT_EQ(Get(u8"rights"), "600\n");
    EXPECT_EQ(Run("ls out.*"), 2);
    EXPECT_EQ(Get(u8"out"), "old\n");
    // Those of a key press and of a closed terminal; a command in the background of a shell ignores INT and QUIT.
    for (const int signalNumber : {1, 2, 3}) {
        const std::string kill = "kill -" + std::to_string(signalNumber);
        EXPECT_EQ(Run("env --default-signal=INT,QUIT $T random 100G -o large & until ls large.*.part >/dev/null || ! kill -0 $!; "
                      "do :; done; " +
                      kill + " $!; wait $!"),
                  128 + signalNumber);
        EXPECT_EQ(Run("ls large.*"), 2);
    }
}

TEST_F(CryptotoolProgram, NothingIsLeftBeyondTheLimitOfFiles)
{
    EXPECT_EQ(Run("(ulimit -f 1 && $T random 1M -o out)"), 1);
    EXPECT_EQ(Get(u8"error"), "cryptotool: out: File too large\n");
    EXPECT_EQ(Run("ls out*"), 2);
}

TEST_F(CryptotoolProgram, SecretsAreForTheirOwnerAlone)
{
    EXPECT_EQ(Run("umask 0; echo old >key; chmod 644 key; $T key gen P-256 -o key; $T key convert key -o converted; "
                  "$T random 16 -o bytes; $T key show --private key -o shown; $T key public key -o public; "
                  "$T key agree key public -o secret; $T key gen rsa --bits 1024 -o rsa; $T key encrypt rsa bytes -o sealed; "
                  "$T key decrypt rsa sealed -o opened; stat -c %a key converted bytes shown secret opened public sealed >rights"),
              0);
    EXPECT_EQ(Get(u8"rights"), "600\n600\n600\n600\n600\n600\n666\n666\n");
    EXPECT_EQ(
        Run("exec 5<<'END'\nsalainen\nEND\n$T key convert --form encrypted --iterations 1000 --new-password-fd 5 key -o locked && "
            "printf salainen | $T key show --password-file - locked >out"),
        0);
    // Nor may anybody read them while they are written.
    EXPECT_EQ(Run("umask 0; $T random 100G -o large & until stat -c %a large.*.part >rights || ! kill -0 $!; do :; done; "
                  "kill -TERM $!; wait $!"),
              128 + 15);
    EXPECT_EQ(Get(u8"rights"), "600\n");
    EXPECT_EQ(Run("ls large.*"), 2);
}

TEST_F(CryptotoolProgram, OutputsThatAreNoPlainFilesStayWhatTheyAre)
{
    EXPECT_EQ(Run("echo 'INTEGER = 10' >t; $T asn1 build t -o /dev/null; test -c /dev/null"), 0);
    EXPECT_EQ(Run("$T asn1 build t >/dev/full"), 1);
    EXPECT_EQ(Get(u8"error"), "cryptotool: -: No space left on device\n");
    EXPECT_EQ(Run("$T --help >/dev/full"), 1);
    EXPECT_EQ(Get(u8"error"), "cryptotool: -: No space left on device\n");
    EXPECT_EQ(Run("$T asn1 build t -o /dev/full"), 1);
    EXPECT_EQ(Get(u8"error"), "cryptotool: /dev/full: No space left on device\n");
    EXPECT_EQ(Run("mkdir d; echo old >d/real; chmod 600 d/real; ln -s d/real link; $T asn1 build t -o link && test -L link"), 0);
    EXPECT_EQ(Get(u8"d/real"), "\x02\x01\x0a");
    EXPECT_EQ(Run("ln -s d/new first; ln -s first second; $T asn1 build t -o second && test -L first && test -L second"), 0);
    EXPECT_EQ(Get(u8"d/new"), "\x02\x01\x0a");
    EXPECT_EQ(Run("ln -s nowhere/x broken; $T asn1 build t -o broken"), 1);
    EXPECT_EQ(Get(u8"error"), "cryptotool: broken: No such file or directory\n");
    EXPECT_EQ(Run("ln -s circle round; ln -s round circle; $T asn1 build t -o round"), 1);
    EXPECT_EQ(Get(u8"error"), "cryptotool: round: its links lead in a circle\n");
    struct stat status = {};
    EXPECT_EQ(stat((folder_ / u8"d/real").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

} // namespace
