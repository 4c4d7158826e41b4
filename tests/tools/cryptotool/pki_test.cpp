#include "tests/tools/cryptotool/pki_folder.h"

#include <tuple>

using namespace ccrypto;

namespace {

class CryptotoolPki : public PkiFolder {};

TEST_F(CryptotoolPki, ACertificateIsShownWhole)
{
    const std::string text = Tool({"cert", "show", "@me.pem"}).output;
    for (const char* const line : {
             "version             3\n",
             "serialNumber        1001\n",
             "signatureAlgorithm  ecdsa-with-SHA256\n",
             "issuer              CN=Example Sub CA, C=FI\n",
             "notBefore           2026-01-01 00:00:00Z\n",
             "notAfter            2030-01-01 00:00:00Z\n",
             "subject             CN=Signer, O=Example, C=FI\n",
             "key                 EC prime256v1\n",
             "  keyUsage (critical)\n    digitalSignature\n",
             "  extKeyUsage\n    emailProtection\n",
             "  subjectAltName\n    email:me@example.com\n    DNS:*.example.com\n    IP:192.0.2.1\n",
             "  certificatePolicies\n    1.2.246.1\n",
         })
        EXPECT_NE(text.find(line), std::string::npos) << line << text;
    Put("two.pem", Get("sub.pem") + Get("root.pem"));
    const std::string two = Tool({"cert", "show", "@two.pem"}).output;
    EXPECT_EQ(two.find("certificate 1 of 2\n"), 0U) << two;
    EXPECT_NE(two.find("      CA, at most 0 intermediates\n"), std::string::npos) << two;
    EXPECT_NE(two.find("\ncertificate 2 of 2\n"), std::string::npos) << two;
    const std::string json = Tool({"cert", "show", "--json", "@me.pem"}).output;
    EXPECT_NE(json.find(R"({"oid":"2.5.29.15","name":"keyUsage","critical":true,"values":["digitalSignature"]})"),
              std::string::npos)
        << json;
}

TEST_F(CryptotoolPki, HostileNamesDoNotReachTheTerminal)
{
    Done({"cert", "build", "@me.key", "--subject", "CN=ä12345678", "--not-before", "2026-01-01T00:00:00Z", "--outform", "der", "-o",
          "@hostile"});
    std::string der = Get("hostile");
    for (std::size_t at = der.find("12345678"); at != std::string::npos; at = der.find("12345678"))
        der.replace(at, 8,
                    "\x1b[2J\xe2\x80\xae"
                    "x");
    Put("hostile", der);
    for (const Words& words : {Words{"cert", "show", "@hostile"},
                               {"cert", "show", "--json", "@hostile"},
                               {"cert", "verify", "--trust", "@hostile", "@hostile"},
                               {"cert", "verify", "--json", "@hostile"}}) {
        const ToolResult result = Tool(words);
        EXPECT_NE(result.output, "");
        EXPECT_EQ((result.output + result.error).find('\x1b'), std::string::npos) << result.output;
        EXPECT_EQ((result.output + result.error).find("\xe2\x80\xae"), std::string::npos) << result.output;
    }
}

TEST_F(CryptotoolPki, NamesAreReadAsTheyArePrinted)
{
    const struct {
        const char* text;
        const char* printed; ///< null: the same
    } cases[] = {
        {"CN=Signer, O=Example, C=FI", nullptr},
        {"cn=Signer,o=Example,c=FI", "CN=Signer, O=Example, C=FI"},
        {R"(CN=a\,b\+c\"d\\e\<f\>g\;h)", nullptr},
        {R"(CN=\20 a\20 )", R"(CN=\  a\ )"},
        {"CN=  a b  , C=FI", "CN=a b, C=FI"},
        {R"(CN=\c3\a4, O=ä)", "CN=ä, O=ä"},
        {"2.5.4.65=x, 1.2.3.4=y", "pseudonym=x, 1.2.3.4=y"},
        {R"(emailAddress=a@b.fi, CN=x\"}\,SET{y)", nullptr},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.text);
        const ToolResult made = Tool({"csr", "build", "@me.key", "--subject", test.text, "-o", "@named.csr"});
        EXPECT_EQ(made.code, exitDone) << made.error;
        const std::string shown = Tool({"csr", "show", "@named.csr"}).output;
        const std::string wanted = "subject             " + std::string(test.printed != nullptr ? test.printed : test.text) + "\n";
        EXPECT_NE(shown.find(wanted), std::string::npos) << shown;
    }
    for (const char* const text : {"Signer", "XY=a", "CN=a, ", "CN=a\\", "CN=ä@b"})
        EXPECT_NE(Tool({"csr", "build", "@me.key", "--subject", text}).code, exitDone) << text;
    for (const auto& [option, value, reason] : {std::tuple("--subject", "CN=", "nothing for commonName"),
                                                {"--subject", "1.2.3=", "nothing for 1.2.3"},
                                                {"--san", "DNS:a b", "not DNS:a b"},
                                                {"--san", "email:ä", "not email:ä"}}) {
        const ToolResult refused = Tool({"csr", "build", "@me.key", "--subject", "CN=a", option, value});
        EXPECT_EQ(refused.code, exitUsage);
        EXPECT_NE(refused.error.find(reason), std::string::npos) << refused.error;
    }
    const std::string joined = "CN=a+serialNumber=5, C=FI";
    Done({"csr", "build", "@me.key", "--subject", joined, "-o", "@joined.csr"});
    const std::string shown = Tool({"csr", "show", "@joined.csr"}).output;
    EXPECT_TRUE(shown.find("CN=a+serialNumber=5, C=FI\n") != std::string::npos ||
                shown.find("serialNumber=5+CN=a, C=FI\n") != std::string::npos)
        << shown;
}

