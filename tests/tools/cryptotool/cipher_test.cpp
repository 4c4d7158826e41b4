#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/memory_console.h"
#include "tests/tools/cryptotool/small_files.h"
#include "tools/cryptotool/cipher/cipher_transfer.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

std::string Text(std::size_t length)
{
    std::string text;
    for (std::size_t i = 0; text.size() < length; ++i)
        text += std::to_string(i * 7919) + " ";
    text.resize(length);
    return text;
}

class CryptotoolCipher : public ::testing::Test {
protected:
    std::string put(const char8_t* name, std::string_view bytes)
    {
        PutFile(folder_ / name, bytes);
        return folder_ / name;
    }

    TemporaryDirectory folder_;
};

TEST_F(CryptotoolCipher, WhatIsEncryptedComesBack)
{
    const std::string key = put(u8"key", std::string(32, 'k'));
    const std::string hexKey = put(u8"hexkey", "00112233445566778899aabbccddeeff00112233445566778899AABBCCDDEEFF\r\n");
    const std::string password = put(u8"password", "sesame\n");
    const std::vector<std::vector<std::string>> secrets = {
        {"--key-file", key},
        {"--key-file", hexKey, "--hex-key"},
        {"--password-file", password, "--iterations", "1000"},
        {"--key-file", key, "--cipher", "aes-256-cbc"},
        {"--key-file", key, "--cipher", "AES-256-CTR"},
        {"--password-file", password, "--iterations", "10", "--cipher", "des-ede3-cbc"},
        {"--password-file", password, "--openssl", "--iterations", "10"},
        {"--key-file", key, "--raw", "--iv", "00000000000000000000000000000001", "--cipher", "aes-256-cbc"},
        {"--key-file", key, "--raw", "--iv", "000000000000000000000001"},
    };
    for (const auto& secret : secrets) {
        for (const std::size_t length : {0u, 1u, 16u, 65536u, 200001u}) {
            SCOPED_TRACE(secret.back() + " " + std::to_string(length));
            const std::string in = put(u8"in", Text(length));
            const std::string sealed = folder_ / u8"sealed";
            const std::string out = folder_ / u8"out";
            const auto words = [&](const char* verb, const std::string& from, const std::string& to) {
                std::vector<std::string> all = {"cipher", verb, from, "-o", to};
                for (std::size_t i = 0; i < secret.size(); ++i) {
                    const bool isInHeader = secret[i] == "--iterations" && secret[2] != "--openssl";
                    if (std::string_view(verb) == "dec" && isInHeader)
                        ++i;
                    else
                        all.push_back(secret[i]);
                }
                return all;
            };
            ASSERT_EQ(RunTool(words("enc", in, sealed)).code, exitDone) << RunTool(words("enc", in, sealed)).error;
            ASSERT_EQ(RunTool(words("dec", sealed, out)).code, exitDone) << RunTool(words("dec", sealed, out)).error;
            EXPECT_EQ(GetFile(out), Text(length));
            // From standard input, which cannot be read twice.
            EXPECT_EQ(RunTool(words("dec", "-", "-"), GetFile(sealed)).output, Text(length));
            EXPECT_EQ(RunTool(words("dec", sealed, "-")).output, Text(length));
        }
    }
}

TEST_F(CryptotoolCipher, AsksForThePasswordAndShowsWhatItsKeyIsMadeWith)
{
    const std::vector<std::string> encrypt = {"cipher", "enc", "--iterations", "1000"};
    const ToolResult sealed = RunTyping(encrypt, {"open", "open"}, "text");
    ASSERT_EQ(sealed.code, exitDone) << sealed.error;
    EXPECT_TRUE(sealed.error.starts_with("cryptotool: PBKDF2 with HMAC-SHA-256, 1000 iterations, salt ")) << sealed.error;
    EXPECT_EQ(RunTyping({"cipher", "dec"}, {"open"}, sealed.output).output, "text");
    const ToolResult wrong = RunTyping({"cipher", "dec"}, {"other"}, sealed.output);
    EXPECT_EQ(wrong.code, exitRefused);
    EXPECT_EQ(wrong.output, "");
    EXPECT_NE(wrong.error.find("The tag is wrong"), std::string::npos) << wrong.error;
    // The last block decrypts to a right padding once in 256 times.
    const std::vector<std::string> foreign = {"cipher", "enc", "--openssl", "--iterations", "10"};
    std::string said;
    for (int turn = 0; turn < 8 && said.empty(); ++turn)
        said = RunTyping({"cipher", "dec", "--openssl", "--iterations", "10", "--quiet"}, {"other"},
                         RunTyping(foreign, {"open", "open"}, "text").output)
                   .error;
    EXPECT_EQ(said, "cryptotool: -: Wrong padding; the password may be wrong, or the file damaged\n");
    EXPECT_EQ(RunTyping(encrypt, {"open", "Open"}, "text").code, exitRefused);
}

