#pragma once

#include "core/system/date_time.h"
#include "core/text/string.h"
#include "pki/x509/certificate.h"
#include "pki/x509/extensions.h"

namespace ccrypto {

/// Whether a key usage, where there is one, lets the key sign messages: digitalSignature or nonRepudiation.
[[nodiscard]] bool MaySignMessages(const ReadExtensions& extensions);

/// Why a certificate does not let its key sign messages at this time: it is not valid then, its key usage does not allow it, or a
/// critical extension is not known. Empty when it does. Its issuer is not looked for.
[[nodiscard]] CCryptoString WhySignerIsRefused(const CCrypto_X509_Certificate& certificate, const CCryptoDateTime& now);

} // namespace ccrypto
