#include "crypto/hash/hash.h"
#include "tests/pki/cms/cms_files.h"
#include "tests/pki/cms/signed_verdict.h"

#include <algorithm>

using namespace ccrypto;

namespace {

struct CmsFileCase {
    const char* file;
    const char*
        options; ///< "trust", "content", "other content", "digest", "other-hash", "cades", "weak", "candidate", joined by blanks
    Reason reason;
    std::size_t signers = 1;
};

const CmsFileCase cmsFileCases[] = {
    {"ec_attached", "trust", Reason::none},
    {"ec_attached", "", Reason::noPath},
    {"ec_attached", "trust content", Reason::none},
    {"ec_attached", "trust other-content", Reason::badSignature},
    {"ec_attached", "trust cades", Reason::malformed},
    {"ec_detached", "trust content", Reason::none},
    {"ec_detached", "trust digest", Reason::none},
    {"ec_detached", "trust other-hash", Reason::malformed},
    {"ec_detached", "trust", Reason::malformed},
    {"ec_detached", "trust other-content", Reason::badSignature},
    {"ec_key_identifier", "trust", Reason::none},
    {"ec_no_attributes", "trust", Reason::none},
    {"ec_no_attributes", "trust content", Reason::none},
    {"ec_no_attributes", "trust digest", Reason::malformed},
    {"ec_no_attributes", "trust other-content", Reason::badSignature},
    {"ec_no_attributes", "trust cades", Reason::malformed},
    {"ec_stream", "trust", Reason::none},
    {"ec_cades", "trust cades", Reason::none},
    {"ec_cades_sha384", "trust cades", Reason::none},
    {"ec_no_certificates", "trust", Reason::noPath},
    {"ec_no_certificates", "trust candidate", Reason::none},
    {"ec_other_type", "trust", Reason::none},
    {"rsa", "trust", Reason::none},
    {"rsa_pss", "trust", Reason::none},
    {"rsa_cades_sha1", "trust", Reason::weakAlgorithm},
    {"rsa_cades_sha1", "trust weak cades", Reason::none},
    {"rsa_md5", "trust", Reason::weakAlgorithm},
    {"rsa_md5", "trust weak", Reason::weakAlgorithm},
    {"two_signers", "trust", Reason::none, 2},
    {"certificates_alone", "trust", Reason::malformed, 0},
};

SignedDataVerdict VerdictOfFile(const Bytes& message, std::string_view words)
{
    const auto has = [&](std::string_view word) {
        return (' ' + std::string(words) + ' ').find(' ' + std::string(word) + ' ') != std::string::npos;
    };
    SignedDataTrust trust;
    if (has("trust"))
        trust.anchors = {LoadCertificate(CmsFile("certificate_root"))};
    if (has("candidate"))
        trust.candidates = {LoadCertificate(CmsFile("certificate_ec"))};
    SignedDataOptions options;
    options.validation.at = verificationTime;
    options.validation.allowWeak = has("weak");
    options.requiresSigningCertificate = has("cades");
    const Bytes other = TextBytes("contents");
    SignedContent content(has("other-content") ? other : verifiedContent);
    if (has("digest"))
        content = SignedContent(algorithm::sha256, ICryptoHash::Create(algorithm::sha256)->digestOf(verifiedContent));
    if (has("other-hash"))
        content = SignedContent(algorithm::sha512, ICryptoHash::Create(algorithm::sha512)->digestOf(verifiedContent));
    const bool isGiven = has("content") || has("other-content") || has("digest") || has("other-hash");
    return VerdictOf(message, trust, options, isGiven ? &content : nullptr);
}

} // namespace

TEST(CmsFiles, JudgesWhatOthersSigned)
{
    for (const CmsFileCase& entry : cmsFileCases) {
        const SignedDataVerdict verdict = VerdictOfFile(CmsFile(entry.file), entry.options);
        EXPECT_EQ(ReasonWord(verdict.reason), ReasonWord(entry.reason))
            << entry.file << ' ' << entry.options << ": " << verdict.detail.c_str();
        EXPECT_EQ(verdict.verdict == Verdict::valid, entry.reason == Reason::none) << entry.file << ' ' << entry.options;
        EXPECT_EQ(verdict.signers.size(), entry.signers) << entry.file;
    }
    const SignedDataVerdict verdict = VerdictOfFile(CmsFile("two_signers"), "trust");
    std::vector<std::string> keys;
    for (const SignerVerdict& signer : verdict.signers) {
        EXPECT_STREQ(signer.digestName, "SHA-256");
        EXPECT_TRUE(signer.signingTime.isValid());
        EXPECT_EQ(signer.order, AttributeOrder::encoded);
        EXPECT_EQ(signer.path.path.size(), 3u);
        keys.push_back(signer.keyText.c_str());
    }
    std::ranges::sort(keys);
    EXPECT_EQ(keys, (std::vector<std::string>{"RSA 2048", "prime256v1"}));
}

TEST(CmsFiles, AFlippedBitIsNeverValid)
{
    const Bytes message = CmsFile("ec_cades");
    CCryptoPKCS7Document document;
    ASSERT_TRUE(document.Parse(message));
    // The signer's description ends the message.
    const std::size_t length = document.signedData()->signerInfos[0]->BuildDer().length();
    ASSERT_GT(length, 300u);
    for (std::size_t index = message.size() - length; index < message.size(); index += 2) {
        Bytes changed = message;
        changed[index] ^= static_cast<std::uint8_t>(1 << index / 2 % 8);
        EXPECT_NE(VerdictOfFile(changed, "trust cades").verdict, Verdict::valid) << index;
    }
}