TEST_F(CryptotoolPki, ARequestCarriesWishesThatTheIssuerGrantsOrNot)
{
    Done({"csr", "build", "@me.key", "--subject", "CN=Wish", "--san", "DNS:wish.example", "--key-usage", "keyAgreement", "-o",
          "@wish.csr"});
    EXPECT_EQ(Tool({"csr", "verify", "@wish.csr"}).output, "OK\n");
    const Words issue = {"cert",     "build",       "@wish.csr",       "--ca", "@sub.pem", "--ca-key",
                         "@sub.key", "--key-usage", "digitalSignature"};
    EXPECT_EQ(Tool({"cert", "show", "-"}, Tool(issue).output).output.find("wish.example"), std::string::npos);
    const std::string granted = Tool({"cert", "show", "-"}, Tool(With(issue, {"--copy-extensions"})).output).output;
    EXPECT_NE(granted.find("DNS:wish.example"), std::string::npos) << granted;
    EXPECT_NE(granted.find("    digitalSignature\n"), std::string::npos) << granted;
    EXPECT_EQ(granted.find("keyAgreement"), std::string::npos) << granted;

    Done({"csr", "build", "@me.key", "--subject", "CN=Wish", "--outform", "der", "-o", "@forged.csr"});
    std::string der = Get("forged.csr");
    der.replace(der.find("Wish"), 4, "Fish");
    Put("forged.csr", der);
    const ToolResult verified = Tool({"csr", "verify", "@forged.csr"});
    EXPECT_EQ(verified.output, "FAILED\n");
    EXPECT_EQ(Tool({"csr", "verify", "--json", "@forged.csr"}).output, "{\"verified\":false,\n\"subject\":\"CN=Fish\"}\n");
    EXPECT_EQ(verified.code, exitRefused);
    const ToolResult refused = Tool({"cert", "build", "@forged.csr", "--ca", "@sub.pem", "--ca-key", "@sub.key", "-o", "@none"});
    EXPECT_EQ(refused.code, exitRefused);
    EXPECT_EQ(Get("none"), "");
    EXPECT_EQ(Tool({"cert", "build", "@me.csr", "--ca", "@sub.pem", "--ca-key", "@root.key"}).error,
              "cryptotool: " + Path("root.key") + ": not the key of " + Path("sub.pem") + "\n");
}

