#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/memory_console.h"
#include "tests/tools/cryptotool/small_files.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace ccrypto;

namespace {

TEST(CryptotoolCipherBesideOpenSSL, ReadEachOther)
{
    const TemporaryDirectory folder;
    const std::string in = folder / u8"in";
    const std::string sealed = folder / u8"sealed";
    const std::string out = folder / u8"out";
    const std::string password = folder / u8"password";
    PutFile(in, std::string(100001, 'x'));
    PutFile(password, "sesame");
    for (const std::string cipher : {"aes-256-cbc", "aes-128-ctr", "des-ede3-cbc"}) {
        SCOPED_TRACE(cipher);
        const std::string openssl = "openssl enc -" + cipher + " -pbkdf2 -iter 500 -pass file:" + password + " -out " + out;
        const std::vector<std::string> options = {"--openssl", "--cipher",        cipher,  "--iterations",
                                                  "500",       "--password-file", password};
        const auto tool = [&](const char* verb, const std::string& from, const std::string& to) {
            std::vector<std::string> words = {"cipher", verb, from, "-o", to};
            words.insert(words.end(), options.begin(), options.end());
            return RunTool(words);
        };
        const ToolResult encrypted = tool("enc", in, sealed);
        ASSERT_EQ(encrypted.code, exitDone) << encrypted.error;
        ASSERT_EQ(std::system((openssl + " -d -in " + sealed).c_str()), 0);
        EXPECT_EQ(GetFile(out), GetFile(in));

        ASSERT_EQ(std::system((openssl + " -e -in " + in).c_str()), 0);
        const ToolResult decrypted = tool("dec", out, sealed);
        ASSERT_EQ(decrypted.code, exitDone) << decrypted.error;
        EXPECT_EQ(GetFile(sealed), GetFile(in));
    }
}

} // namespace
