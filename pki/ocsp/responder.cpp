#include "pki/ocsp/responder.h"

#include "core/diagnostics/auto_logger.h"
#include "pki/ocsp/ocsp_extensions.h"
#include "pki/ocsp/ocsp_request.h"
#include "pki/x509/extensions.h"
#include "pki/x509/name.h"
#include "pki/x509/signature.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace ccrypto {

namespace {

using CCryptoOCSP::CCertStatus;
using CCryptoOCSP::COCSPRequest;
using CCryptoOCSP::COCSPResponse;
using CCryptoOCSP::CRequest;
using CCryptoOCSP::CSingleResponse;
using CCryptoOCSP::CTBSResponseData;
using CCryptoOCSP::ResponseStatus;

bool IsAnswerable(const COCSPRequest& request)
{
    const auto& requests = request.tbsRequest.requestList;
    const auto areUsable = [](const CCrypto_X509_ValueList& extensions) {
        return !HasUnknownCriticalOcspExtension(extensions) && !HasDoubledOcspExtension(extensions);
    };
    return !requests.empty() && areUsable(request.tbsRequest.extensions) &&
           ReadOcspNonce(request.tbsRequest.extensions).state != OcspNonce::State::malformed &&
           std::ranges::all_of(requests, [&](const auto& one) { return areUsable(one->extensions); });
}

/// Whether what is not in the list is good: it is the issuer's and covers all certificates and reasons. Lists that do not say so in
/// critical extensions (RFC 5280, 5.2.4 and 5.2.5).
bool IsCompleteList(const CCrypto_X509_CRL& list, const CCrypto_X509_Certificate& issuer)
{
    const auto listName = ComparableName::Read(list.issuer().GetDerEncodedElement().bytes());
    const auto issuerName = ComparableName::Read(issuer.subject().GetDerEncodedElement().bytes());
    const auto isPartial = [](const auto& extension) {
        return extension->isCritical() || extension->oid() == oids::deltaCrlIndicator ||
               extension->oid() == oids::issuingDistributionPoint;
    };
    return listName && issuerName && listName == issuerName && list.isDer() && issuer.publicKey() != nullptr &&
           list.verifySignature(*issuer.publicKey()) == SignatureResult::good && !list.hasUnknownCriticalEntry() &&
           std::ranges::none_of(list.extensions().values(), isPartial);
}

/// Of several entries one that is not a hold speaks. \return false for an entry that such a list does not have: removed from a
/// base, or of another issuer.
bool ReadListStatus(const CCrypto_X509_CRL& list, const element& serialNumber, CCertStatus& status)
{
    const std::vector<RevokedEntry> entries = list.find(serialNumber.bytes());
    status.kind = entries.empty() ? CCertStatus::Kind::good : CCertStatus::Kind::revoked;
    const auto isHold = [](const RevokedEntry& entry) { return entry.reason == RevocationReason::certificateHold; };
    auto worst = std::ranges::find_if_not(entries, isHold);
    if (worst == entries.end())
        worst = entries.begin();
    if (worst != entries.end()) {
        status.revocationTime = worst->revocationDate;
        status.revocationReason = worst->reason;
    }
    return std::ranges::none_of(entries, [](const RevokedEntry& entry) {
        return entry.reason == RevocationReason::removeFromCrl || !entry.certificateIssuer.empty();
    });
}

/// Whether the signature of the list is strong enough to answer from it. One that is broken never verifies.
bool IsStrongList(const CCrypto_X509_CRL& list, bool allowWeak)
{
    const std::optional<SignatureAlgorithm> algorithm = ReadSignatureAlgorithm(list.signatureAlgorithm());
    return algorithm && (allowWeak || !algorithm->isWeak());
}

bool AddResponses(COCSPRequest& request, const CCrypto_X509_CRL& list, const CCrypto_X509_Certificate& issuer,
                  CTBSResponseData& data)
{
    CertIdMatcher matcher(issuer);
    for (const auto& one : request.tbsRequest.requestList) {
        auto single = std::make_unique<CSingleResponse>();
        single->certStatus.kind = CCertStatus::Kind::unknown;
        single->thisUpdate = list.thisUpdate();
        single->nextUpdate = list.nextUpdate();
        if (!single->certID.CopyOf(one->certID))
            return false;
        if (matcher.isOfIssuer(one->certID) && !ReadListStatus(list, one->certID.serialNumber, single->certStatus))
            return false;
        data.responses.push_back(std::move(single));
    }
    return true;
}

} // namespace

element OcspErrorResponse(ResponseStatus status)
{
    COCSPResponse response;
    response.responseStatus = status;
    return response.BuildDer();
}

element AnswerFromCrl(const element& request, const CCrypto_X509_CRL& list, const OcspResponder& responder,
                      const CCryptoDateTime& at)
{
    CCryptoAutoLogger logger("AnswerFromCrl");
    COCSPRequest asked;
    if (!asked.LoadRequest(request) || !IsAnswerable(asked))
        return logger.warn(OcspErrorResponse(ResponseStatus::malformedRequest), "The request is malformed");
    if (!IsStrongList(list, responder.allowWeak))
        return logger.fail(element(), "The signature of the list is weak");
    if (!IsCompleteList(list, responder.issuer))
        return logger.fail(element(), "The list is not a complete one of the issuer");

    COCSPResponse response;
    response.responseStatus = ResponseStatus::successful;
    response.hasResponseBytes = true;
    auto& basic = response.basicResponse();
    basic.tbsResponseData.producedAt = at;
    if (responder.byName)
        basic.tbsResponseData.responderName = responder.certificate.subject().GetDerEncodedElement();
    if (!AddResponses(asked, list, responder.issuer, basic.tbsResponseData))
        return logger.fail(element(), "An entry is not one of a complete list");
    if (const element nonce = asked.nonce(); !nonce.isEmpty() && !AddOcspNonce(basic.tbsResponseData.extensions, nonce))
        return logger.fail(element());
    if (responder.embedsCertificate && responder.certificate.der().view() != responder.issuer.der().view())
        basic.certs.push_back(responder.certificate.der());
    if (!basic.SignResponse(responder.certificate, responder.key, responder.hash))
        return logger.fail(element());
    element der = response.BuildDer();
    logger.setResult(!der.isEmpty());
    return der;
}

} // namespace ccrypto
