#pragma once

#include "pki/cms/signed_data.h"
#include "pki/validation/path_validation.h"

namespace ccrypto {

/// Adds the revocation lists and OCSP responses of a message: those that stand beside its certificates, and those in the attributes
/// of its signers, every value of each: the signed attribute of PDF files, and the unsigned ones of CAdES, revocation values and,
/// as this system writes them, under the identifier of revocation references. Each proves itself by its own signature, so that it
/// does not matter where it stands. What does not load is ignored: it proves nothing. The same octets are loaded once, and no more
/// than CCryptoPKCS7SignedDataObject::maxCertificates lists and as many responses.
void AddStatusOfMessage(const CCryptoPKCS7SignedDataObject& data, StatusSources& sources);

} // namespace ccrypto
