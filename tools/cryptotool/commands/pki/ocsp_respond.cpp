#include "pki/ocsp/responder.h"
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
a request is answered by malformedRequest, without a signature.
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
    signatureHashOption,
    passwordSecret.file,
    passwordSecret.descriptor,
    outputOption,
};

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
    const OcspResponder responder = {*issuer, *signer.certificate, *signer.key, SignatureHash(arguments), arguments.has("by-name")};
    const element response = AnswerFromCrl(request, *list, responder, at);
    if (response.isEmpty())
        return invocation.refuse(file, LastReason("no response can be made"));
    Output output(invocation.console(), arguments.value(outputOption.name), Output::Content::binary);
    return FinishOutput(invocation, output, output.open() && output.write(response.bytes()));
}

} // namespace

const Command ocspRespondCommand = {
    "ocsp", "respond", "answers an OCSP request from a revocation list", "REQUEST", 1, 1, ocspRespondDetails, ocspRespondOptions,
    Respond};

} // namespace ccrypto