TEST_F(CryptotoolCipher, ChangesLeaveNothing)
{
    const std::string key = put(u8"key", std::string(32, 'k'));
    const std::string in = put(u8"in", Text(150000));
    const std::string sealed = folder_ / u8"sealed";
    const std::string out = put(u8"out", "as it was");
    ASSERT_EQ(RunTool({"cipher", "enc", in, "-o", sealed, "--key-file", key}).code, exitDone);
    const std::string good = GetFile(sealed);
    // Header (kind, salt, vector, name), text, tag, and a cut.
    for (const std::size_t place : {std::size_t{0}, std::size_t{8}, std::size_t{14}, std::size_t{31}, std::size_t{45},
                                    std::size_t{60}, std::size_t{140000}, good.size() - 1, good.size()}) {
        SCOPED_TRACE(place);
        std::string bad = good;
        if (place < bad.size())
            bad[place] = static_cast<char>(bad[place] ^ 1);
        else
            bad.pop_back();
        PutFile(sealed, bad);
        EXPECT_EQ(RunTool({"cipher", "dec", sealed, "-o", out, "--key-file", key}).code, exitRefused);
        EXPECT_EQ(GetFile(out), "as it was");
        const ToolResult piped = RunTool({"cipher", "dec", "--key-file", key}, bad);
        EXPECT_EQ(piped.code, exitRefused);
        EXPECT_EQ(piped.output, "");
        EXPECT_EQ(RunTool({"cipher", "dec", sealed, "--key-file", key}).output, "");
    }
}

TEST_F(CryptotoolCipher, AFileThatChangesBetweenTwoPassesIsReadUpToTheChange)
{
    const std::string whole = Text(1000000);
    std::string changed = whole;
    changed[600000] ^= 1;
    const struct {
        std::string second;
        bool isSame;
    } cases[] = {{whole, true}, {changed, false}, {whole.substr(0, 999999), false}, {whole + "x", false}, {"", false}};
    for (const auto& row : cases) {
        SCOPED_TRACE(row.second.size());
        const std::string name = put(u8"text", whole);
        MemoryConsole console;
        CipherInput input(console, name);
        const auto readAll = [&input](std::string& text) {
            std::span<const std::uint8_t> piece;
            bool isRead;
            while ((isRead = input.next(piece)) && !piece.empty())
                text.append(reinterpret_cast<const char*>(piece.data()), piece.size());
            return isRead;
        };
        ASSERT_TRUE(input.open());
        input.remember();
        std::span<const std::uint8_t> front;
        ASSERT_TRUE(input.peek(10, front));
        input.skip(10);
        std::string first = whole.substr(0, 10);
        ASSERT_TRUE(readAll(first));
        EXPECT_EQ(first, whole);

        PutFile(name, row.second);
        ASSERT_TRUE(input.rewind());
        input.skip(10);
        std::string second = whole.substr(0, 10);
        EXPECT_EQ(readAll(second), row.isSame) << input.reason();
        EXPECT_TRUE(whole.starts_with(second)) << "a piece that differs came through";
    }
}

