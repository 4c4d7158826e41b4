#pragma once

#include "pki/cms/document.h"
#include "pki/cms/signed_data_verification.h"
#include "tests/pki/keys/test_keys.h"

namespace ccrypto {

inline const Bytes verifiedContent = TextBytes("content");
inline const CCryptoDateTime verificationTime({.year = 2026, .month = 12, .day = 1}, true);

inline SignedDataVerdict VerdictOf(const Bytes& message, const SignedDataTrust& trust, const SignedDataOptions& options,
                                   SignedContent* content = nullptr)
{
    CCryptoPKCS7Document document;
    if (!document.Parse(message) || document.signedData() == nullptr)
        return {.verdict = Verdict::invalid, .reason = Reason::malformed, .detail = "Not read", .signers = {}};
    return VerifySignedData(*document.signedData(), content, trust, options);
}

} // namespace ccrypto
