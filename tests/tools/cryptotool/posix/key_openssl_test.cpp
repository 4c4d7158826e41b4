#include "tests/tools/cryptotool/posix/openssl_folder.h"

using namespace ccrypto;

// Keys and signatures of one program, read by the other.

namespace {

class CryptotoolKeyOpenssl : public OpensslFolder {};

struct KeyCase {
    const char* name;
    const char* options; ///< of openssl genpkey
};

constexpr KeyCase keys[] = {
    {"rsa", "-algorithm RSA -pkeyopt rsa_keygen_bits:1024"},
    {"secp112r1", "-algorithm EC -pkeyopt ec_paramgen_curve:secp112r1"},
    {"secp160r1", "-algorithm EC -pkeyopt ec_paramgen_curve:secp160r1"},
    {"prime192v1", "-algorithm EC -pkeyopt ec_paramgen_curve:prime192v1"},
    {"prime256v1", "-algorithm EC -pkeyopt ec_paramgen_curve:prime256v1"},
    {"secp384r1", "-algorithm EC -pkeyopt ec_paramgen_curve:secp384r1"},
    {"secp521r1", "-algorithm EC -pkeyopt ec_paramgen_curve:secp521r1"},
    {"brainpoolP160r1", "-algorithm EC -pkeyopt ec_paramgen_curve:brainpoolP160r1"},
    {"brainpoolP256r1", "-algorithm EC -pkeyopt ec_paramgen_curve:brainpoolP256r1"},
    {"brainpoolP384r1", "-algorithm EC -pkeyopt ec_paramgen_curve:brainpoolP384r1"},
    {"x25519", "-algorithm X25519"},
    {"x448", "-algorithm X448"},
};

bool IsAgreeing(const KeyCase& key)
{
    return key.name[0] == 'x';
}

/// The options of a new key that is quickly made.
Words GenerateWords(const std::string& algorithm)
{
    Words words = {"key", "gen", algorithm, "-o", "@key"};
    if (algorithm == "rsa")
        words.insert(words.end(), {"--bits", "1024"});
    return words;
}

const char* OldForm(const KeyCase& key)
{
    return key.name == std::string("rsa") ? "pkcs1" : "sec1";
}

TEST_F(CryptotoolKeyOpenssl, OpensslReadsOurKeys)
{
    for (const KeyCase& key : keys) {
        SCOPED_TRACE(key.name);
        EXPECT_EQ(Tool(GenerateWords(key.name)).code, exitDone);
        EXPECT_EQ(Tool({"key", "public", "@key", "-o", "@public"}).code, exitDone);
        Words forms = {"pkcs8"};
        if (!IsAgreeing(key))
            forms.emplace_back(OldForm(key));
        for (const std::string& form : forms) {
            for (const std::string encoding : {"pem", "der"}) {
                EXPECT_EQ(Tool({"key", "convert", "--form", form, "--outform", encoding, "@key", "-o", "@next"}).code, exitDone);
                EXPECT_TRUE(Shell("openssl pkey -check -in next -inform " + encoding + " && openssl pkey -in next -inform " +
                                  encoding + " -pubout -out theirs"))
                    << form << ' ' << encoding << ' ' << Get("log");
                EXPECT_EQ(Get("theirs"), Get("public"));
            }
        }
        EXPECT_TRUE(Shell("openssl pkey -in key -out theirs"));
        EXPECT_EQ(Get("theirs"), Get("key"));
    }
}

TEST_F(CryptotoolKeyOpenssl, WeReadItsKeys)
{
    for (const KeyCase& key : keys) {
        SCOPED_TRACE(key.name);
        ASSERT_TRUE(Shell(
            "openssl genpkey " + std::string(key.options) +
            " -out key && openssl pkey -in key -pubout -out public && "
            "openssl pkey -in key -outform DER -out key.der && { openssl pkey -in key -traditional -out old || cp key old; }"))
            << Get("log");
        for (const char* const file : {"@key", "@key.der", "@old", "@public"})
            EXPECT_EQ(Tool({"key", "public", file}).output, Get("public")) << file;
        EXPECT_EQ(Tool({"key", "convert", "@old"}).output, Get("key"));
        if (!IsAgreeing(key)) {
            EXPECT_EQ(Tool({"key", "convert", "--form", OldForm(key), "@key"}).output, Get("old"));
        }
    }
    ASSERT_TRUE(Shell("openssl genrsa -traditional -out key 1024 && openssl rsa -in key -RSAPublicKey_out -out old"));
    EXPECT_EQ(Tool({"key", "public", "--form", "pkcs1", "@key"}).output, Get("old"));
    ASSERT_TRUE(Shell("openssl pkey -in key -pubout -outform DER | openssl dgst -sha256 -r | cut -c1-64 >print"));
    EXPECT_NE(Tool({"key", "show", "@old"}).output.find("fingerprint       " + Get("print")), std::string::npos);
}

TEST_F(CryptotoolKeyOpenssl, EncryptedKeysGoBothWays)
{
    const struct {
        const char* option;
        const char* ours;
        const char* theirs;
    } ways[] = {
        {"--cipher", "aes-128-cbc", "-v2 aes-128-cbc"},
        {"--cipher", "aes-192-cbc", "-v2 aes-192-cbc -v2prf hmacWithSHA512"},
        {"--cipher", "aes-256-cbc", "-v2 aes-256-cbc -v2prf hmacWithSHA1"},
        {"--cipher", "des-ede3-cbc", "-v2 des3"},
        {"--scheme", "sha1-3des", "-v1 PBE-SHA1-3DES"},
        {"--scheme", "sha1-2des", "-v1 PBE-SHA1-2DES"},
        {"--scheme", "sha1-rc2-128", "-v1 PBE-SHA1-RC2-128"},
        {"--scheme", "sha1-rc2-40", "-v1 PBE-SHA1-RC2-40"},
        {"--scheme", "sha1-rc4-128", "-v1 PBE-SHA1-RC4-128"},
        {"--scheme", "sha1-rc4-40", "-v1 PBE-SHA1-RC4-40"},
    };
    const std::string pkcs8 = "openssl pkcs8 -provider legacy -provider default ";
    ASSERT_EQ(Tool({"key", "gen", "prime256v1", "-o", "@key"}).code, exitDone);
    for (const auto& way : ways) {
        SCOPED_TRACE(way.ours);
        EXPECT_EQ(Tool({"key", "convert", "--form", "encrypted", way.option, way.ours, "--iterations", "3000",
                        "--new-password-file", "@password", "@key", "-o", "@encrypted"})
                      .code,
                  exitDone);
        EXPECT_TRUE(Shell(pkcs8 + "-in encrypted -passin file:password -out theirs")) << Get("log");
        EXPECT_EQ(Get("theirs"), Get("key"));

        ASSERT_TRUE(Shell(pkcs8 + "-topk8 -in key -passout file:password -iter 3000 -outform DER -out encrypted " + way.theirs))
            << Get("log");
        EXPECT_EQ(Tool({"key", "convert", "--password-file", "@password", "@encrypted"}).output, Get("key"));
        EXPECT_EQ(Tool({"key", "convert", "--password-file", "@key", "@encrypted"}).code, exitRefused);
    }
}

TEST_F(CryptotoolKeyOpenssl, SignaturesGoBothWays)
{
    const struct {
        const char* key;
        Words ours;
        const char* theirs;
    } cases[] = {
        {"rsa", {}, "-sha256"},
        {"rsa", {"--hash", "md5"}, "-md5"},
        {"rsa", {"--hash", "sha224"}, "-sha224"},
        {"rsa", {"--hash", "sha512"}, "-sha512"},
        {"rsa", {"--pss"}, "-sha256 -sigopt rsa_padding_mode:pss"},
        {"rsa",
         {"--pss", "--hash", "sha384", "--salt-length", "10"},
         "-sha384 -sigopt rsa_padding_mode:pss -sigopt rsa_pss_saltlen:10"},
        {"P-256", {}, "-sha256"},
        {"secp521r1", {"--hash", "sha512"}, "-sha512"},
        {"brainpoolP384r1", {"--hash", "sha384"}, "-sha384"},
        {"secp112r1", {"--hash", "sha1"}, "-sha1"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(std::string(test.key) + " " + test.theirs);
        ASSERT_EQ(Tool(GenerateWords(test.key)).code, exitDone);
        ASSERT_TRUE(Shell("openssl pkey -in key -pubout -out public"));
        const auto with = [&](Words words) {
            words.insert(words.end(), test.ours.begin(), test.ours.end());
            return Tool(words);
        };
        EXPECT_EQ(with({"key", "sign", "@key", "@text", "-o", "@signature"}).code, exitDone);
        EXPECT_TRUE(Shell("openssl dgst " + std::string(test.theirs) + " -verify public -signature signature text")) << Get("log");
        ASSERT_TRUE(Shell("openssl dgst " + std::string(test.theirs) + " -sign key -out signature text")) << Get("log");
        EXPECT_EQ(with({"key", "verify", "@public", "@signature", "@text"}).output, "OK\n");
        EXPECT_EQ(with({"key", "verify", "@public", "@signature", "@key"}).output, "FAILED\n");
    }
}

} // namespace
