#include "core/text/hex.h"
#include "pki/ocsp/ocsp_extensions.h"
#include "pki/x509/name.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/pki/names.h"
#include "tools/cryptotool/pki/object_report.h"
#include "tools/cryptotool/pki/ocsp_input.h"
#include "tools/cryptotool/pki/report_output.h"

namespace ccrypto {

namespace {

constexpr std::string_view ocspShowDetails =
    R"(Prints what the OCSP request or response in FILE says. Nothing is verified: see "cryptotool ocsp verify".
)";
constexpr Option ocspShowOptions[] = {jsonOption, outputOption};

std::string HexDigits(const element& octets)
{
    return std::string(HexText(octets.bytes()).view());
}

void DescribeCertId(const CCryptoOCSP::CCertID& id, Report& report)
{
    report.add("hashAlgorithm", AlgorithmText(id.hashAlgorithm));
    report.add("issuerNameHash", HexDigits(id.issuerNameHash));
    report.add("issuerKeyHash", HexDigits(id.issuerKeyHash));
    report.add("serialNumber", SerialText(id.serialNumber.bytes()));
}

void DescribeNonce(const CCrypto_X509_ValueList& extensions, Report& report)
{
    const OcspNonce nonce = ReadOcspNonce(extensions);
    if (nonce.state == OcspNonce::State::present)
        report.add("nonce", HexDigits(nonce.octets));
    else if (nonce.state == OcspNonce::State::malformed)
        report.add("nonce", "malformed");
    else
        report.addNothing("nonce");
}

void DescribeRequest(const CCryptoOCSP::COCSPRequest& request, Report& report)
{
    report.add("type", "request");
    DescribeNonce(request.tbsRequest.extensions, report);
    Report& list = report.addList("requests");
    for (std::size_t index = 0; index < request.tbsRequest.requestList.size(); ++index)
        DescribeCertId(request.tbsRequest.requestList[index]->certID, list.addItem("request " + std::to_string(index)));
    DescribeExtensions(request.tbsRequest.extensions, report);
}

void DescribeSingle(const CCryptoOCSP::CSingleResponse& single, Report& report)
{
    using Kind = CCryptoOCSP::CCertStatus::Kind;
    DescribeCertId(single.certID, report);
    const CCryptoOCSP::CCertStatus& status = single.certStatus;
    report.add("status", status.kind == Kind::good ? "good" : status.kind == Kind::revoked ? "revoked" : "unknown");
    report.addTime("revocationTime", status.revocationTime);
    if (status.revocationReason)
        report.add("revocationReason", RevocationReasonName(*status.revocationReason));
    else
        report.addNothing("revocationReason");
    report.addTime("thisUpdate", single.thisUpdate);
    report.addTime("nextUpdate", single.nextUpdate);
}

void DescribeResponse(const CCryptoOCSP::COCSPResponse& response, Report& report)
{
    report.add("type", "response");
    const char* const name = CCryptoOCSP::ResponseStatusName(response.responseStatus);
    report.add("responseStatus",
               name != nullptr ? std::string(name) : std::to_string(static_cast<unsigned>(response.responseStatus)));
    if (!response.hasResponseBytes)
        return;
    const CCryptoOCSP::CBasicOCSPResponse& basic = response.basicResponse();
    report.add("responseType", ShortNameOf(response.responseBytes.responseType.view()));
    if (basic.isEmpty())
        return;
    const CCryptoOCSP::CTBSResponseData& data = basic.tbsResponseData;
    if (!data.responderName.isEmpty())
        report.add("responderName", NameText(data.responderName.bytes()).view());
    else
        report.add("responderKeyHash", HexDigits(data.responderKeyHash));
    report.addTime("producedAt", data.producedAt);
    report.add("signatureAlgorithm", AlgorithmText(basic.signatureAlgorithm));
    DescribeNonce(data.extensions, report);
    Report& list = report.addList("responses");
    for (std::size_t index = 0; index < data.responses.size(); ++index)
        DescribeSingle(*data.responses[index], list.addItem("response " + std::to_string(index)));
    DescribeExtensions(data.extensions, report);
    std::vector<std::string> certificates;
    for (const CertificatePtr& certificate : basic.certificates())
        certificates.emplace_back(NameText(certificate->subject()).view());
    report.addTexts("certificates", certificates);
}

int ShowOcsp(Invocation& invocation)
{
    const std::string file = invocation.arguments().operand(0);
    element message;
    if (const int exit = ReadMessage(invocation, file, message); exit != exitDone)
        return exit;
    Report report;
    CCryptoOCSP::COCSPRequest request;
    CCryptoOCSP::COCSPResponse response;
    StartReason();
    if (response.LoadResponse(message))
        DescribeResponse(response, report);
    else if (request.LoadRequest(message))
        DescribeRequest(request, report);
    else
        return invocation.refuse(file, LastReason("it is not an OCSP request or response"));
    return WriteReport(invocation, report);
}

} // namespace

const Command ocspShowCommand = {
    "ocsp", "show", "prints what an OCSP request or response says", "FILE", 1, 1, ocspShowDetails, ocspShowOptions, ShowOcsp};

} // namespace ccrypto
