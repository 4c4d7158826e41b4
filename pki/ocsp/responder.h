#pragma once

#include "core/base/algorithm.h"
#include "core/system/date_time.h"
#include "pki/keys/key_pair.h"
#include "pki/ocsp/ocsp_response.h"
#include "pki/x509/certificate.h"
#include "pki/x509/crl.h"

namespace ccrypto {

/// Who answers.
struct OcspResponder {
    const CCrypto_X509_Certificate& issuer;      ///< of the certificates that are asked about
    const CCrypto_X509_Certificate& certificate; ///< the responder's: the issuer's own, or one that it issued for OCSPSigning
    ICryptoKeyPair& key;
    algorithm::Id hash = algorithm::sha256;
    bool byName = false;           ///< the responder is given by its name, otherwise by its key
    bool embedsCertificate = true; ///< the responder's certificate goes into the response, unless it is the issuer's
    bool allowWeak = false;        ///< answers from a list that is signed with SHA-1; MD5 never
};

/// Answers a request from a revocation list of the issuer: good, revoked, or unknown for certificates of other issuers. The
/// response holds as long as the list, says the nonce of the request, and was made at `at`.
///
/// What is not a request, asks for nothing, has a malformed nonce, an extension twice or an unknown critical one is answered by
/// malformedRequest, without a signature. Neither the list's nextUpdate nor the right of the responder to answer is checked:
/// whoever asks does, and may have named the responder in advance.
/// \return the response, DER; empty, logged, for a list that is not complete or not the issuer's, for a weak signature of it, for
/// an entry that only another kind of list may have, and when signing fails.
[[nodiscard]] element AnswerFromCrl(const element& request, const CCrypto_X509_CRL& list, const OcspResponder& responder,
                                    const CCryptoDateTime& at);

/// A response that says why there is none, DER. It has no signature, so it proves nothing.
[[nodiscard]] element OcspErrorResponse(CCryptoOCSP::ResponseStatus status);

} // namespace ccrypto
