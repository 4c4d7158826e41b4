#pragma once

#include "pki/cms/signed_data.h"
#include "pki/validation/path_validation.h"

namespace ccrypto {

/// Adds the revocation lists and OCSP responses that stand beside the certificates of a message. What does not load is ignored: it
/// proves nothing.
void AddStatusOfMessage(const CCryptoPKCS7SignedDataObject& data, StatusSources& sources);

/// Adds those in the attributes of one signer: the signed one of PDF files, and the unsigned ones of CAdES, revocation values and,
/// as this system writes them, under the identifier of revocation references. \return whether there were any.
bool AddStatusOfSigner(const CCryptoPKCS7SignerInfo& signer, StatusSources& sources);

} // namespace ccrypto