TEST_F(CryptotoolPki, ListsAreSearchedAndContinued)
{
    const ToolResult listed = Tool({"crl", "find", "@lost.crl", "10:01"});
    EXPECT_EQ(listed.code, exitRefused);
    EXPECT_EQ(listed.output, "listed              yes\n"
                             "serialNumber        1001\n"
                             "revocationDate      2026-11-02 08:00:00Z\n"
                             "reason              keyCompromise\n");
    EXPECT_EQ(Tool({"crl", "find", "@lost.crl", "--cert", "@me.pem"}).output, listed.output);
    const ToolResult absent = Tool({"crl", "find", "@lost.crl", "1002"});
    EXPECT_EQ(absent.code, exitDone);
    EXPECT_EQ(absent.output, "listed              no\n");
    List("sub", "more.crl", {"--previous", "@lost.crl", "--number", "9", "--revoke", "80", "--revoke", "0abc,superseded"});
    const std::string shown = Tool({"crl", "show", "@more.crl"}).output;
    EXPECT_NE(shown.find("  cRLNumber\n    9\n"), std::string::npos) << shown;
    EXPECT_NE(shown.find("entries             3\n"), std::string::npos) << shown;
    EXPECT_NE(shown.find("    serialNumber        80\n    revocationDate      2026-11-01 00:00:00Z\n  entry 2\n"),
              std::string::npos)
        << shown;
    EXPECT_NE(shown.find("    reason              superseded\n"), std::string::npos) << shown;
    EXPECT_EQ(Tool({"crl", "show", "--entries", "1", "@more.crl"}).output.find("entry 1"), std::string::npos);
    List("sub", "next.crl", {"--previous", "@more.crl"});
    EXPECT_NE(Tool({"crl", "show", "@next.crl"}).output.find("  cRLNumber\n    10\n"), std::string::npos);
    EXPECT_EQ(Tool({"crl", "build", "--ca", "@root.pem", "--ca-key", "@root.key", "--previous", "@more.crl"}).code, exitRefused);
    for (const char* const text : {"", "xyz", "01,nonsense", "01,superseded,yesterday"})
        EXPECT_EQ(Tool({"crl", "build", "--ca", "@sub.pem", "--ca-key", "@sub.key", "--revoke", text}).code, exitUsage) << text;
    const std::string why = Tool({"crl", "build", "--ca", "@sub.pem", "--ca-key", "@sub.key", "--revoke", "01,nonsense"}).error;
    EXPECT_NE(why.find("reasons are unspecified, keyCompromise, cACompromise,"), std::string::npos) << why;
    EXPECT_NE(why.find("removeFromCRL, privilegeWithdrawn, aACompromise"), std::string::npos) << why;
}

