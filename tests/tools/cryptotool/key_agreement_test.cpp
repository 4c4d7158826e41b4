#include "core/text/hex.h"
#include "crypto/ec/ec.h"
#include "tests/tools/cryptotool/key_folder.h"

using namespace ccrypto;

namespace {

class CryptotoolKeyAgreement : public KeyFolder {
protected:
    std::string PutHex(std::u8string_view name, std::string_view digits) const
    {
        element bytes;
        EXPECT_TRUE(BytesFromHex(digits, bytes));
        return Put(name, bytes.view());
    }
};

/// SubjectPublicKeyInfo, up to the point.
constexpr std::string_view x25519Info = "302a300506032b656e032100";

TEST_F(CryptotoolKeyAgreement, BothSidesAgreeOnEveryCurve)
{
    for (const CurveFacts& curve : Curves()) {
        SCOPED_TRACE(curve.name);
        const std::string first = Generate(curve.name, u8"first");
        const std::string second = Generate(curve.name, u8"second");
        const std::string half = Put(u8"half", RunTool({"key", "public", second}).output);
        const ToolResult raw = RunTool({"key", "agree", first, half});
        EXPECT_EQ(raw.output.size(), curve.fieldBytes) << raw.error;
        EXPECT_EQ(RunTool({"key", "agree", second, first}).output, raw.output);
        const std::span bytes(reinterpret_cast<const std::uint8_t*>(raw.output.data()), raw.output.size());
        EXPECT_EQ(RunTool({"key", "agree", "--hex", first, half}).output, std::string(HexText(bytes).view()) + "\n");
        for (const char* const kdf : {"x963", "hkdf"}) {
            const ToolResult derived = RunTool({"key", "agree", "--kdf", kdf, "--length", "77", "--info", "00ff", first, half});
            EXPECT_EQ(derived.output.size(), 77U) << derived.error;
            EXPECT_EQ(RunTool({"key", "agree", "--kdf", kdf, "--length", "77", "--info", "00ff", second, first}).output,
                      derived.output);
            EXPECT_NE(RunTool({"key", "agree", "--kdf", kdf, "--length", "77", "--info", "00fe", second, first}).output,
                      derived.output);
        }
    }
}

TEST_F(CryptotoolKeyAgreement, RefusesWithAReason)
{
    const std::string own = Generate("x25519", u8"own");
    const std::string curve = Put(u8"curve", publishedKey);
    const std::string other = Generate("secp384r1", u8"other");
    const std::string signing = Generate("ed25519", u8"signing");
    const std::string rsa = Generate("rsa", u8"rsa");
    const std::string half = Put(u8"half", RunTool({"key", "public", own}).output);
    const std::string locked = File(u8"locked");
    const std::string password = Put(u8"password", "x");
    EXPECT_EQ(RunTool({"key", "convert", "--form", "encrypted", "--iterations", "1000", "--new-password-file", password, "-o",
                       locked, own})
                  .code,
              exitDone);
    const std::string info(x25519Info);
    const std::string invalid = ": it is not a valid key of a supported algorithm";
    const struct {
        Words words;
        std::string reason;
    } cases[] = {
        {{half, own}, half + ": it holds no private key"},
        {{rsa, own}, rsa + ": RSA keys do not agree on secrets"},
        {{signing, signing}, signing + ": Ed25519 keys do not agree on secrets"},
        {{curve, other}, other + ": A key on prime256v1 does not agree with secp384r1"},
        {{own, curve}, curve + ": A key on X25519 does not agree with prime256v1"},
        {{own, rsa}, rsa + ": A key on X25519 does not agree with RSA"},
        {{own, signing}, signing + ": A key on X25519 does not agree with Ed25519"},
        {{own, locked}, locked + ": it is encrypted, and there is no password"},
        {{own, locked, "--password-file", password}, locked + ": it is encrypted, and there is no password"},
        {{own, File(u8"missing")}, File(u8"missing") + ": "},
        // Points of order 1, 2, 4 and 8 (RFC 7748, 6.1), and their encodings above the prime.
        {{own, PutHex(u8"zero", info + std::string(64, '0'))}, File(u8"zero") + invalid},
        {{own, PutHex(u8"one", info + "01" + std::string(62, '0'))}, File(u8"one") + invalid},
        {{own, PutHex(u8"eight", info + "e0eb7a7c3b41b8ae1656e3faf19fc46ada098deb9c32b1fd866205165f49b800")},
         File(u8"eight") + invalid},
        {{own, PutHex(u8"minus", info + "ecffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff7f")},
         File(u8"minus") + invalid},
        {{own, PutHex(u8"prime", info + "edffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff7f")},
         File(u8"prime") + invalid},
        {{own, PutHex(u8"short", "3029300506032b656e032000" + std::string(62, '9'))}, File(u8"short") + invalid},
        {{own, PutHex(u8"long", "302b300506032b656e032200" + std::string(66, '9'))}, File(u8"long") + invalid},
        // A point that is not on the curve, and infinity.
        {{curve, PutHex(u8"off", "3059301306072a8648ce3d020106082a8648ce3d03010703420004" + std::string(128, '1'))},
         File(u8"off") + invalid},
        {{curve, PutHex(u8"infinity", "3019301306072a8648ce3d020106082a8648ce3d03010703020000")}, File(u8"infinity") + invalid},
    };
    for (const auto& test : cases) {
        const ToolResult result = RunTool(Joined({"key", "agree"}, test.words));
        SCOPED_TRACE(test.reason + "\n" + result.error);
        EXPECT_EQ(result.code, exitRefused);
        EXPECT_EQ(result.output, "");
        EXPECT_TRUE(result.error.starts_with("cryptotool: " + test.reason));
        EXPECT_EQ(result.error.find('\n'), result.error.size() - 1);
    }
}

TEST_F(CryptotoolKeyAgreement, WrongWordsAreMisuse)
{
    const struct {
        Words words;
        const char* problem;
    } cases[] = {
        {{"a"}, ""},
        {{"-", "-"}, "only one of the files can be standard input"},
        {{"-", "b", "--password-file", "-"}, "only one of the files can be standard input"},
        {{"a", "b", "--kdf", "pbkdf2"}, "--kdf must be one of x963|hkdf, not pbkdf2"},
        {{"a", "b", "--hash", "sha256"}, "--hash requires --kdf"},
        {{"a", "b", "--length", "16"}, "--length requires --kdf"},
        {{"a", "b", "--info", "00"}, "--info requires --kdf"},
        {{"a", "b", "--salt", "00"}, "--salt requires --kdf hkdf"},
        {{"a", "b", "--salt", "00", "--kdf", "x963"}, "--salt requires --kdf hkdf"},
        {{"a", "b", "--kdf", "x963", "--hash", "sha3"}, "--kdf x963 does not support sha3"},
        {{"a", "b", "--kdf", "x963", "--hash", "md4"}, "--kdf x963 does not support md4"},
        {{"a", "b", "--kdf", "hkdf", "--hash", "md5-sha1"}, "--kdf hkdf does not support md5-sha1"},
        {{"a", "b", "--kdf", "x963", "--length", "0"}, "--length must be from 1 to 4096"},
        {{"a", "b", "--kdf", "x963", "--length", "4097"}, "--length must be from 1 to 4096"},
        {{"a", "b", "--kdf", "hkdf", "--length", "8161"}, "--length must be from 1 to 8160"},
        {{"a", "b", "--kdf", "hkdf", "--hash", "sha1", "--length", "5101"}, "--length must be from 1 to 5100"},
        {{"a", "b", "--kdf", "hkdf", "--info", "0"}, "--info must be hexadecimal digits"},
        {{"a", "b", "--kdf", "hkdf", "--salt", "xy"}, "--salt must be hexadecimal digits"},
    };
    for (const auto& test : cases) {
        const ToolResult result = RunTool(Joined({"key", "agree"}, test.words));
        SCOPED_TRACE(testing::PrintToString(test.words) + result.error);
        EXPECT_EQ(result.code, exitUsage);
        EXPECT_TRUE(result.error.starts_with("cryptotool: " + std::string(test.problem)));
    }
}

TEST_F(CryptotoolKeyAgreement, TheSecretIsBinaryUnlessAskedForInDigits)
{
    const std::string own = Generate("x448", u8"own");
    EXPECT_EQ(RunTool({"key", "agree", own, own}, "", true).error,
              "cryptotool: -: binary data is not written to a terminal; use -o FILE\n");
    EXPECT_EQ(RunTool({"key", "agree", "--hex", own, own}, "", true).code, exitDone);
}

} // namespace
