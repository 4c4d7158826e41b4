#include "tests/tools/cryptotool/pki_folder.h"

using namespace ccrypto;

namespace {

class CryptotoolCrlVerify : public PkiFolder {};

TEST_F(CryptotoolCrlVerify, TheExitCodeAndTheFirstLineSayHowItEnded)
{
    const Words whole = {"--trust", "@root.pem", "--untrusted", "@sub.pem"};
    // The same name with another key, and the same name and key without cRLSign.
    Done({"key", "gen", "prime256v1", "-o", "@other.key"});
    Issue("other", "CN=Example Sub CA, C=FI", "root", {"--is-ca"});
    Put("namesake.key", Get("sub.key"));
    Issue("namesake", "CN=Example Sub CA, C=FI", "root", {"--is-ca", "--key-usage", "keyCertSign"});
    // Signed by a key that only its own word makes the issuer's.
    Done({"cert", "build", "@other.key", "--subject", "CN=Example Sub CA, C=FI", "--is-ca", "--not-before", "2026-01-01T00:00:00Z",
          "--not-after", "2036-01-01T00:00:00Z", "-o", "@self.pem"});
    Done({"crl", "build", "--ca", "@self.pem", "--ca-key", "@other.key", "--this-update", "2026-11-01T00:00:00Z", "--next-update",
          "2026-12-01T00:00:00Z", "-o", "@self.crl"});
    List("sub", "critical.crl", {"--extension", "critical,1.2.3=#0500"});
    // An authority whose key is weak.
    Done({"key", "gen", "rsa", "--bits", "1024", "-o", "@weak.key"});
    Done({"cert", "build", "@weak.key", "--subject", "CN=Weak", "--is-ca", "-o", "@weak.pem"});
    List("weak", "weak.crl", {});
    // DER with one bit of the signature changed, with a length that DER writes shorter, and without its second half.
    List("sub", "sub.der", {"--outform", "der"});
    std::string der = Get("sub.der");
    Put("cut.crl", der.substr(0, der.size() / 2));
    ASSERT_EQ(der.substr(0, 2), "\x30\x81");
    Put("long.crl", std::string("\x30\x82\0", 3) + der.substr(2));
    der.back() = static_cast<char>(der.back() ^ 1);
    Put("flipped.crl", der);
    const struct {
        const char* name;
        Words words;
        int code;
        const char* firstLine;
    } cases[] = {
        {"a path", With(whole, {"@sub.crl"}), 0, "VALID  CRL 7 of CN=Example Sub CA, C=FI, until 2026-12-01 00:00:00Z\n  0  CN=Ex"},
        {"of the anchor",
         {"--trust", "@root.pem", "@root.crl"},
         0,
         "VALID  CRL 3 of CN=Example Root, C=FI, until 2026-12-01 00:00:00Z\n  0  "},
        {"the issuer alone", {"--issuer", "@sub.pem", "@sub.crl"}, 0, "VALID  CRL 7 of CN=Example Sub CA, C=FI, until"},
        {"the issuer with a path", With(whole, {"--issuer", "@sub.pem", "@sub.crl"}), 0, "VALID  CRL 7 of"},
        {"the issuer without its path", {"--trust", "@me.pem", "--issuer", "@sub.pem", "@sub.crl"}, 1, "INVALID  no-path"},
        {"no issuer", {"--trust", "@root.pem", "@sub.crl"}, 1, "INVALID  no-path: there is no certificate of the list's issuer\n"},
        {"another issuer",
         {"--issuer", "@root.pem", "@sub.crl"},
         1,
         "INVALID  no-path: there is no certificate of the list's issuer\n"},
        {"another key",
         {"--issuer", "@other.pem", "@sub.crl"},
         1,
         "INVALID  bad-signature: the key of the list's issuer did not sign it\n"},
        {"another key before the right one",
         {"--trust", "@root.pem", "--untrusted", "@other.pem", "--untrusted", "@sub.pem", "@sub.crl"},
         0,
         "VALID"},
        {"a signer whom nobody certified", With(whole, {"--untrusted", "@self.pem", "@self.crl"}), 1, "INVALID  "},
        {"which is taken as it is", {"--issuer", "@self.pem", "@self.crl"}, 0, "VALID"},
        {"a weak key", {"--issuer", "@weak.pem", "@weak.crl"}, 1, "INVALID  weak-algorithm: "},
        {"that is allowed", {"--allow-weak", "--issuer", "@weak.pem", "@weak.crl"}, 0, "VALID"},
        {"another signature", With(whole, {"@flipped.crl"}), 1, "INVALID  bad-signature: "},
        {"not DER", With(whole, {"@long.crl"}), 1, "INVALID  not-der: "},
        {"no signer of lists", {"--issuer", "@namesake.pem", "@sub.crl"}, 1, "INVALID  key-usage: cRLSign is missing\n"},
        {"a critical extension", With(whole, {"@critical.crl"}), 1,
         "INVALID  critical-extension: a critical extension that is not processed: 1.2.3\n"},
        {"the issuer expired", With(whole, {"--clock-skew", "999999999", "--at", "2030-01-01T00:00:01Z", "@sub.crl"}), 1,
         "INVALID  expired"},
        {"too early", With(whole, {"--at", "2026-10-31T23:54:59Z", "@sub.crl"}), 1,
         "INVALID  not-yet-valid: this update is 2026-11-01"},
        {"within the skew before", With(whole, {"--at", "2026-10-31T23:55:00Z", "@sub.crl"}), 0, "VALID"},
        {"within the skew after", With(whole, {"--at", "2026-12-01T00:05:00Z", "@sub.crl"}), 0, "VALID"},
        {"too late", With(whole, {"--at", "2026-12-01T00:05:01Z", "@sub.crl"}), 3,
         "UNDECIDED  status-stale: next update was 2026-12-01"},
        {"half a list", With(whole, {"@cut.crl"}), 1, "INVALID  malformed: "},
        {"a certificate", With(whole, {"@sub.pem"}), 1, "INVALID  malformed: "},
        {"a list that is missing", With(whole, {"@missing"}), 1, ""},
        {"nobody to verify with", {"@sub.crl"}, 2, ""},
        {"candidates without an anchor", {"--issuer", "@sub.pem", "--untrusted", "@sub.pem", "@sub.crl"}, 2, ""},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        const ToolResult result = Tool(With({"crl", "verify", "--at", "2026-11-23T12:00:00Z"}, test.words));
        EXPECT_EQ(result.code, test.code) << result.output << result.error;
        EXPECT_EQ(result.output.substr(0, std::string_view(test.firstLine).size()), test.firstLine) << result.output;
        EXPECT_EQ(result.output.empty(), std::string_view(test.firstLine).empty());
    }
}

TEST_F(CryptotoolCrlVerify, JsonHasItsMembersInOrder)
{
    EXPECT_EQ(Tool({"crl", "verify", "--json", "--issuer", "@sub.pem", "--at", "2026-12-24T12:00:00Z", "@lost.crl"}).output,
              "{\"verdict\":\"undecided\",\n\"reason\":\"status-stale\",\n\"detail\":\"next update was 2026-12-01 00:00:00Z\",\n"
              "\"at\":\"2026-12-24T12:00:00Z\",\n\"issuer\":\"CN=Example Sub CA, C=FI\",\n\"number\":\"8\",\n"
              "\"thisUpdate\":\"2026-11-01T00:00:00Z\",\n\"nextUpdate\":\"2026-12-01T00:00:00Z\",\n\"entries\":1,\n\"path\":[]}\n");
}

} // namespace
