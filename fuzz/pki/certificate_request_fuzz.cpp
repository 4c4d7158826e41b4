#include "fuzz/require.h"
#include "pki/x509/certificate_request.h"
#include "pki/x509/name.h"

using namespace ccrypto;

/// What verifies encodes to the same octets; what does not load leaves the object empty.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const element der(data, static_cast<std::uint32_t>(size));
    CCryptoCertificateRequest request;
    if (!request.LoadRequest(der)) {
        Require(!request.isLoaded() && request.publicKey() == nullptr && request.extensions().isEmpty());
        return 0;
    }
    static_cast<void>(NameText(request.subject()));
    CCryptoParser parser;
    Require(parser.Load_DER_Memory(der));
    if (request.verifySignature() == SignatureResult::good)
        Require(request.isDer() && parser.ToDer() == der);
    return 0;
}
