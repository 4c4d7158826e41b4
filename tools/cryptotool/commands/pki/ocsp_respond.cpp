#include "pki/ocsp/responder.h"
#include "pki/ocsp/response_verification.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/output/output.h"
#include "tools/cryptotool/pki/issuing_options.h"
#include "tools/cryptotool/pki/ocsp_input.h"
#include "tools/cryptotool/pki/validation_input.h"

namespace ccrypto {

namespace {

constexpr std::string_view ocspRespondDetails =
    R"(Answers the OCSP request in REQUEST from a revocation list of the issuer, --ca: good, revoked, or unknown for certificates of other
issuers. The response is signed by --signer, or by the issuer itself, holds as long as the list, and is written as DER. What is not
a request is answered by malformedRequest, without a signature. A response that "cryptotool ocsp verify" would not accept, as one from
an old list or by a certificate that is not for OCSPSigning, is written with a warning.
)";
constexpr Option signerOption = {OptionKind::text, 0, "signer", "FILE",
                                 "a certificate that the issuer issued for OCSPSigning (the issuer)"};
constexpr Option responderKeyOption = {OptionKind::text, 0, "key", "FILE", "the private key of the one who signs"};
constexpr Option listOption = {OptionKind::text, 0, "crl", "FILE", "the revocation list"};
constexpr Option ocspRespondOptions[] = {
    issuerOption,
    listOption,
    signerOption,
    responderKeyOption,
    {OptionKind::flag, 0, "by-name", "", "give the responder by its name, not by its key"},
    {OptionKind::text, 0, "at", "TIME", "when the response is made: 2026-11-23T12:00:00Z (now)"},
    {OptionKind::flag, 0, "allow-weak", "", "answer from a list that is signed with SHA-1; MD5 never"},
    signatureHashOption,
    passwordSecret.file,
    passwordSecret.descriptor,
    outputOption,
};

/// Warns where whoever asked will not believe the response, unless the responder is named there in advance.
void WarnOfRefusal(Invocation& invocation, const element& der, const CCrypto_X509_Certificate& issuer, const CCryptoDateTime& at)
{
    CCryptoOCSP::COCSPResponse response;
    if (!response.LoadResponse(der))
        return;
    if (response.responseStatus != CCryptoOCSP::ResponseStatus::successful)
        return invocation.warn(invocation.arguments().operand(0),
                               std::string("answered by ") + CCryptoOCSP::ResponseStatusName(response.responseStatus));
    OcspOptions options;
    options.at = at;
    options.allowWeak = invocation.arguments().has("allow-weak");
    for (const auto& single : response.basicResponse().tbsResponseData.responses) {
        const OcspVerdict verdict = VerifyOcspResponse(response, single->certID.serialNumber, issuer, options);
        if (verdict.failure == OcspFailure::wrongCertificate)
            continue;
        if (verdict.status == OcspStatus::bad || verdict.status == OcspStatus::stale)
            invocation.warn("the response", std::string(verdict.status == OcspStatus::stale ? OcspStatusWord(verdict.status)
                                                                                            : OcspFailureWord(verdict.failure)) +
                                                ": " + std::string(verdict.detail.view()));
        return;
    }
}

int Respond(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string file = arguments.operand(0);
    for (const Option& option : {issuerOption, listOption})
        if (!arguments.has(option.name))
            return invocation.misuse("--" + std::string(option.name) + " is needed");
    const bool isDelegated = arguments.has(signerOption.name);
    IssuerInput signer;
    CertificatePtr issuer;
    CrlPtr list;
    element request;
    CCryptoDateTime at;
    int exit = ReadTimeOption(invocation, timeOption, at);
    if (exit == exitDone)
        exit = ReadCertificateAndKey(invocation, isDelegated ? signerOption : issuerOption, responderKeyOption,
                                     {file, arguments.value(listOption.name)}, signer);
    issuer = signer.certificate;
    if (exit == exitDone && isDelegated)
        exit = ReadCertificate(invocation, arguments.value(issuerOption.name), issuer);
    if (exit == exitDone)
        exit = ReadList(invocation, arguments.value(listOption.name), list);
    if (exit == exitDone)
        exit = ReadMessage(invocation, file, request);
    if (exit != exitDone)
        return exit;
    StartReason();
    const OcspResponder responder = {.issuer = *issuer,
                                     .certificate = *signer.certificate,
                                     .key = *signer.key,
                                     .hash = SignatureHash(arguments),
                                     .byName = arguments.has("by-name"),
                                     .allowWeak = arguments.has("allow-weak")};
    const element response = AnswerFromCrl(request, *list, responder, at);
    if (response.isEmpty())
        return invocation.refuse(file, LastReason("no response can be made"));
    WarnOfRefusal(invocation, response, *issuer, at);
    Output output(invocation.console(), arguments.value(outputOption.name), Output::Content::binary);
    return FinishOutput(invocation, output, output.open() && output.write(response.bytes()));
}

} // namespace

const Command ocspRespondCommand = {
    "ocsp", "respond", "answers an OCSP request from a revocation list", "REQUEST", 1, 1, ocspRespondDetails, ocspRespondOptions,
    Respond};

} // namespace ccrypto