TEST_F(CryptotoolPki, AResponderAnswersFromAList)
{
    Done({"ocsp", "request", "--issuer", "@sub.pem", "@me.pem", "-o", "@request"});
    Done({"ocsp", "request", "--issuer", "@sub.pem", "@me.pem", "-o", "@other"});
    const auto respond = [](const char* list, const char* file, const Words& more) {
        Done(With({"ocsp", "respond", "--ca", "@sub.pem", "--crl", list, "--at", "2026-11-23T11:00:00Z", "@request", "-o", file},
                  more));
    };
    const Words delegated = {"--signer", "@responder.pem", "--key", "@responder.key"};
    respond("@sub.crl", "@good", delegated);
    respond("@sub.crl", "@byissuer", {"--key", "@sub.key", "--by-name"});
    respond("@lost.crl", "@revoked", delegated);
    std::string malformed = Get("request");
    malformed[malformed.find("\x04\x22\x04\x20") + 2] = '\x0C';
    Put("malformed", malformed);
    const Words start = {"ocsp", "verify", "--issuer", "@sub.pem", "--at", "2026-11-23T12:00:00Z"};
    const struct {
        const char* name;
        Words words;
        int code;
        const char* start;
    } cases[] = {
        {"good", {"--cert", "@me.pem", "@good"}, 0, "GOOD  "},
        {"by its serial number", {"--serial", "1001", "@good"}, 0, "GOOD  "},
        {"signed by the issuer", {"--cert", "@me.pem", "@byissuer"}, 0, "GOOD  "},
        {"revoked", {"--cert", "@me.pem", "@revoked"}, 1, "REVOKED  keyCompromise since 2026-11-02 08:00:00Z"},
        {"its own request", {"--cert", "@me.pem", "--request", "@request", "--require-nonce", "@good"}, 0, "GOOD"},
        {"another request", {"--cert", "@me.pem", "--request", "@other", "@good"}, 1, "BAD  wrong-nonce"},
        {"a request with a malformed nonce", {"--cert", "@me.pem", "--request", "@malformed", "@good"}, 1, ""},
        {"another certificate", {"--serial", "1002", "@good"}, 1, "BAD  wrong-certificate"},
        {"another issuer", {"--issuer", "@root.pem", "--cert", "@me.pem", "@good"}, 1, "BAD  wrong-"},
        {"a month later", {"--cert", "@me.pem", "--at", "2026-12-24T12:00:00Z", "@good"}, 3, "STALE  "},
        {"a request", {"--cert", "@me.pem", "@request"}, 1, "BAD  malformed"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        const ToolResult result = Tool(With(start, test.words));
        EXPECT_EQ(result.code, test.code) << result.output << result.error;
        EXPECT_EQ(result.output.find(test.start), 0U) << result.output;
        EXPECT_EQ(result.output.empty(), *test.start == '\0');
    }
    for (const auto& [words, warning] :
         {std::pair<Words, const char*>{{"--key", "@sub.key", "--at", "2026-11-23T11:00:00Z"}, ""},
          {{"--key", "@sub.key", "--at", "2026-12-24T11:00:00Z"}, "cryptotool: the response: warning: stale: nextUpdate was "},
          {{"--signer", "@me.pem", "--key", "@me.key", "--at", "2026-11-23T11:00:00Z"},
           "cryptotool: the response: warning: wrong-responder: "}}) {
        const ToolResult made =
            Tool(With({"ocsp", "respond", "--ca", "@sub.pem", "--crl", "@sub.crl", "@request", "-o", "@doubtful"}, words));
        EXPECT_EQ(made.code, exitDone);
        EXPECT_EQ(made.error.substr(0, std::string(warning).size()), warning);
        EXPECT_EQ(made.error.empty(), *warning == '\0') << made.error;
    }
    EXPECT_EQ(Tool(With(start, {"--cert", "@me.pem", "--require-nonce", "@good"})).code, exitUsage);
    EXPECT_EQ(
        Tool(With(start, {"--json", "--cert", "@me.pem", "@revoked"})).output.find("{\"status\":\"revoked\",\n\"failure\":null,\n"),
        0U);
    EXPECT_EQ(Verify({"--ocsp", "@good", "--status", "leaf", "@me.pem"}).code, 0);
    EXPECT_EQ(Verify({"--ocsp", "@revoked", "--status", "leaf", "@me.pem"}).code, 1);
    const std::string shown = Tool({"ocsp", "show", "@revoked"}).output;
    EXPECT_NE(shown.find("    status              revoked\n"), std::string::npos) << shown;
    EXPECT_NE(Tool({"ocsp", "show", "@request"}).output.find("type                request\nnonce               "),
              std::string::npos);
}

TEST_F(CryptotoolPki, BadInputIsExplainedInOneLine)
{
    Put("empty", "");
    Put("wrong", std::string("\x30\x03\x02\x01\x00", 5));
    Put("bytes", "\x81\x82");
    Put("secret", "secret");
    const struct {
        Words words;
        int code;
        const char* file;
        const char* reason;
    } cases[] = {
        {{"cert", "show", "@empty"}, 1, "empty", "it is empty"},
        {{"cert", "show", "@bytes"}, 1, "bytes", "it is not a certificate: Loading failed!"},
        {{"crl", "show", "@me.pem"}, 1, "me.pem", "it holds no revocation list, but CERTIFICATE"},
        {{"ocsp", "show", "@wrong"},
         1,
         "wrong",
         "it is not an OCSP request or response: ParseNode() failed: SEQUENCE: the data holds INTEGER (item 1)"},
        {{"cms", "encrypt", "--recipient", "@me.pem", "@wrong"},
         1,
         "me.pem",
         "its key is not RSA; messages are encrypted for RSA keys only"},
        {{"cms", "verify", "--trust", "@root.pem", "@empty"}, 1, "empty", "warning: it is empty"},
        {{"p12", "export", "--new-password-file", "@secret", "@me.key"}, 1, "me.key", "it holds no certificate, but PRIVATE KEY"},
        {{"cert", "verify", "--trust", "@me.pem", "--ocsp", "@me.key", "--at", "2026-11-23T12:00:00Z", "@me.pem"},
         0,
         "me.key",
         "warning: it holds no message, but PRIVATE KEY"},
        {{"ocsp", "respond", "--ca", "@sub.pem", "--key", "@sub.key", "--crl", "@sub.crl", "@wrong", "-o", "@answer"},
         0,
         "wrong",
         "warning: answered by malformedRequest"},
    };
    for (const auto& test : cases) {
        const ToolResult result = Tool(test.words);
        EXPECT_EQ(result.code, test.code) << result.error;
        EXPECT_EQ(result.error, "cryptotool: " + Path(test.file) + ": " + test.reason + "\n");
    }
    for (const char* const noun : {"cms", "ocsp"}) {
        const Words trust =
            noun == std::string("cms") ? Words{"--trust", "@root.pem"} : Words{"--issuer", "@sub.pem", "--serial", "1"};
        const std::string verdict = Tool(With(With({noun, "verify"}, trust), {"@me.key"})).output;
        EXPECT_NE(verdict.find("malformed: it is not a"), std::string::npos) << verdict;
    }
}

TEST_F(CryptotoolPki, NoFileIsReadInPartInSilence)
{
    for (const char* const kind : {"pem", "csr"})
        Put("both." + std::string(kind), Get("me." + std::string(kind)) + Get("responder." + std::string(kind)));
    Put("chain.pem", Get("me.pem") + Get("sub.pem"));
    Put("both.crl", Get("sub.crl") + Get("lost.crl"));
    Put("text", "what was signed");
    const Words sign = {"cms", "sign", "--key", "@me.key", "--at", "2026-11-23T12:00:00Z", "@text", "-o", "@out"};
    Done(With(sign, {"--signer", "@me.pem", "--outform", "pem"}));
    Put("both.p7s", Get("out") + Get("out"));
    Done({"ocsp", "request", "--issuer", "@sub.pem", "@me.pem", "-o", "@request"});
    const struct {
        Words words;
        const char* file;
        const char* reason;
    } refused[] = {
        {{"crl", "find", "@both.crl", "1001"}, "both.crl", "2 revocation lists"},
        {{"crl", "find", "@lost.crl", "--cert", "@both.pem"}, "both.pem", "2 certificates"},
        {{"crl", "verify", "--issuer", "@sub.pem", "@both.crl"}, "both.crl", "2 revocation lists"},
        {{"crl", "build", "--ca", "@chain.pem", "--ca-key", "@me.key"}, "chain.pem", "2 certificates"},
        {{"csr", "verify", "@both.csr"}, "both.csr", "2 certificate requests"},
        {{"ocsp", "respond", "--ca", "@sub.pem", "--key", "@sub.key", "--crl", "@both.crl", "@request", "-o", "@out"},
         "both.crl",
         "2 revocation lists"},
        {{"cms", "show", "@both.p7s"}, "both.p7s", "2 messages"},
        {{"cms", "verify", "--content", "@text", "@both.p7s"}, "both.p7s", "2 messages"},
        {With(sign, {"--signer", "@me.pem", "--revocation", "pdf", "--crl", "@both.crl"}), "both.crl", "2 revocation lists"},
    };
    for (const auto& test : refused) {
        const ToolResult result = Tool(test.words);
        EXPECT_EQ(result.code, exitRefused);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.error, "cryptotool: " + Path(test.file) + ": it holds " + test.reason + "; one is wanted\n");
    }

    Done({"ocsp", "request", "--issuer", "@sub.pem", "@both.pem", "-o", "@request"});
    Done(With(sign, {"--signer", "@chain.pem"}));
    const struct {
        Words words;
        const char* first;
        const char* second;
    } shown[] = {
        {{"crl", "show", "@both.crl"}, "revocation list 1 of 2\n", "\nrevocation list 2 of 2\n"},
        {{"csr", "show", "@both.csr"}, "certificate request 1 of 2\n", "\ncertificate request 2 of 2\n"},
        {{"crl", "show", "--json", "@both.crl"}, "{\"revocationLists\":[{", "\"serialNumber\":\"1001\""},
        {{"csr", "show", "--json", "@both.csr"}, "{\"certificateRequests\":[{", "CN=Responder"},
        {{"ocsp", "show", "@request"}, "", "serialNumber        1001\n  request 1\n"},
        {With({"cms", "verify", "--trust", "@root.pem", "--at", "2026-11-23T12:00:00Z"}, {"--content", "@text", "@out"}), "VALID",
         "CN=Example Sub CA"},
    };
    for (const auto& test : shown) {
        const ToolResult result = Tool(test.words);
        EXPECT_EQ(result.code, exitDone) << result.error;
        EXPECT_EQ(result.output.find(test.first), 0U) << result.output;
        EXPECT_NE(result.output.find(test.second), std::string::npos) << result.output;
    }
}

