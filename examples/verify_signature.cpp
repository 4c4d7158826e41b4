// Verifies the detached signature of a file: who signed it, and whether an anchor vouches for them.
//
//     verify_signature SIGNATURE FILE ANCHOR        SIGNATURE is CMS in DER, ANCHOR a certificate in DER

#include "core/core.h"
#include "pki/pki.h"

#include <cstdio>

namespace {

bool ReadFileBytes(const char* name, element& bytes)
{
    CCryptoFile file(CCryptoString(name), CCryptoFile::Mode::read);
    if (file.isOpen() && file.Read(0, static_cast<std::uint32_t>(file.Size()), bytes))
        return true;
    std::fprintf(stderr, "%s cannot be read\n", name);
    return false;
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 4) {
        std::fputs("usage: verify_signature SIGNATURE FILE ANCHOR\n", stderr);
        return 2;
    }
    element signature;
    element signedFile;
    element anchor;
    if (!ReadFileBytes(arguments[1], signature) || !ReadFileBytes(arguments[2], signedFile) || !ReadFileBytes(arguments[3], anchor))
        return 1;

    CCryptoPKCS7Document document;
    ccrypto::SignedDataTrust trust;
    trust.anchors.push_back(ccrypto::LoadCertificate(anchor.bytes()));
    if (!document.Parse(signature.bytes()) || document.signedData() == nullptr || trust.anchors.front() == nullptr) {
        std::fprintf(stderr, "not read: %s\n", ccrypto::LastFailure().value_or(ccrypto::Failure{}).text.c_str());
        return 1;
    }

    ccrypto::SignedDataOptions options;
    options.validation.at = CCryptoDateTime::Now().toUtcDateTime();
    ccrypto::SignedContent content(signedFile.bytes());
    const ccrypto::SignedDataVerdict verdict = ccrypto::VerifySignedData(*document.signedData(), &content, trust, options);
    for (const ccrypto::SignerVerdict& signer : verdict.signers) {
        const CCryptoString name = signer.certificate != nullptr ? ccrypto::NameText(signer.certificate->subject()) : "unknown";
        if (signer.verdict == ccrypto::Verdict::valid)
            std::printf("valid: %s\n", name.c_str());
        else
            std::printf("not valid: %s: %s: %s\n", name.c_str(), std::string(ccrypto::ReasonWord(signer.reason)).c_str(),
                        signer.detail.c_str());
    }
    if (verdict.signers.empty())
        std::printf("not valid: %s\n", verdict.detail.c_str());
    return verdict.verdict == ccrypto::Verdict::valid ? 0 : 1;
}
