#include "fuzz/require.h"
#include "pki/cms/document.h"
#include "pki/cms/enveloped_data.h"
#include "pki/cms/signed_data_verification.h"

using namespace ccrypto;

/// Messages of all types: what is read is written so that it reads the same, and verification without anchors finds nobody valid.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    CCryptoPKCS7Document document;
    if (!document.Parse({data, size}))
        return 0;
    const element der = document.GetDerEncodedObject();
    CCryptoPKCS7Document again;
    Require(again.Parse(der.bytes()));
    Require(again.GetDerEncodedObject() == der);
    if (const CCryptoPKCS7SignedDataObject* const signedData = document.signedData(); signedData != nullptr) {
        SignedDataOptions options;
        options.validation.at = CCryptoDateTime({.year = 2026, .month = 12, .day = 1}, true);
        options.validation.status = ValidationOptions::Status::leaf;
        const SignedDataVerdict verdict = VerifySignedData(*signedData, nullptr, {}, options);
        Require(verdict.verdict != Verdict::valid);
        Require(verdict.signers.size() == signedData->signerInfos.size());
    } else if (const elementNode* const content = document.contentInfo()->content(); content != nullptr) {
        CCryptoPKCS7EnvelopedDataObject().Parse(content);
    }
    return 0;
}
