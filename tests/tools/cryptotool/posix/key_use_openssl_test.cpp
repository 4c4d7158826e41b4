#include "tests/tools/cryptotool/posix/openssl_folder.h"

using namespace ccrypto;

// Agreement and encryption by one program, undone by the other; keys of certificates that openssl makes.

namespace {

class CryptotoolKeyUseOpenssl : public OpensslFolder {
protected:
    /// The bytes that openssl prints as "00:FF" or "00ff".
    std::string Digits(const std::string& name) const
    {
        std::string digits;
        for (const char character : Get(name))
            if (std::isxdigit(static_cast<unsigned char>(character)) != 0)
                digits += static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
        return digits + "\n";
    }
};

TEST_F(CryptotoolKeyUseOpenssl, SecretsAreTheSame)
{
    for (const std::string name : {"secp112r1", "prime192v1", "secp224r1", "prime256v1", "secp384r1", "secp521r1", "secp256k1",
                                   "brainpoolP256r1", "brainpoolP512r1", "x25519", "x448"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(Tool({"key", "gen", name, "-o", "@ours"}).code, exitDone);
        EXPECT_EQ(Tool({"key", "public", "@ours", "-o", "@peer"}).code, exitDone);
        const std::string make = name[0] == 'x' ? "-algorithm " + name : "-algorithm EC -pkeyopt ec_paramgen_curve:" + name;
        ASSERT_TRUE(Shell("openssl genpkey " + make +
                          " -out theirs && openssl pkey -in theirs -pubout -out public && "
                          "openssl pkeyutl -derive -inkey theirs -peerkey peer -out secret"))
            << Get("log");
        EXPECT_EQ(Tool({"key", "agree", "@ours", "@public"}).output, Get("secret"));
        const std::string key = Tool({"key", "agree", "--hex", "@ours", "@theirs"}).output;
        const std::string derive = "openssl kdf -keylen 70 -kdfopt digest:SHA384 -kdfopt hexinfo:00ff07 ";
        ASSERT_TRUE(Shell(derive + "-kdfopt hexsecret:" + key.substr(0, key.size() - 1) + " X963KDF >x963")) << Get("log");
        EXPECT_EQ(Tool({"key", "agree", "--hex", "--kdf", "x963", "--hash", "sha384", "--length", "70", "--info", "00ff07", "@ours",
                        "@public"})
                      .output,
                  Digits("x963"));
        ASSERT_TRUE(Shell(derive + "-kdfopt hexkey:" + key.substr(0, key.size() - 1) + " -kdfopt hexsalt:5a17 HKDF >hkdf"))
            << Get("log");
        EXPECT_EQ(Tool({"key", "agree", "--hex", "--kdf", "hkdf", "--hash", "sha384", "--length", "70", "--info", "00ff07",
                        "--salt", "5a17", "@ours", "@public"})
                      .output,
                  Digits("hkdf"));
    }
}

TEST_F(CryptotoolKeyUseOpenssl, CiphertextsGoBothWays)
{
    const struct {
        Words ours;
        const char* theirs;
    } cases[] = {
        {{"--padding", "pkcs1"}, ""},
        {{"--hash", "sha1"}, "-pkeyopt rsa_padding_mode:oaep"},
        {{}, "-pkeyopt rsa_padding_mode:oaep -pkeyopt rsa_oaep_md:sha256"},
        {{"--hash", "sha512", "--mgf-hash", "sha1", "--label", "6c00"},
         "-pkeyopt rsa_padding_mode:oaep -pkeyopt rsa_oaep_md:sha512 -pkeyopt rsa_mgf1_md:sha1 -pkeyopt rsa_oaep_label:6c00"},
        {{"--hash", "sha3-256"}, "-pkeyopt rsa_padding_mode:oaep -pkeyopt rsa_oaep_md:sha3-256"},
    };
    ASSERT_TRUE(Shell("openssl genrsa -out key 2048 && openssl req -x509 -new -key key -subj /CN=a -out certificate"))
        << Get("log");
    PutFile(Path("short"), std::string("a short text\0\n", 14));
    for (const auto& test : cases) {
        SCOPED_TRACE(test.theirs);
        const auto with = [&](Words words) {
            words.insert(words.end(), test.ours.begin(), test.ours.end());
            return Tool(words);
        };
        EXPECT_EQ(with({"key", "encrypt", "@certificate", "@short", "-o", "@sealed"}).code, exitDone);
        EXPECT_TRUE(Shell("openssl pkeyutl -decrypt -inkey key -in sealed -out opened " + std::string(test.theirs))) << Get("log");
        EXPECT_EQ(Get("opened"), Get("short"));
        ASSERT_TRUE(Shell("openssl pkeyutl -encrypt -inkey key -in short -out sealed " + std::string(test.theirs))) << Get("log");
        EXPECT_EQ(with({"key", "decrypt", "@key", "@sealed"}).output, Get("short"));
    }
}

TEST_F(CryptotoolKeyUseOpenssl, CertificatesOfEveryKindGiveTheirKey)
{
    for (const char* const kind : {"rsa:1024", "rsa-pss -pkeyopt rsa_keygen_bits:1024", "ec -pkeyopt ec_paramgen_curve:P-384",
                                   "ec -pkeyopt ec_paramgen_curve:brainpoolP512r1", "ed25519", "ed448"}) {
        SCOPED_TRACE(kind);
        ASSERT_TRUE(Shell("openssl req -x509 -nodes -newkey " + std::string(kind) +
                          " -subj /CN=a -keyout key -out certificate && "
                          "openssl x509 -in certificate -pubkey -noout >public && "
                          "openssl x509 -in certificate -outform DER -out certificate.der"))
            << Get("log");
        for (const char* const file : {"@certificate", "@certificate.der"})
            EXPECT_EQ(Tool({"key", "public", file}).output, Get("public"));
        const bool isForPss = std::string_view(kind).starts_with("rsa-pss");
        const auto with = [&](Words words) {
            if (isForPss)
                words.emplace_back("--pss");
            return Tool(words);
        };
        EXPECT_EQ(with({"key", "sign", "@key", "@text", "-o", "@signature"}).code, exitDone);
        EXPECT_EQ(with({"key", "verify", "@certificate", "@signature", "@text"}).output, "OK\n");
        const ToolResult plain = Tool({"key", "verify", "@certificate", "@signature", "@text"});
        EXPECT_EQ(plain.error.find("the key is for RSASSA-PSS alone; --pss is needed") != std::string::npos, isForPss);
    }
    // One for X25519 is signed by another key.
    ASSERT_TRUE(Shell("openssl genpkey -algorithm x25519 -out own && openssl pkey -in own -pubout -out public && "
                      "openssl req -x509 -nodes -newkey ed25519 -subj /CN=ca -keyout cakey -out ca && "
                      "openssl req -new -key cakey -subj /CN=a -out request && "
                      "openssl x509 -req -in request -CA ca -CAkey cakey -force_pubkey public -out certificate"))
        << Get("log");
    ASSERT_EQ(Tool({"key", "gen", "x25519", "-o", "@peer"}).code, exitDone);
    EXPECT_EQ(Tool({"key", "agree", "@peer", "@certificate"}).output, Tool({"key", "agree", "@own", "@peer"}).output);
}

TEST_F(CryptotoolKeyUseOpenssl, WhatIsNoSupportedKeyIsNamed)
{
    const struct {
        const char* make; ///< the file "made"
        const char* reason;
    } cases[] = {
        {"openssl ecparam -name sect233k1 -genkey -noout -out key && openssl req -x509 -new -key key -subj /CN=a -out made",
         "it is not a valid key of a supported algorithm: Unsupported curve: 1.3.132.0.26\n"},
        {"openssl genpkey -algorithm DH -pkeyopt group:ffdhe2048 | openssl pkey -pubout -out made",
         "it is not a valid key of a supported algorithm: Unsupported algorithm: 1.2.840.113549.1.3.1\n"},
        {"ssh-keygen -q -t ed25519 -N '' -f made", "it is a private key in the format of OpenSSH; ssh-keygen -p -m PKCS8"},
        {"mv made.pub made", "it is a public key in the format of OpenSSH; ssh-keygen -e -m PKCS8"},
        {"openssl req -new -key key -subj /CN=a -out made",
         "PEM block 1 (CERTIFICATE REQUEST) is neither a key nor a certificate\n"},
        {"openssl genrsa -out key 1024 && openssl req -x509 -new -key key -subj /CN=a -out certificate && "
         "openssl pkcs12 -export -in certificate -inkey key -passout pass:x -out made",
         "it is PKCS#12 or CMS, from which no key is read\n"},
        {"openssl genrsa -traditional -aes128 -passout pass:x -out made",
         "PEM block 1 (RSA PRIVATE KEY): it is encrypted by its headers (RFC 1421), which is not supported\n"},
    };
    for (const auto& test : cases) {
        ASSERT_TRUE(Shell(test.make)) << test.make << Get("log");
        const ToolResult result = Tool({"key", "show", "@made"});
        EXPECT_EQ(result.code, exitRefused);
        EXPECT_TRUE(result.error.starts_with("cryptotool: " + Path("made") + ": " + test.reason)) << result.error;
        std::filesystem::remove(Path("made"));
    }
}

} // namespace
