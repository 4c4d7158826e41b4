#pragma once

#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/memory_console.h"
#include "tests/tools/cryptotool/small_files.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ccrypto {

using Words = std::vector<std::string>;

/// A folder with an authority that the tool itself made: root.pem, sub.pem, me.pem (serial number 1001), their keys and requests,
/// root.crl, sub.crl (number 7), lost.crl (number 8, which revokes 1001). All are of November 2026.
class PkiFolder : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        folder_ = std::make_unique<TemporaryDirectory>();
        for (const char* const name : {"root", "sub", "me", "responder"})
            Done({"key", "gen", "prime256v1", "-o", "@" + std::string(name) + ".key"});
        Done({"cert", "build", "@root.key", "--subject", "CN=Example Root, C=FI", "--is-ca", "--serial", "01", "--not-before",
              "2026-01-01T00:00:00Z", "--not-after", "2036-01-01T00:00:00Z", "-o", "@root.pem"});
        Issue("sub", "CN=Example Sub CA, C=FI", "root", {"--is-ca", "--path-length", "0", "--serial", "1000"});
        Issue("me", "CN=Signer, O=Example, C=FI", "sub",
              {"--serial", "1001", "--key-usage", "digitalSignature", "--eku", "emailProtection", "--san", "email:me@example.com",
               "--san", "DNS:*.example.com", "--san", "IP:192.0.2.1", "--policy", "1.2.246.1"});
        Issue("responder", "CN=Responder, C=FI", "sub",
              {"--key-usage", "digitalSignature", "--eku", "OCSPSigning", "--extension", "1.3.6.1.5.5.7.48.1.5=#0500"});
        List("root", "root.crl", {"--number", "3"});
        List("sub", "sub.crl", {"--number", "7"});
        List("sub", "lost.crl", {"--number", "8", "--revoke", "1001,keyCompromise,2026-11-02T08:00:00Z"});
    }
    static void TearDownTestSuite() { folder_.reset(); }

    static std::string Path(const std::string& name) { return folder_->path().string() + "/" + name; }
    static std::string Get(const std::string& name) { return GetFile(Path(name)); }
    static void Put(const std::string& name, std::string_view bytes) { PutFile(Path(name), bytes); }
    /// Runs the tool; "@" in front of the name of a file of the folder becomes its path.
    static ToolResult Tool(Words words, const std::string& input = {})
    {
        for (std::string& word : words)
            if (word.starts_with('@'))
                word = Path(word.substr(1));
        return RunTool(words, input);
    }
    static void Done(const Words& words)
    {
        const ToolResult result = Tool(words);
        EXPECT_EQ(result.code, exitDone) << result.error;
    }
    static Words With(Words words, const Words& more)
    {
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
    /// NAME.csr and NAME.pem of the key in NAME.key.
    static void Issue(const std::string& name, const std::string& subject, const std::string& issuer, const Words& more)
    {
        Done({"csr", "build", "@" + name + ".key", "--subject", subject, "-o", "@" + name + ".csr"});
        Done(With({"cert", "build", "@" + name + ".csr", "--ca", "@" + issuer + ".pem", "--ca-key", "@" + issuer + ".key",
                   "--not-before", "2026-01-01T00:00:00Z", "--not-after", "2030-01-01T00:00:00Z", "-o", "@" + name + ".pem"},
                  more));
    }
    static void List(const std::string& issuer, const std::string& file, const Words& more)
    {
        Done(With({"crl", "build", "--ca", "@" + issuer + ".pem", "--ca-key", "@" + issuer + ".key", "--this-update",
                   "2026-11-01T00:00:00Z", "--next-update", "2026-12-01T00:00:00Z", "-o", "@" + file},
                  more));
    }
    /// "cert verify" of the whole chain in the middle of November.
    static ToolResult Verify(const Words& more)
    {
        return Tool(
            With({"cert", "verify", "--trust", "@root.pem", "--untrusted", "@sub.pem", "--at", "2026-11-23T12:00:00Z"}, more));
    }

private:
    static inline std::unique_ptr<TemporaryDirectory> folder_;
};

} // namespace ccrypto
