#include "pki/ocsp/ocsp_request.h"

#include "asn1/tree/node_parts.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/ocsp/ocsp_extensions.h"

using namespace ccrypto;

namespace {

constexpr const char* requestTemplate = "SEQUENCE[CONSTRUCTED] { CertID, CONTEXT_SPECIFIC(OPTIONAL)[0] { Extensions } }";
constexpr const char* tbsRequestTemplate =
    "SEQUENCE[CONSTRUCTED]{ CONTEXT_SPECIFIC(OPTIONAL)[0] { version },CONTEXT_SPECIFIC(OPTIONAL)[1,CONSTRUCTED] { requestorName },"
    "SEQUENCE[CONSTRUCTED] { requestList },CONTEXT_SPECIFIC(OPTIONAL)[2,CONSTRUCTED]{Extensions}}";
constexpr const char* ocspRequestTemplate = "SEQUENCE[CONSTRUCTED]{TBSRequest, Signature(OPTIONAL) }";

/// The placeholder takes any element.
bool IsSignature(const elementNode& node)
{
    const element* const number = BracketNumber(node);
    return node.type() == ElementType::contextSpecific && number != nullptr && number->toWord32() == 0;
}

} // namespace

namespace CCryptoOCSP {

CRequest::CRequest() : CStructure(requestTemplate) {}

CRequest::CRequest(const elementNode* node) : CRequest()
{
    construct(node);
}

void CRequest::ClearFields()
{
    certID.Reset();
    extensions.clear();
}

bool CRequest::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoOCSP::CRequest::ParseNode");
    return logger.setResult(certID.Parse(find("CertID")) && findExtensions("Extensions", extensions));
}

bool CRequest::SetTemplateValues()
{
    CCryptoAutoLogger logger("CCryptoOCSP::CRequest::SetTemplateValues");
    const ElementNodePtr id = certID.BuildTree();
    return logger.setResult(id != nullptr && builder().fill_tree("CertID", id.get()) && fillExtensions("Extensions", extensions));
}

CTBSRequest::CTBSRequest() : CStructure(tbsRequestTemplate) {}

CTBSRequest::CTBSRequest(const elementNode* node) : CTBSRequest()
{
    construct(node);
}

void CTBSRequest::ClearFields()
{
    requestorName = {};
    requestList.clear();
    extensions.clear();
}

bool CTBSRequest::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoOCSP::CTBSRequest::ParseNode");
    if (!hasVersion1())
        return logger.fail(false, "The version is not 1");
    if (isBound("requestorName")) {
        requestorName = CCryptoParser::ToDer(findOnly("requestorName"));
        if (requestorName.isEmpty())
            return logger.fail(false, "The name of the requestor is not one name");
    }
    if (!internal::ParseMembers(find("requestList"), requestList))
        return logger.fail(false, "Request %zu is malformed", requestList.size() + 1);
    return logger.setResult(findExtensions("Extensions", extensions));
}

bool CTBSRequest::SetTemplateValues()
{
    CCryptoAutoLogger logger("CCryptoOCSP::CTBSRequest::SetTemplateValues");
    ElementNodePtr list;
    if (!internal::BuildMembers(requestList, list))
        return logger.fail(false, "A request cannot be built, or more than %u", maxMembers);
    return logger.setResult((requestorName.isEmpty() || fillDer("requestorName", requestorName)) &&
                            builder().fill_tree("requestList", list.get()) && fillExtensions("Extensions", extensions));
}

COCSPRequest::COCSPRequest() : CStructure(ocspRequestTemplate) {}

COCSPRequest::COCSPRequest(const elementNode* node) : COCSPRequest()
{
    construct(node);
}

void COCSPRequest::ClearFields()
{
    tbsRequest.Reset();
    signature = {};
}

bool COCSPRequest::LoadRequest(const element& der)
{
    CCryptoAutoLogger logger("CCryptoOCSP::COCSPRequest::LoadRequest");
    bool isDer = false;
    return logger.setResult(load(der, isDer));
}

bool COCSPRequest::Ask(const CCrypto_X509_Certificate& issuer, const element& serialNumber, algorithm::Id hash)
{
    auto request = std::make_unique<CRequest>();
    if (!request->certID.Identify(issuer, serialNumber, hash))
        return false;
    tbsRequest.requestList.push_back(std::move(request));
    return true;
}

bool COCSPRequest::AddNonce()
{
    return AddOcspNonce(tbsRequest.extensions, NewOcspNonce());
}

element COCSPRequest::nonce() const
{
    return ReadOcspNonce(tbsRequest.extensions).octets;
}

bool COCSPRequest::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoOCSP::COCSPRequest::ParseNode");
    if (isBound("Signature")) {
        const elementNode* const tagged = find("Signature");
        if (tagged == nullptr || !IsSignature(*tagged))
            return logger.fail(false, "What follows the request is not a signature");
        signature = CCryptoParser::ToDer(tagged);
    }
    return logger.setResult(tbsRequest.Parse(find("TBSRequest")));
}

bool COCSPRequest::SetTemplateValues()
{
    CCryptoAutoLogger logger("CCryptoOCSP::COCSPRequest::SetTemplateValues");
    const ElementNodePtr tbs = tbsRequest.BuildTree();
    return logger.setResult(tbs != nullptr && builder().fill_tree("TBSRequest", tbs.get()) &&
                            (signature.isEmpty() || fillDer("Signature", signature)));
}

} // namespace CCryptoOCSP
