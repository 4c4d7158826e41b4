#include "tests/tools/cryptotool/key_folder.h"

using namespace ccrypto;

namespace {

class CryptotoolKeyEncryption : public KeyFolder {};

TEST_F(CryptotoolKeyEncryption, TextsComeBackUpToTheLongest)
{
    const std::string key = Generate("rsa");
    const std::string half = Put(u8"half", RunTool({"key", "public", key}).output);
    const struct {
        Words options;
        std::size_t maxText; ///< of a key of 128 bytes
    } cases[] = {
        {{}, 62},
        {{"--padding", "oaep", "--hash", "SHA-1"}, 86},
        {{"--hash", "sha1", "--mgf-hash", "sha256", "--label", "00ff"}, 86},
        {{"--hash", "sha3-256"}, 62},
        {{"--hash", "md5"}, 94},
        {{"--padding", "pkcs1"}, 117},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(testing::PrintToString(test.options));
        for (const std::size_t length : {std::size_t{0}, std::size_t{1}, test.maxText}) {
            const std::string text(length, 't');
            const ToolResult sealed = RunTool(Joined({"key", "encrypt", half}, test.options), text);
            EXPECT_EQ(sealed.output.size(), 128U) << sealed.error;
            EXPECT_NE(RunTool(Joined({"key", "encrypt", key}, test.options), text).output, sealed.output);
            const ToolResult opened = RunTool(Joined({"key", "decrypt", key}, test.options), sealed.output);
            EXPECT_EQ(opened.code, exitDone) << opened.error;
            EXPECT_EQ(opened.output, text);
        }
        EXPECT_EQ(RunTool(Joined({"key", "encrypt", half}, test.options), std::string(test.maxText + 1, 't')).error,
                  "cryptotool: -: it has " + std::to_string(test.maxText + 1) + " bytes; this key and padding encrypt up to " +
                      std::to_string(test.maxText) + "\n");
    }
    EXPECT_EQ(RunTool({"key", "encrypt", half, "--hash", "sha512"}, "").error,
              "cryptotool: " + half + ": the key is too short for OAEP with this hash function\n");
}

TEST_F(CryptotoolKeyEncryption, OaepSaysOneThingOfWhateverIsWrong)
{
    const std::string key = Generate("rsa");
    const std::string sealed = RunTool({"key", "encrypt", key, "--label", "01"}, "text").output;
    const std::string reason = "cryptotool: -: it cannot be decrypted with this key and these options\n";
    std::string damaged = sealed;
    damaged[60] ^= 1;
    EXPECT_EQ(RunTool({"key", "decrypt", key, "--label", "01"}, damaged).error, reason);
    EXPECT_EQ(RunTool({"key", "decrypt", Generate("rsa", u8"other"), "--label", "01"}, sealed).error, reason);
    // A number above the modulus, and 0.
    for (const char byte : {'\xFF', '\0'}) {
        const ToolResult result = RunTool({"key", "decrypt", key, "--label", "01"}, std::string(128, byte));
        EXPECT_EQ(result.code, exitRefused);
        EXPECT_EQ(result.error, reason);
    }
    for (const Words& options :
         {Words{}, {"--label", "02"}, {"--label", "01", "--hash", "sha1"}, {"--label", "01", "--mgf-hash", "md5"}}) {
        const ToolResult result = RunTool(Joined({"key", "decrypt", key}, options), sealed);
        EXPECT_EQ(result.error, reason);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.code, exitRefused);
    }
}

TEST_F(CryptotoolKeyEncryption, Pkcs1DoesNotSayWhetherThePaddingWasRight)
{
    const std::string key = Generate("rsa");
    const std::string sealed = RunTool({"key", "encrypt", key, "--padding", "pkcs1"}, "text").output;
    for (std::size_t place = 64; place < 72; ++place) {
        std::string damaged = sealed;
        damaged[place] ^= 1;
        const ToolResult result = RunTool({"key", "decrypt", key, "--padding", "pkcs1"}, damaged);
        EXPECT_EQ(result.code, exitDone);
        EXPECT_EQ(result.error, "");
        EXPECT_NE(result.output, "text");
        EXPECT_EQ(RunTool({"key", "decrypt", key, "--padding", "pkcs1"}, damaged).output, result.output);
    }
}