TEST_F(CryptotoolPki, MessagesAreSignedAndVerified)
{
    Put("report", "what was signed");
    Put("altered", "what was Signed");
    const Words sign = {"cms",     "sign",    "--signer", "@me.pem", "--key",
                        "@me.key", "--certs", "@sub.pem", "--at",    "2026-11-23T12:00:00Z"};
    Done(With(sign, {"--signing-time", "@report", "-o", "@detached"}));
    Done(With(sign, {"--embed", "--crl", "@sub.crl", "--revocation", "pdf", "--outform", "pem", "@report", "-o", "@embedded"}));
    EXPECT_EQ(Tool(With(sign, {"--crl", "@sub.crl", "--crl", "@root.crl", "--revocation", "pdf", "@report"})).code, exitUsage);
    const Words verify = {"cms", "verify", "--trust", "@root.pem", "--at", "2026-11-23T12:00:00Z"};
    const ToolResult detached = Tool(With(verify, {"--content", "@report", "@detached"}));
    EXPECT_EQ(detached.code, 0) << detached.output << detached.error;
    EXPECT_EQ(detached.output.find("VALID  CN=Signer, O=Example, C=FI; SHA-256, "), 0U) << detached.output;
    EXPECT_NE(detached.output.find("; 2026-11-23 12:00:00Z by its own word\n"), std::string::npos) << detached.output;
    const struct {
        const char* name;
        Words words;
        int code;
        const char* start;
    } cases[] = {
        {"embedded, with its proof", {"--status", "leaf", "--cades", "@embedded"}, 0, "VALID"},
        {"without a proof", {"--status", "leaf", "--content", "@report", "@detached"}, 3, "UNDECIDED  status-unknown"},
        {"revoked", {"--crl", "@lost.crl", "--status", "leaf", "--content", "@report", "@detached"}, 1, "INVALID  revoked"},
        {"altered", {"--content", "@altered", "@detached"}, 1, "INVALID  bad-signature"},
        {"without the content", {"@detached"}, 1, "INVALID  malformed: The content is detached; --content was not given"},
        {"no message", {"@report"}, 1, "INVALID  malformed"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        const ToolResult result = Tool(With(verify, test.words));
        EXPECT_EQ(result.code, test.code) << result.output << result.error;
        EXPECT_EQ(result.output.find(test.start), 0U) << result.output;
    }
    Done(With(verify, {"--extract", "@content", "@embedded", "-o", "@verdict"}));
    EXPECT_EQ(Tool(With(verify, {"--extract", "@same", "@embedded", "-o", "@same"})).code, exitUsage);
    EXPECT_EQ(Tool(With(verify, {"--extract", "-", "@embedded"})).code, exitUsage);
    EXPECT_EQ(Get("content"), "what was signed");
    EXPECT_EQ(Tool(With(verify, {"--extract", "@invalid", "--trust", "@me.pem", "--at", "2031-01-01T00:00:00Z", "@embedded"})).code,
              1);
    EXPECT_EQ(Get("invalid"), "");
    EXPECT_NE(Tool({"cms", "show", "@embedded"}).output.find("    serialNumber        1001\n"), std::string::npos);
}

TEST_F(CryptotoolPki, RecipientsOpenWhatWasEncryptedForThem)
{
    Put("letter", "not for everyone");
    for (const char* const name : {"one", "two"}) {
        const std::string at = "@" + std::string(name);
        Done({"key", "gen", "rsa", "--bits", "1024", "-o", at + ".key"});
        Done({"cert", "build", at + ".key", "--subject", "CN=" + std::string(name), "-o", at + ".pem"});
    }
    Put("recipients.pem", Get("one.pem") + Get("two.pem"));
    const Words encrypt = {"cms", "encrypt", "--recipient", "@recipients.pem", "@letter", "-o", "@sealed"};
    for (const Words& more : {Words{}, {"--oaep", "sha256"}, {"--cipher", "aes-128-cbc", "--outform", "pem"}}) {
        Done(With(encrypt, more));
        EXPECT_EQ(Get("sealed").find("not for everyone"), std::string::npos);
        for (const char* const name : {"@one", "@two"})
            EXPECT_EQ(
                Tool({"cms", "decrypt", "--recipient", name + std::string(".pem"), "--key", name + std::string(".key"), "@sealed"})
                    .output,
                "not for everyone");
        const ToolResult other = Tool({"cms", "decrypt", "--recipient", "@me.pem", "--key", "@me.key", "@sealed", "-o", "@opened"});
        EXPECT_EQ(other.code, exitRefused);
        EXPECT_EQ(Get("opened"), "");
    }
    // For keys that do not encrypt.
    EXPECT_EQ(Tool({"cms", "encrypt", "--recipient", "@me.pem", "@letter"}).code, exitRefused);
    EXPECT_EQ(Tool({"cms", "encrypt", "@letter"}).code, exitUsage);
}

TEST_F(CryptotoolPki, ASignatureThatFailsLeavesNoFile)
{
    Put("report", "what was signed");
    const struct {
        const char* signer;
        const char* key;
        const char* at;
    } cases[] = {
        {"@me.pem", "@me.key", "2031-01-01T00:00:00Z"},
        {"@me.pem", "@sub.key", "2026-11-23T12:00:00Z"},
        {"@sub.pem", "@sub.key", "2026-11-23T12:00:00Z"}, // for certificates and lists alone
        {"@me.pem", "@me.pem", "2026-11-23T12:00:00Z"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.key);
        const ToolResult result =
            Tool({"cms", "sign", "--signer", test.signer, "--key", test.key, "--at", test.at, "@report", "-o", "@unsigned"});
        EXPECT_EQ(result.code, exitRefused);
        EXPECT_NE(result.error, "");
        EXPECT_EQ(Get("unsigned"), "");
    }
}

} // namespace
