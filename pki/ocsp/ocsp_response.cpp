#include "pki/ocsp/ocsp_response.h"

#include "core/diagnostics/auto_logger.h"

#include <algorithm>
#include <array>
#include <string_view>

using namespace ccrypto;

namespace {

constexpr const char* responseBytesTemplate = "SEQUENCE{OBJECT_IDENTIFIER{responseType},OCTET_STRING{response}}";
constexpr const char* ocspResponseTemplate =
    "SEQUENCE[CONSTRUCTED]{ENUMERATED{responseStatus},CONTEXT_SPECIFIC(OPTIONAL)[0,CONSTRUCTED]{responseBytes} }";

constexpr const char* basicResponseType = "1.3.6.1.5.5.7.48.1.1";
constexpr std::string_view otherResponseTypes[] = {"1.3.6.1.5.5.7.48.1.2", "1.3.6.1.5.5.7.48.1.3", "1.3.6.1.5.5.7.48.1.5"};

constexpr std::array<const char*, 7> responseStatusNames = {
    "successful", "malformedRequest", "internalError", "tryLater", nullptr, "sigRequired", "unauthorized",
};

/// A certificate that signed nothing is among many that may be tried.
constexpr std::size_t maxTriedCertificates = 16;

} // namespace

namespace CCryptoOCSP {

const char* ResponseStatusName(ResponseStatus status)
{
    const auto number = static_cast<std::size_t>(status);
    return number < responseStatusNames.size() ? responseStatusNames[number] : nullptr;
}

COCSPResponseBytes::COCSPResponseBytes() : CStructure(responseBytesTemplate) {}

COCSPResponseBytes::COCSPResponseBytes(const elementNode* node) : COCSPResponseBytes()
{
    construct(node);
}

void COCSPResponseBytes::ClearFields()
{
    responseType = {};
    response = {};
    basicResponse.Reset();
}

bool COCSPResponseBytes::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoOCSP::COCSPResponseBytes::ParseNode");
    responseType = findText("responseType");
    response = Octets(findBytes("response"));
    if (responseType == basicResponseType)
        return logger.setResult(basicResponse.LoadResponse(response));
    if (std::ranges::find(otherResponseTypes, responseType.view()) == std::end(otherResponseTypes))
        return logger.fail(false, "Unsupported response type");
    return logger.setResult(true);
}

bool COCSPResponseBytes::SetTemplateValues()
{
    CCryptoAutoLogger logger("CCryptoOCSP::COCSPResponseBytes::SetTemplateValues");
    if (!basicResponse.isEmpty()) {
        responseType = basicResponseType;
        response = basicResponse.der().isEmpty() ? basicResponse.BuildDer() : basicResponse.der();
    }
    if (response.isEmpty())
        return logger.fail(false, "There is no response");
    return logger.setResult(builder().fill("responseType", element(responseType.view())) &&
                            builder().fill("response", Octets(response)));
}

COCSPResponse::COCSPResponse() : CStructure(ocspResponseTemplate) {}

COCSPResponse::COCSPResponse(const elementNode* node) : COCSPResponse()
{
    construct(node);
}

void COCSPResponse::ClearFields()
{
    responseStatus = ResponseStatus::internalError;
    hasResponseBytes = false;
    responseBytes.Reset();
    der_ = {};
    isDer_ = false;
}

bool COCSPResponse::LoadResponse(const element& der)
{
    CCryptoAutoLogger logger("CCryptoOCSP::COCSPResponse::LoadResponse");
    const element octets = Octets(der);
    bool isDer = false;
    if (!load(octets, isDer))
        return logger.setResult(false);
    der_ = octets;
    isDer_ = isDer && (basicResponse().isEmpty() || basicResponse().isDer());
    return logger.setResult(true);
}

bool COCSPResponse::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoOCSP::COCSPResponse::ParseNode");
    const element status = findBytes("responseStatus");
    responseStatus = static_cast<ResponseStatus>(status.length() == 1 ? status[0] : UINT8_MAX);
    if (ResponseStatusName(responseStatus) == nullptr)
        return logger.fail(false, "A status that responses do not have");
    hasResponseBytes = isBound("responseBytes");
    if (hasResponseBytes && !responseBytes.Parse(findOnly("responseBytes")))
        return logger.setResult(false);
    return logger.setResult(true);
}

bool COCSPResponse::SetTemplateValues()
{
    CCryptoAutoLogger logger("CCryptoOCSP::COCSPResponse::SetTemplateValues");
    if (!builder().fill("responseStatus", element(static_cast<std::uint32_t>(responseStatus))))
        return logger.setResult(false);
    if (!hasResponseBytes)
        return logger.setResult(true);
    const ElementNodePtr bytes = responseBytes.BuildTree();
    return logger.setResult(bytes != nullptr && builder().fill_tree("responseBytes", bytes.get()));
}

bool COCSPResponse::VerifySignature(const CCrypto_X509_Certificate& responder) const
{
    return basicResponse().VerifySignature(responder);
}

bool COCSPResponse::VerifySignature() const
{
    CCryptoAutoLogger logger("CCryptoOCSP::COCSPResponse::VerifySignature");
    std::size_t tried = 0;
    for (const CertificatePtr& certificate : basicResponse().certificates()) {
        if (!basicResponse().isResponder(*certificate))
            continue;
        if (basicResponse().VerifySignature(*certificate))
            return logger.setResult(true);
        if (++tried == maxTriedCertificates)
            break;
    }
    if (tried == 0) {
        logger.WriteLog("Failed to verify: none of the response's certificates is the responder's");
        logger.WriteLog("Responder certificate: none");
    }
    return logger.setResult(false);
}

} // namespace CCryptoOCSP