TEST_F(CryptotoolKeyEncryption, RefusesWithAReason)
{
    const std::string curve = Put(u8"curve", publishedKey);
    const std::string rsa = Generate("rsa", u8"rsa");
    const std::string half = Put(u8"half", RunTool({"key", "public", rsa}).output);
    const std::string cut = Put(u8"cut", std::string(127, 'c'));
    const std::string longer = Put(u8"longer", std::string(129, 'c'));
    const std::string missing = File(u8"missing");
    const struct {
        Words words;
        int code;
        std::string reason;
    } cases[] = {
        {{"encrypt", curve, cut}, exitRefused, curve + ": prime256v1 keys do not encrypt"},
        {{"decrypt", curve, cut}, exitRefused, curve + ": prime256v1 keys do not encrypt"},
        {{"decrypt", half, cut}, exitRefused, half + ": it holds no private key"},
        {{"encrypt", rsa, missing}, exitRefused, missing + ": "},
        {{"decrypt", rsa, cut}, exitRefused, cut + ": it has 127 bytes; a ciphertext of this key has 128"},
        {{"decrypt", rsa, longer}, exitRefused, longer + ": it has 129 bytes; a ciphertext of this key has 128"},
        {{"decrypt", rsa, longer, "--padding", "pkcs1"}, exitRefused, longer + ": it has 129 bytes"},
        {{"encrypt", "-"}, exitUsage, "only one of the files can be standard input"},
        {{"encrypt", rsa, "--padding", "pss"}, exitUsage, "--padding must be one of oaep|pkcs1, not pss"},
        {{"encrypt", rsa, "--padding", "pkcs1", "--hash", "sha1"}, exitUsage, "--hash requires --padding oaep"},
        {{"decrypt", rsa, "--padding", "pkcs1", "--label", ""}, exitUsage, "--label requires --padding oaep"},
        {{"decrypt", rsa, "--padding", "pkcs1", "--mgf-hash", "sha1"}, exitUsage, "--mgf-hash requires --padding oaep"},
        {{"encrypt", rsa, "--label", "0"}, exitUsage, "--label must be hexadecimal digits"},
        {{"encrypt", rsa, "--hash", "md4"}, exitUsage, "--hash does not support md4"},
        {{"encrypt", rsa, "--hash", "md5-sha1"}, exitUsage, "--hash does not support md5-sha1"},
        {{"encrypt", rsa, "--hash", "shake128"}, exitUsage, "--hash does not support shake128"},
        {{"encrypt", rsa, "--mgf-hash", "sha3"}, exitUsage, "--mgf-hash does not support sha3"},
    };
    for (const auto& test : cases) {
        const ToolResult result = RunTool(Joined({"key"}, test.words));
        SCOPED_TRACE(test.reason + "\n" + result.error);
        EXPECT_EQ(result.code, test.code);
        EXPECT_EQ(result.output, "");
        EXPECT_TRUE(result.error.starts_with("cryptotool: " + test.reason));
    }
}

class CryptotoolCertificateKey : public KeyFolder {
protected:
    static std::string Fixture(const std::string& name)
    {
        return GetFile(std::filesystem::path(TEST_DATA_DIR "/../../data/asn1/" + name).lexically_normal().string());
    }
};

TEST_F(CryptotoolCertificateKey, IsTakenFromDerPemAndText)
{
    for (const char* const name : {"certificate_leaf.der", "certificate_ca.der", "certificate_version1.der"}) {
        SCOPED_TRACE(name);
        const std::string der = Fixture(name);
        const std::string file = Put(u8"certificate", der);
        const ToolResult half = RunTool({"key", "public", file});
        EXPECT_TRUE(half.output.starts_with("-----BEGIN PUBLIC KEY-----\n")) << half.error;
        const ToolResult shown = RunTool({"key", "show", file});
        EXPECT_NE(shown.output.find("form              Certificate (X.509)\n"), std::string::npos) << shown.output;
        for (const char* const label : {"CERTIFICATE", "X509 CERTIFICATE", "TRUSTED CERTIFICATE"}) {
            const std::string pem = RunTool({"asn1", "build", "--pem", label, "-", "all=der:@" + file}, "all").output;
            EXPECT_EQ(RunTool({"key", "public", "-"}, "Bag\n" + pem + pem).output, half.output);
            // A key beside certificates is the one that counts.
            EXPECT_NE(RunTool({"key", "public", "-"}, pem + publishedKey).output, half.output);
        }
    }
}

TEST_F(CryptotoolCertificateKey, IsRefusedWithAReason)
{
    const std::string der = Fixture("certificate_leaf.der");
    const std::string file = Put(u8"certificate", der);
    EXPECT_EQ(RunTool({"key", "show", "--private", file}).error, "cryptotool: " + file + ": it holds no private key\n");
    for (const char* const verb : {"sign", "decrypt", "convert"})
        EXPECT_EQ(RunTool({"key", verb, file}).error, "cryptotool: " + file + ": it holds no private key\n");
    EXPECT_EQ(RunTool({"key", "show", "-"}, der.substr(0, der.size() - 1)).code, exitRefused);
    // id-ecPublicKey becomes another OID; prime256v1 another curve.
    std::string other = der;
    const std::size_t algorithm = other.find("\x2A\x86\x48\xCE\x3D\x02\x01");
    if (algorithm != std::string::npos) {
        other[algorithm + 6] = 2;
        const ToolResult result = RunTool({"key", "show", "-"}, other);
        EXPECT_NE(result.error.find("Unsupported algorithm: 1.2.840.10045.2.2"), std::string::npos) << result.error;
    }
    EXPECT_EQ(RunTool({"key", "show", "-"}, Fixture("crl.der")).error, "cryptotool: -: it is neither DER nor PEM of a key\n");
}

} // namespace
