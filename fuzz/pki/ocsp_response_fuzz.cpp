#include "asn1/parser/parser.h"
#include "fuzz/require.h"
#include "pki/ocsp/response_verification.h"

using namespace ccrypto;
using CCryptoOCSP::COCSPResponse;

namespace {

bool EncodesAgain(const element& der)
{
    CCryptoParser parser;
    return parser.Load_DER_Memory(der) && parser.ToDer() == der;
}

/// What is said of a certificate must rest on octets that were understood.
void JudgeResponse(const COCSPResponse& response, const CCrypto_X509_Certificate& issuer)
{
    const auto& data = response.basicResponse().tbsResponseData;
    OcspOptions options;
    options.at = data.producedAt;
    options.allowWeak = true;
    const OcspVerdict verdict = VerifyOcspResponse(response, data.responses.front()->certID.serialNumber, issuer, options);
    Require((verdict.status == OcspStatus::bad) == (verdict.failure != OcspFailure::none));
    Require(verdict.signatures <= 17);
    if (verdict.status != OcspStatus::bad)
        Require(EncodesAgain(response.der()) && EncodesAgain(response.basicResponse().der()));
}

} // namespace

/// Responses, judged as if one of their own certificates were the issuer.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    COCSPResponse response;
    if (!response.LoadResponse(element(data, static_cast<std::uint32_t>(size))))
        return 0;
    // An algorithm that is not DER, or an OID without a dotted form, may have no second form.
    if (const element built = response.BuildDer(); !built.isEmpty()) {
        COCSPResponse again;
        Require(again.LoadResponse(built));
        Require(again.BuildDer() == built);
    }
    if (response.basicResponse().tbsResponseData.responses.empty())
        return 0;
    std::uint32_t judged = 0;
    for (const CertificatePtr& certificate : response.basicResponse().certificates())
        if (++judged <= 2)
            JudgeResponse(response, *certificate);
    return 0;
}
