#include "tests/tools/cryptotool/pki_folder.h"

#include <regex>

using namespace ccrypto;

namespace {

class CryptotoolCertVerify : public PkiFolder {};

TEST_F(CryptotoolCertVerify, TheExitCodeAndTheFirstLineSayHowItEnded)
{
    const struct {
        const char* name;
        Words words;
        int code;
        const char* firstLine;
    } cases[] = {
        {"without status", {"@me.pem"}, 0, "VALID"},
        {"with lists", {"--crl", "@root.crl", "--crl", "@sub.crl", "@me.pem"}, 0, "VALID"},
        {"revoked",
         {"--crl", "@root.crl", "--crl", "@lost.crl", "@me.pem"},
         1,
         "INVALID  revoked, certificate 0: keyCompromise since 2026-11-02 08:00:00Z"},
        {"one list is missing", {"--crl", "@sub.crl", "@me.pem"}, 3, "UNDECIDED  status-unknown, certificate 1"},
        {"and is not needed", {"--crl", "@sub.crl", "--status", "leaf", "@me.pem"}, 0, "VALID"},
        {"nothing is given for the status that is asked for",
         {"--status", "leaf", "@me.pem"},
         3,
         "UNDECIDED  status-unknown, certificate 0"},
        {"lists of last month",
         {"--crl", "@root.crl", "--crl", "@sub.crl", "--at", "2026-12-24T00:00:00Z", "@me.pem"},
         3,
         "UNDECIDED  status-stale, certificate"},
        {"at its last second", {"--at", "2030-01-01T00:00:00Z", "@me.pem"}, 0, "VALID"},
        {"a fraction after it", {"--at", "2030-01-01T00:00:00.00001Z", "@me.pem"}, 1, "INVALID  expired, certificate"},
        {"a fraction before its first second",
         {"--at", "2025-12-31T23:59:59.99999Z", "@me.pem"},
         1,
         "INVALID  not-yet-valid, certificate"},
        {"a purpose", {"--eku", "EMAILprotection", "@me.pem"}, 0, "VALID"},
        {"a purpose by its number", {"--eku", "1.3.6.1.5.5.7.3.4", "@me.pem"}, 0, "VALID"},
        {"another purpose",
         {"--eku", "emailProtection", "--eku", "serverAuth", "@me.pem"},
         1,
         "INVALID  extended-key-usage, certificate 0"},
        {"a key usage", {"--key-usage", "digitalSignature", "@me.pem"}, 0, "VALID"},
        {"another key usage",
         {"--key-usage", "digitalSignature", "--key-usage", "contentCommitment", "@me.pem"},
         1,
         "INVALID  key-usage, certificate 0: nonRepudiation is missing\n"},
        {"a host", {"--host", "www.example.com", "@me.pem"}, 0, "VALID"},
        {"another host", {"--host", "example.com", "@me.pem"}, 1, "INVALID  name, certificate 0"},
        {"an address", {"--ip", "192.0.2.1", "@me.pem"}, 0, "VALID"},
        {"an address that is none", {"--ip", "1.2.3", "@me.pem"}, 2, ""},
        {"another address", {"--ip", "192.0.2.2", "@me.pem"}, 1, "INVALID  name, certificate 0"},
        {"a mailbox", {"--email", "me@EXAMPLE.com", "@me.pem"}, 0, "VALID"},
        {"another mailbox", {"--email", "you@example.com", "@me.pem"}, 1, "INVALID  name, certificate 0"},
        {"a depth", {"--max-depth", "1", "@me.pem"}, 0, "VALID"},
        {"too small a depth", {"--max-depth", "0", "@me.pem"}, 1, "INVALID  path-length, certificate"},
        {"an explicit policy that no authority has",
         {"--explicit-policy", "--policy", "1.2.246.1", "@me.pem"},
         1,
         "INVALID  policy, certificate"},
        {"a strict profile", {"--strict", "@me.pem"}, 0, "VALID"},
        {"an authority as the subject", {"@sub.pem"}, 0, "VALID"},
        {"the anchor as the subject", {"@root.pem"}, 0, "VALID"},
        {"another anchor", {"--trust", "@me.pem", "@responder.pem"}, 0, "VALID"},
        {"a key", {"@me.key"}, 1, "INVALID  malformed, certificate 0"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        const ToolResult result = Verify(test.words);
        EXPECT_EQ(result.code, test.code) << result.output << result.error;
        EXPECT_EQ(result.output.substr(0, std::string_view(test.firstLine).size()), test.firstLine) << result.output;
    }
    EXPECT_EQ(Tool({"cert", "verify", "@me.pem"})
                  .output.find("INVALID  no-path, certificate 0: no issuer: CN=Example Sub CA, C=FI; --trust was not given\n"),
              0U);
}

TEST_F(CryptotoolCertVerify, ThePathIsPrintedInColumns)
{
    EXPECT_EQ(Verify({"--crl", "@root.crl", "--crl", "@sub.crl", "@me.pem"}).output,
              "VALID\n"
              "  0  CN=Signer, O=Example, C=FI    good (CRL 7, until 2026-12-01 00:00:00Z)\n"
              "  1  CN=Example Sub CA, C=FI       good (CRL 3, until 2026-12-01 00:00:00Z)\n"
              "  2  CN=Example Root, C=FI         anchor\n");
}

TEST_F(CryptotoolCertVerify, PoliciesHaveAnyNumbers)
{
    // Those that are given come back: the anchor as its own subject has any policy.
    for (const char* const policy :
         {"0.0", "0.39", "1.0", "1.39.128", "2.0", "2.39", "2.47.5", "2.48", "2.999.3", "2.175.16384", "1.2.18446744073709551615",
          "2.340282366920938463463374607431768211375", "2.25.340282366920938463463374607431768211455"}) {
        const ToolResult result = Verify({"--json", "--explicit-policy", "--policy", policy, "@root.pem"});
        EXPECT_EQ(result.code, 0) << policy << result.error;
        EXPECT_NE(result.output.find("\"policies\":[\"" + std::string(policy) + "\"]"), std::string::npos)
            << policy << result.output;
    }
    for (const char* const policy : {"1", "1.", "1.40", "3.1", "12.1", "1..2", "1.2.", ".1.2", "1.2x", "1.-2",
                                     "2.25.1000000000000000000000000000000000000000"})
        EXPECT_EQ(Verify({"--policy", policy, "@root.pem"}).code, 2) << policy;
}

/// JSON without its line ends, every fingerprint "F".
std::string Flat(const std::string& json)
{
    return std::regex_replace(std::regex_replace(json, std::regex("\n"), ""), std::regex("[0-9a-f]{64}"), "F");
}

TEST_F(CryptotoolCertVerify, JsonHasItsMembersInOrder)
{
    const std::string rest = R"({"subject":"CN=Example Sub CA, C=FI","serial":"1000","sha256":"F","status":"good","source":"crl",)"
                             R"("thisUpdate":"2026-11-01T00:00:00Z","nextUpdate":"2026-12-01T00:00:00Z"},)"
                             R"({"subject":"CN=Example Root, C=FI","serial":"01","sha256":"F","status":"anchor","source":null,)"
                             R"("thisUpdate":null,"nextUpdate":null}],"policies":[],"work":{"steps":3,"signatures":4}})";
    const ToolResult revoked = Verify({"--json", "--crl", "@root.crl", "--crl", "@lost.crl", "@me.pem"});
    EXPECT_EQ(revoked.code, 1);
    EXPECT_EQ(Flat(revoked.output),
              R"({"verdict":"invalid","reason":"revoked","certificate":0,"detail":"keyCompromise since 2026-11-02 08:00:00Z",)"
              R"("at":"2026-11-23T12:00:00Z","path":[{"subject":"CN=Signer, O=Example, C=FI","serial":"1001","sha256":"F",)"
              R"("status":"revoked","source":"crl","thisUpdate":"2026-11-01T00:00:00Z","nextUpdate":"2026-12-01T00:00:00Z"},)" +
                  rest);
    const ToolResult good =
        Verify({"--json", "--crl", "@root.crl", "--crl", "@sub.crl", "@me.pem", "--at", "2026-11-23T12:00:00.5Z"});
    EXPECT_EQ(good.code, 0);
    EXPECT_EQ(Flat(good.output),
              R"({"verdict":"valid","reason":null,"certificate":null,"detail":null,"at":"2026-11-23T12:00:00.500Z",)"
              R"("path":[{"subject":"CN=Signer, O=Example, C=FI","serial":"1001","sha256":"F","status":"good","source":"crl",)"
              R"("thisUpdate":"2026-11-01T00:00:00Z","nextUpdate":"2026-12-01T00:00:00Z"},)" +
                  rest);
    const ToolResult open = Verify({"--json", "--status", "leaf", "@sub.pem"});
    EXPECT_EQ(open.code, 3);
    EXPECT_EQ(open.output.find("{\"verdict\":\"undecided\",\n\"reason\":\"status-unknown\",\n\"certificate\":0,\n\"detail\":\""),
              0U);
}

TEST_F(CryptotoolCertVerify, ASubjectThatDoesNotParseHasAVerdictAndAMissingFileHasNone)
{
    Put("text", "no certificate\n");
    Put("empty", "");
    Put("cut.pem", "-----BEGIN CERTIFICATE-----\nMIIB\n");
    Put("version2", std::string("\x30\x03\x02\x01\x01", 5));
    for (const char* const file : {"@text", "@empty", "@cut.pem", "@version2"}) {
        SCOPED_TRACE(file);
        const ToolResult result = Verify({"--json", file});
        EXPECT_EQ(result.code, 1);
        EXPECT_EQ(result.output.find("{\"verdict\":\"invalid\",\n\"reason\":\"malformed\",\n\"certificate\":0,\n\"detail\":\""),
                  0U);
        EXPECT_NE(result.output.find("\"path\":[],\n"), std::string::npos);
    }
    for (const Words& words : {Words{"@missing"},
                               {"--crl", "@missing", "@me.pem"},
                               {"--trust", "@missing", "@me.pem"},
                               {"--ocsp", "@missing", "@me.pem"},
                               {"--untrusted", "@missing", "@me.pem"}}) {
        const ToolResult result = Verify(With({"--json"}, words));
        EXPECT_EQ(result.code, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.error.find("cryptotool: " + Path("missing") + ": "), 0U) << result.error;
    }
}

TEST_F(CryptotoolCertVerify, WhatElseDoesNotParseIsIgnoredWithAWarning)
{
    Put("junk", "\x30\x03\x02\x01\x01");
    const ToolResult result = Verify({"--untrusted", "@junk", "--trust", "@junk", "--trust", "@me.key", "@me.pem"});
    EXPECT_EQ(result.code, 0) << result.output;
    EXPECT_NE(result.error.find(Path("junk") + ": warning: ignored: "), std::string::npos) << result.error;
    EXPECT_NE(result.error.find(Path("me.key") + ": warning: it holds no certificate"), std::string::npos) << result.error;
    // Status that does not parse was asked for all the same.
    EXPECT_EQ(Verify({"--crl", "@junk", "@me.pem"}).code, 3);
    EXPECT_EQ(Verify({"--ocsp", "@junk", "@me.pem"}).code, 3);
}

TEST_F(CryptotoolCertVerify, TheFirstBlockIsTheSubjectAndTheOthersAreCandidates)
{
    Put("chain.pem", Get("me.pem") + "text between\n" + Get("me.key") + Get("sub.pem"));
    Put("wrong.pem", Get("sub.pem") + Get("me.pem"));
    const Words start = {"cert", "verify", "--trust", "@root.pem", "--at", "2026-11-23T12:00:00Z"};
    EXPECT_EQ(Tool(With(start, {"@chain.pem"})).output.find("VALID\n  0  CN=Signer, O=Example, C=FI"), 0U);
    EXPECT_EQ(Tool(With(start, {"@wrong.pem"})).output.find("VALID\n  0  CN=Example Sub CA, C=FI"), 0U);
    EXPECT_EQ(Tool(With(start, {"@me.pem"})).code, 1);
    EXPECT_EQ(Tool(With(start, {"-"}), Get("chain.pem")).code, 0);
    Put("lists.crl", Get("root.crl") + Get("sub.crl"));
    EXPECT_EQ(Verify({"--crl", "@lists.crl", "@me.pem"}).code, 0);
}

} // namespace
