#include "pki/ocsp/ocsp_request.h"

#include "pki/x509/name.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/output/output.h"
#include "tools/cryptotool/pki/names.h"
#include "tools/cryptotool/pki/object_input.h"
#include "tools/cryptotool/pki/ocsp_input.h"

namespace ccrypto {

namespace {

constexpr std::string_view ocspRequestDetails =
    R"(Asks for the status of all certificates in the files CERT..., which --issuer must have issued, and of those of --serial. Writes an OCSP request
(RFC 6960) as DER. It has a nonce of 32 random bytes (RFC 9654): keep the request for "cryptotool ocsp verify --request".
)";
constexpr Option ocspRequestOptions[] = {
    ocspIssuerOption,
    {OptionKind::text, 0, "serial", "HEX", "ask for the certificate with this serial number", true},
    {OptionKind::choice, 0, "hash", "sha1|sha256", "the hash function by which certificates are named (sha1)"},
    {OptionKind::flag, 0, "no-nonce", "", "leave out the nonce"},
    outputOption,
};

constexpr std::size_t maxAsked = 10000;

int Ask(Invocation& invocation, const CCrypto_X509_Certificate& issuer, const element& serialNumber,
        CCryptoOCSP::COCSPRequest& request)
{
    StartReason();
    const algorithm::Id hash = invocation.arguments().value("hash") == "sha256" ? algorithm::sha256 : algorithm::sha1;
    return request.Ask(issuer, serialNumber, hash) ? exitDone : invocation.refuse({}, LastReason("the request cannot be made"));
}

/// Refuses the certificate of another issuer: no responder would know it by this one.
int AskForOne(Invocation& invocation, const std::string& file, const CCrypto_X509_Certificate& issuer,
              const CCrypto_X509_Certificate& certificate, CCryptoOCSP::COCSPRequest& request)
{
    const auto name = ComparableName::Read(issuer.subject().GetDerEncodedElement().bytes());
    const bool isNamed = name && name == ComparableName::Read(certificate.issuer().GetDerEncodedElement().bytes());
    if (!isNamed)
        return invocation.refuse(file,
                                 "it names another issuer than --issuer: " + std::string(NameText(certificate.issuer()).view()));
    if (issuer.publicKey() == nullptr || certificate.verifySignature(*issuer.publicKey()) != SignatureResult::good)
        return invocation.refuse(file, "the key of --issuer did not sign it");
    return Ask(invocation, issuer, certificate.serialNumber(), request);
}

int AskForAll(Invocation& invocation, const CCrypto_X509_Certificate& issuer, CCryptoOCSP::COCSPRequest& request)
{
    const Arguments& arguments = invocation.arguments();
    for (const std::string& file : arguments.operands()) {
        std::vector<CertificatePtr> certificates;
        if (const int exit = ReadCertificatesOrRefuse(invocation, file, certificates); exit != exitDone)
            return exit;
        for (const CertificatePtr& certificate : certificates)
            if (const int exit = AskForOne(invocation, file, issuer, *certificate, request); exit != exitDone)
                return exit;
    }
    for (const std::string& text : arguments.values("serial")) {
        element serialNumber;
        if (!ParseSerial(text, serialNumber))
            return invocation.misuse("not a serial number: " + text);
        if (const int exit = Ask(invocation, issuer, serialNumber, request); exit != exitDone)
            return exit;
    }
    return exitDone;
}

int MakeRequest(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    if (arguments.operands().empty() && !arguments.has("serial"))
        return invocation.misuse("CERT or --serial is needed");
    CertificatePtr issuer;
    CCryptoOCSP::COCSPRequest request;
    int exit = ReadOcspIssuer(invocation, arguments.operands(), issuer);
    if (exit == exitDone)
        exit = AskForAll(invocation, *issuer, request);
    if (exit != exitDone)
        return exit;
    StartReason();
    element der;
    if (arguments.has("no-nonce") || request.AddNonce())
        der = request.BuildDer();
    if (der.isEmpty())
        return invocation.refuse({}, LastReason("the request cannot be made"));
    Output output(invocation.console(), arguments.value(outputOption.name), Output::Content::binary);
    return FinishOutput(invocation, output, output.open() && output.write(der.bytes()));
}

} // namespace

const Command ocspRequestCommand = {
    "ocsp",     "request", "asks for the status of certificates", "[CERT...]", 0, maxAsked, ocspRequestDetails, ocspRequestOptions,
    MakeRequest};

} // namespace ccrypto