TEST_F(CryptotoolCipher, RefusesHeadersThatAskForTooMuch)
{
    const std::string password = put(u8"password", "sesame\n");
    const std::string sealed = RunTool({"cipher", "enc", "--password-file", password, "--iterations", "10"}, "text").output;
    constexpr std::size_t iterations = 9, vectorLength = 29, nameLength = 42;
    const struct {
        std::size_t place;
        std::string_view bytes;
        std::string_view reason;
    } cases[] = {
        {iterations, std::string_view("\0\0\0\0", 4), "iterations"},
        {iterations, std::string_view("\x00\x98\x96\x81", 4),
         "asks for 10000001 iterations, more than --max-iterations allows (10000000)"},
        {iterations, "\xFF\xFF\xFF\xFF", "asks for 4294967295 iterations"},
        {vectorLength, std::string_view("\0", 1), "cryptotool: "},
        {vectorLength, "\xFF", "header"},
        {nameLength, "\xFF", "header"},
        {nameLength, "\x0A", "unknown cipher aes-256-gc"},
        {nameLength + 1, "\x1B[2Jm", "unknown cipher"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(std::to_string(test.place) + " " + std::string(test.reason));
        std::string changed = sealed;
        changed.replace(test.place, test.bytes.size(), test.bytes);
        const ToolResult result = RunTool({"cipher", "dec", "--password-file", password}, changed);
        EXPECT_EQ(result.code, exitRefused);
        EXPECT_EQ(result.output, "");
        EXPECT_NE(result.error.find(test.reason), std::string::npos) << result.error;
        EXPECT_EQ(result.error.find('\x1B'), std::string::npos) << "a name from outside moved the terminal's cursor";
        // No time is spent on a key for what is refused by its header; the library itself refuses no iterations.
        EXPECT_EQ(result.error.find("PBKDF2 with") != std::string::npos, test.reason == "iterations") << result.error;
    }
    std::string shortVector = sealed;
    shortVector[vectorLength] = 11;
    shortVector.erase(vectorLength + 1, 1);
    EXPECT_EQ(RunTool({"cipher", "dec", "--password-file", password}, shortVector).error,
              "cryptotool: -: its header has an initialisation vector of the wrong length\n");
    // The limit is the caller's, and holds to the last iteration.
    const std::vector<std::string> decrypt = {"cipher", "dec", "--password-file", password, "--max-iterations"};
    const auto limited = [&](const char* limit) {
        std::vector<std::string> words = decrypt;
        words.emplace_back(limit);
        return RunTool(words, sealed);
    };
    EXPECT_EQ(limited("10").output, "text");
    EXPECT_EQ(limited("9").code, exitRefused);
    EXPECT_EQ(limited("50000001").code, exitUsage);
}

TEST_F(CryptotoolCipher, TakesACipherThatNoticesNothingOnlyWhenItIsExpected)
{
    const std::string key = put(u8"key", std::string(32, 'k'));
    const std::string sealed = RunTool({"cipher", "enc", "--key-file", key, "--cipher", "aes-256-ctr"}, "text").output;
    const std::vector<std::string> decrypt = {"cipher", "dec", "--key-file", key};
    const ToolResult refused = RunTool(decrypt, sealed);
    EXPECT_EQ(refused.code, exitRefused);
    EXPECT_EQ(refused.output, "");
    EXPECT_EQ(refused.error,
              "cryptotool: -: it was encrypted with aes-256-ctr, which does not detect changes; --cipher aes-256-ctr accepts it\n");
    EXPECT_EQ(RunTool({"cipher", "dec", "--key-file", key, "--cipher", "aes-256-cbc"}, sealed).code, exitRefused);
    EXPECT_EQ(RunTool({"cipher", "dec", "--key-file", key, "--cipher", "aes-256-ctr"}, sealed).output, "text");
}

TEST_F(CryptotoolCipher, RefusesWhatDoesNotGoTogether)
{
    const std::string key = put(u8"key", std::string(16, 'k'));
    const struct {
        std::vector<std::string> words;
        int code;
    } cases[] = {
        {{"--key-file", key}, exitRefused}, // 16 bytes for a cipher of 32
        {{"--key-file", key, "--hex-key"}, exitRefused},
        {{"--key-file", key, "--cipher", "aes-128-xts"}, exitUsage},
        {{"--key-file", key, "--cipher", "aes-128-cbc", "--iterations", "1000"}, exitUsage},
        {{"--key-file", key, "--cipher", "aes-128-cbc", "--raw"}, exitUsage},
        {{"--key-file", key, "--iv", "00"}, exitUsage},
        {{"--key-file", key, "--cipher", "aes-128-cbc", "--raw", "--iv", "0"}, exitUsage},
        {{"--key-file", key, "--cipher", "aes-128-cbc", "--raw", "--iv", "00"}, exitRefused},
        {{"--key-file", key, "--password-file", key}, exitUsage},
        {{"--key-file", key, "--openssl"}, exitUsage},
        {{"--password-file", key, "--openssl", "--cipher", "aes-128-gcm"}, exitUsage},
        {{"--password-file", key, "--raw", "--iv", "00"}, exitUsage},
        {{"--password-file", key, "--iterations", "0"}, exitUsage},
        {{"--password-file", "-"}, exitUsage},
        {{"--password-fd", "0"}, exitUsage},
        {{"--password-file", put(u8"nothing", "\n")}, exitRefused},
        {{"--password-file", key, "--openssl", "-o", ""}, exitUsage},
        {{"--key-fd", "0"}, exitUsage},
        {{"--hex-key"}, exitUsage},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.words.back());
        std::vector<std::string> words = {"cipher", "enc"};
        words.insert(words.end(), test.words.begin(), test.words.end());
        const ToolResult result = RunTool(words, "text");
        EXPECT_EQ(result.code, test.code) << result.error;
        EXPECT_EQ(result.output, "");
    }
    EXPECT_EQ(RunTool({"cipher", "dec", "--key-file", key}, "no header").code, exitRefused);
    EXPECT_EQ(RunTool({"cipher", "dec", "--password-file", key, "--openssl"}, "Salted_").code, exitRefused);
}

TEST_F(CryptotoolCipher, AKeyOfTheWrongLengthIsNotTheFaultOfTheFile)
{
    const std::string key = put(u8"key", "fifteen bytes..");
    const std::string file = put(u8"file", "text");
    for (const char* const verb : {"enc", "dec"})
        EXPECT_EQ(RunTool({"cipher", verb, "--raw", "--iv", "000000000000000000000000", "--key-file", key, file}).error,
                  "cryptotool: " + key + ": aes-256-gcm has no keys of 15 bytes\n");
}

} // namespace
