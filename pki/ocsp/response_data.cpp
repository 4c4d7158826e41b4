#include "pki/ocsp/response_data.h"

#include "core/diagnostics/auto_logger.h"

using namespace ccrypto;

namespace {

constexpr const char* singleResponseTemplate =
    "SEQUENCE[CONSTRUCTED]{certID,certStatus,thisUpdate,CONTEXT_SPECIFIC(OPTIONAL)[0,CONSTRUCTED]{nextUpdate},"
    "CONTEXT_SPECIFIC(OPTIONAL)[1,CONSTRUCTED]{singleExtensions}}";
/// The tag 1 is the name's and, after the responses, that of the extensions, as the standard has it.
constexpr const char* responseDataTemplate =
    "SEQUENCE {CONTEXT_SPECIFIC(OPTIONAL)[0] { version },CONTEXT_SPECIFIC(OPTIONAL)[1,CONSTRUCTED] { responderName },"
    "CONTEXT_SPECIFIC(OPTIONAL)[2,CONSTRUCTED] { OCTET_STRING { responderKeyHash } },producedAt,"
    "SEQUENCE[CONSTRUCTED] { responses }CONTEXT_SPECIFIC(OPTIONAL)[1,CONSTRUCTED] { Extensions },}";

} // namespace

namespace CCryptoOCSP {

CSingleResponse::CSingleResponse() : CStructure(singleResponseTemplate) {}

CSingleResponse::CSingleResponse(const elementNode* node) : CSingleResponse()
{
    construct(node);
}

void CSingleResponse::ClearFields()
{
    certID.Reset();
    certStatus.Reset();
    thisUpdate = nextUpdate = {};
    singleExtensions.clear();
}

bool CSingleResponse::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoOCSP::CSingleResponse::ParseNode");
    if (!certID.Parse(find("certID")) || !certStatus.Parse(find("certStatus")))
        return logger.setResult(false);
    thisUpdate = internal::ReadOcspTime(find("thisUpdate"));
    nextUpdate = internal::ReadOcspTime(findOnly("nextUpdate"));
    if (!thisUpdate.isValid() || (isBound("nextUpdate") && !nextUpdate.isValid()))
        return logger.fail(false, "A time of the response is malformed");
    return logger.setResult(findExtensions("singleExtensions", singleExtensions));
}

bool CSingleResponse::SetTemplateValues()
{
    CCryptoAutoLogger logger("CCryptoOCSP::CSingleResponse::SetTemplateValues");
    const ElementNodePtr id = certID.BuildTree();
    const ElementNodePtr status = certStatus.BuildTree();
    return logger.setResult(id != nullptr && status != nullptr && builder().fill_tree("certID", id.get()) &&
                            builder().fill_tree("certStatus", status.get()) && fillTime("thisUpdate", thisUpdate) &&
                            (!nextUpdate.isValid() || fillTime("nextUpdate", nextUpdate)) &&
                            fillExtensions("singleExtensions", singleExtensions));
}

CTBSResponseData::CTBSResponseData() : CStructure(responseDataTemplate) {}

CTBSResponseData::CTBSResponseData(const elementNode* node) : CTBSResponseData()
{
    construct(node);
}

void CTBSResponseData::ClearFields()
{
    responderName = responderKeyHash = {};
    producedAt = {};
    responses.clear();
    extensions.clear();
}

bool CTBSResponseData::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoOCSP::CTBSResponseData::ParseNode");
    if (!hasVersion1())
        return logger.fail(false, "The version is not 1");
    if (isBound("responderName") == isBound("responderKeyHash"))
        return logger.fail(false, "The responder is not given by one of its name and its key");
    const elementNode* const name = findOnly("responderName");
    if (name != nullptr && name->type() == ElementType::sequence)
        responderName = CCryptoParser::ToDer(name);
    responderKeyHash = Octets(findBytes("responderKeyHash"));
    if (responderName.isEmpty() && responderKeyHash.isEmpty())
        return logger.fail(false, "The name or key of the responder is malformed");
    producedAt = internal::ReadOcspTime(find("producedAt"));
    if (!producedAt.isValid())
        return logger.fail(false, "The time of the response is malformed");
    if (!internal::ParseMembers(find("responses"), responses))
        return logger.fail(false, "Response %zu is malformed", responses.size() + 1);
    return logger.setResult(findExtensions("Extensions", extensions));
}

bool CTBSResponseData::SetTemplateValues()
{
    CCryptoAutoLogger logger("CCryptoOCSP::CTBSResponseData::SetTemplateValues");
    if (responderName.isEmpty() == responderKeyHash.isEmpty())
        return logger.fail(false, "The responder is not given by one of its name and its key");
    ElementNodePtr list;
    if (!internal::BuildMembers(responses, list))
        return logger.fail(false, "A response cannot be built, or more than %u", maxMembers);
    const bool hasResponder = responderName.isEmpty() ? builder().fill("responderKeyHash", Octets(responderKeyHash))
                                                      : fillDer("responderName", responderName);
    return logger.setResult(hasResponder && fillTime("producedAt", producedAt) && builder().fill_tree("responses", list.get()) &&
                            fillExtensions("Extensions", extensions));
}

} // namespace CCryptoOCSP
