#include "pki/cms/signer_check.h"

#include "core/diagnostics/failure.h"

#include <string_view>

namespace ccrypto {

bool MaySignMessages(const ReadExtensions& extensions)
{
    return !extensions.keyUsage || extensions.keyUsage->has(KeyUsageBit::digitalSignature) ||
           extensions.keyUsage->has(KeyUsageBit::nonRepudiation);
}

CCryptoString WhySignerIsRefused(const CCrypto_X509_Certificate& certificate, const CCryptoDateTime& now)
{
    if (!certificate.isValidAt(now)) {
        const std::optional<Failure> failure = LastFailure();
        return CCryptoString(failure ? std::string_view(failure->text) : "Not valid");
    }
    const ReadExtensions extensions = ReadAllExtensions(certificate.extensions(), ExtensionOwner::certificate);
    if (extensions.isMalformed)
        return "An extension is malformed";
    if (extensions.hasUnknownCritical)
        return "A critical extension is not known: " + CriticalExtensionText(extensions);
    return MaySignMessages(extensions) ? CCryptoString() : CCryptoString("The key usage allows no signatures");
}

} // namespace ccrypto
