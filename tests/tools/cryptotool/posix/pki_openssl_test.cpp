#include "tests/tools/cryptotool/pki_folder.h"

#include <cstdlib>

using namespace ccrypto;

// What the tool makes is judged by openssl, and what openssl makes by the tool.

namespace {

class CryptotoolPkiOpenssl : public PkiFolder {
protected:
    /// One or more commands of openssl, in the folder.
    static bool Shell(const std::string& commands)
    {
        const std::string whole = "cd '" + Path("") + "' && { " + commands + "; } >log 2>&1";
        return std::system(whole.c_str()) == 0;
    }
};

TEST_F(CryptotoolPkiOpenssl, OurObjectsAreAccepted)
{
    Put("report", "what was signed");
    Done({"ocsp", "request", "--issuer", "@sub.pem", "@me.pem", "-o", "@request"});
    Done({"ocsp", "respond", "--ca", "@sub.pem", "--crl", "@sub.crl", "--signer", "@responder.pem", "--key", "@responder.key",
          "--at", "2026-11-23T11:00:00Z", "@request", "-o", "@response"});
    Done({"cms", "sign", "--signer", "@me.pem", "--key", "@me.key", "--certs", "@sub.pem", "--at", "2026-11-23T12:00:00Z",
          "--signing-time", "--algorithm-protection", "@report", "-o", "@signed"});
    EXPECT_TRUE(Shell("cat root.crl sub.crl >both.crl && "
                      "openssl verify -x509_strict -attime 1795435200 -CAfile root.pem -untrusted sub.pem -crl_check_all -CRLfile "
                      "both.crl me.pem && "
                      "openssl req -verify -noout -in me.csr && "
                      "openssl crl -noout -CAfile sub.pem -in lost.crl && "
                      "openssl ocsp -attime 1795435200 -CAfile root.pem -issuer sub.pem -verify_other sub.pem -cert me.pem "
                      "-no_nonce -respin response && "
                      "openssl cms -verify -cades -attime 1795435200 -binary -inform DER -in signed -content report -CAfile "
                      "root.pem -purpose any && "
                      "certtool --p7-verify --inder --infile signed --load-data report --load-ca-certificate me.pem"))
        << Get("log");
    EXPECT_NE(Get("log").find("me.pem: good"), std::string::npos) << Get("log");
}

TEST_F(CryptotoolPkiOpenssl, TheirObjectsAreAccepted)
{
    Put("report", "what was signed");
    ASSERT_TRUE(
        Shell("openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj '/C=FI/O=Their/CN=a\\, b' -days 30 "
              "-keyout t.key "
              "-out t.pem -addext keyUsage=critical,digitalSignature,keyCertSign,cRLSign && "
              "openssl cms -sign -cades -binary -in report -signer t.pem -inkey t.key -outform DER -out t.p7s && "
              "openssl cms -sign -nodetach -stream -binary -in report -signer t.pem -inkey t.key -outform DER -out t.ber && "
              "openssl req -new -key t.key -subj /CN=x -addext subjectAltName=DNS:x.example -out t.csr && "
              "openssl ocsp -issuer t.pem -cert t.pem -reqout t.request"))
        << Get("log");
    EXPECT_EQ(Tool({"cert", "verify", "--trust", "@t.pem", "@t.pem"}).code, 0);
    EXPECT_EQ(Tool({"cms", "verify", "--cades", "--trust", "@t.pem", "--content", "@report", "@t.p7s"}).code, 0);
    const ToolResult streamed = Tool({"cms", "verify", "--trust", "@t.pem", "@t.ber"});
    EXPECT_EQ(streamed.code, 0) << streamed.output;
    EXPECT_EQ(Tool({"csr", "verify", "@t.csr"}).code, 0);
    EXPECT_NE(Tool({"csr", "show", "@t.csr"}).output.find("DNS:x.example"), std::string::npos);
    EXPECT_NE(Tool({"ocsp", "show", "@t.request"}).output.find("type                request"), std::string::npos);
    EXPECT_NE(Tool({"cert", "show", "@t.pem"}).output.find(R"(CN=a\, b, O=Their, C=FI)"), std::string::npos);
}

TEST_F(CryptotoolPkiOpenssl, StoresOfKeysAreAcceptedBothWays)
{
    Put("secret", "secret");
    Done({"p12", "export", "--key", "@me.key", "--name", "Me", "--iterations", "1000", "--new-password-file", "@secret", "@me.pem",
          "@sub.pem", "-o", "@me.p12"});
    EXPECT_TRUE(Shell("openssl pkcs12 -in me.p12 -passin file:secret -nodes -out all.pem && "
                      "openssl pkcs12 -export -inkey me.key -in me.pem -name Theirs -passout file:secret -out their.p12"))
        << Get("log");
    EXPECT_EQ(Get("all.pem").find("friendlyName: Me"), Get("all.pem").find("friendlyName"));
    EXPECT_NE(Get("all.pem").find("BEGIN PRIVATE KEY"), std::string::npos);

    const ToolResult closed = Tool({"p12", "show", "@their.p12"});
    EXPECT_NE(closed.output.find("verified            no"), std::string::npos) << closed.output;
    const ToolResult shown = Tool({"p12", "show", "--password-file", "@secret", "@their.p12"});
    EXPECT_NE(shown.output.find("friendlyName        Theirs"), std::string::npos) << shown.output;
    EXPECT_NE(shown.output.find("verified            yes"), std::string::npos) << shown.output;
    Done({"p12", "import", "--plain", "--password-file", "@secret", "@their.p12", "-o", "@back.pem"});
    EXPECT_TRUE(
        Shell("openssl pkey -in me.key -pubout -out 1.pub && openssl pkey -in back.pem -pubout -out 2.pub && cmp 1.pub 2.pub"))
        << Get("log");
    Put("secret", "wrong");
    EXPECT_EQ(Tool({"p12", "show", "--password-file", "@secret", "@their.p12"}).code, 1);
}

} // namespace
