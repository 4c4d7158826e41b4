#include "tests/support/child_program.h"
#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/small_files.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

TEST(CryptotoolProgram, TakesForeignNamesAndWritesBytesAsTheyAre)
{
    const TemporaryDirectory folder;
    const std::string pattern = folder / u8"päivä \u20AC.tpl";
    PutFile(pattern, "SEQUENCE { INTEGER = 10, INTEGER = 13, UTF8String = word }");
    const std::string program = "\"" PROGRAM_DIR "/cryptotool.exe\" ";
    const std::string der = "\x30\x0b\x02\x01\x0a\x02\x01\x0d\x0c\x03\xe2\x82\xac";

    ChildProgram built(program + "asn1 build \"" + pattern + "\" word=\u20AC");
    EXPECT_EQ(built.Rest(), der);
    EXPECT_EQ(built.ExitCode(), 0U);

    const std::string out = folder / u8"\U0001F58B.der";
    const std::string buildFile = program + "asn1 build \"" + pattern + "\" word=\u20AC -o \"" + out + "\"";
    for (int turn = 0; turn < 2; ++turn)
        EXPECT_EQ(ChildProgram(buildFile).ExitCode(), 0U);
    EXPECT_EQ(GetFile(out), der);

    ChildProgram shown(program + "asn1 get \"{,,{\" \"" + out + "\"");
    EXPECT_EQ(shown.Rest(), "\"\u20AC\"\n");
    ChildProgram refused(program + "asn1 show \"" + (folder / u8"") + "\"");
    EXPECT_TRUE(refused.Rest().starts_with("cryptotool: "));
    EXPECT_EQ(refused.ExitCode(), 1U);
}

} // namespace
