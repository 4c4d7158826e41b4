#include "fuzz/require.h"
#include "pki/ocsp/ocsp_request.h"

using namespace ccrypto;
using CCryptoOCSP::COCSPRequest;

/// Requests: what loads is built of its fields to something that loads, asks the same and is built the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const element input(data, static_cast<std::uint32_t>(size));
    COCSPRequest request;
    if (!request.LoadRequest(input))
        return 0;
    // An algorithm of a CertID that is not DER, or an OID without a dotted form, may have no second form.
    const element built = request.BuildDer();
    if (built.isEmpty())
        return 0;
    COCSPRequest again;
    Require(again.LoadRequest(built));
    Require(again.nonce() == request.nonce());
    Require(again.tbsRequest.requestList.size() == request.tbsRequest.requestList.size());
    for (std::size_t index = 0; index < again.tbsRequest.requestList.size(); ++index)
        Require(again.tbsRequest.requestList[index]->certID.serialNumber ==
                request.tbsRequest.requestList[index]->certID.serialNumber);
    Require(again.BuildDer() == built);
    return 0;
}
