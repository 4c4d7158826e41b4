#include "pki/ocsp/ocsp_extensions.h"
#include "pki/ocsp/response_verification.h"
#include "pki/x509/name.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/secret_input.h"
#include "tools/cryptotool/output/output.h"
#include "tools/cryptotool/pki/names.h"
#include "tools/cryptotool/pki/ocsp_input.h"
#include "tools/cryptotool/pki/report_output.h"
#include "tools/cryptotool/pki/time_text.h"
#include "tools/cryptotool/pki/validation_input.h"
#include "tools/text/safe_text.h"

namespace ccrypto {

namespace {

constexpr std::string_view ocspVerifyDetails =
    R"(Says what the OCSP response in RESPONSE proves of the certificate of --cert, or of --serial, that --issuer issued. It must be signed
by the issuer, by a certificate that the issuer's key issued for OCSPSigning and that is valid, or by a certificate of --responder.
The issuer itself is not verified: see "cryptotool cert verify --ocsp". Prints GOOD, REVOKED, UNKNOWN, STALE or BAD. Ends with

    0  good
    1  revoked; bad: nothing is proved; or a file cannot be read, without a verdict
    2  misuse
    3  unknown to the responder, or stale: not of this time

With --request, the response must have the nonce of that request, or none unless --require-nonce is given. With --json: "status",
"failure", "detail", "at", "serial", "revocationTime", "revocationReason", "producedAt", "thisUpdate", "nextUpdate", "responder" and
"signatures".
)";
constexpr Option certOption = {OptionKind::text, 0, "cert", "FILE", "the certificate"};
constexpr Option serialOption = {OptionKind::text, 0, "serial", "HEX", "in place of --cert: its serial number"};
constexpr Option requestOption = {OptionKind::text, 0, "request", "FILE", "the request that this answers"};
constexpr Option responderOption = {OptionKind::text, 0, "responder", "FILE", "a responder that is trusted for this", true};
constexpr Option responderCandidateOption = {
    OptionKind::text, 0, "untrusted", "FILE", "certificates of responders that the response does not hold", true};
constexpr Option responseOptions[] = {
    ocspIssuerOption,
    certOption,
    serialOption,
    requestOption,
    {OptionKind::flag, 0, "require-nonce", "", "with --request: refuse a response without a nonce"},
    responderOption,
    responderCandidateOption,
    timeOption,
};
constexpr auto ocspVerifyOptions = JoinOptions(responseOptions, verdictOptions);

int ReadNonce(Invocation& invocation, OcspOptions& options)
{
    const Arguments& arguments = invocation.arguments();
    options.requireNonce = arguments.has("require-nonce");
    if (!arguments.has(requestOption.name))
        return options.requireNonce ? invocation.misuse("--require-nonce requires --request") : exitDone;
    CCryptoOCSP::COCSPRequest request;
    const std::string file = arguments.value(requestOption.name);
    if (const int exit = ReadOcspRequest(invocation, file, request); exit != exitDone)
        return exit;
    OcspNonce nonce = ReadOcspNonce(request.tbsRequest.extensions);
    options.nonce = std::move(nonce.octets);
    return nonce.state != OcspNonce::State::malformed ? exitDone : invocation.refuse(file, "the nonce of the request is malformed");
}

int ReadOcspOptions(Invocation& invocation, OcspOptions& options)
{
    const Arguments& arguments = invocation.arguments();
    constexpr std::uint64_t maxSeconds = 100'000'000'000;
    options.clockSkewSeconds = static_cast<std::int64_t>(
        std::min(arguments.number(clockSkewOption.name, static_cast<std::uint64_t>(options.clockSkewSeconds)), maxSeconds));
    options.maxAgeSeconds = static_cast<std::int64_t>(
        std::min(arguments.number(maxAgeOption.name, static_cast<std::uint64_t>(options.maxAgeSeconds)), maxSeconds));
    options.allowWeak = arguments.has(allowWeakOption.name);
    int exit = ReadTimeOption(invocation, timeOption, options.at);
    if (exit == exitDone)
        exit = ReadNonce(invocation, options);
    for (const std::string& file : arguments.values(responderOption.name))
        if (exit == exitDone)
            exit = ReadCertificates(invocation, file, options.namedResponders);
    for (const std::string& file : arguments.values(responderCandidateOption.name))
        if (exit == exitDone)
            exit = ReadCertificates(invocation, file, options.candidates);
    return exit;
}

int ReadAskedSerial(Invocation& invocation, element& serialNumber)
{
    const Arguments& arguments = invocation.arguments();
    if (arguments.has(certOption.name) == arguments.has(serialOption.name))
        return invocation.misuse("one of --cert and --serial is needed");
    if (arguments.has(serialOption.name)) {
        const std::string text = arguments.value(serialOption.name);
        return ParseSerial(text, serialNumber) ? exitDone : invocation.misuse("not a serial number: " + text);
    }
    CertificatePtr certificate;
    const int exit = ReadCertificate(invocation, arguments.value(certOption.name), certificate);
    if (exit == exitDone)
        serialNumber = certificate->serialNumber();
    return exit;
}

int ExitCodeOfStatus(OcspStatus status)
{
    if (status == OcspStatus::good)
        return exitDone;
    return status == OcspStatus::unknown || status == OcspStatus::stale ? exitUndecided : exitRefused;
}

void DescribeOcspVerdict(const OcspVerdict& verdict, const CCryptoDateTime& at, const element& serialNumber, Report& report)
{
    report.add("status", OcspStatusWord(verdict.status));
    if (verdict.failure == OcspFailure::none)
        report.addNothing("failure");
    else
        report.add("failure", OcspFailureWord(verdict.failure));
    if (verdict.detail.isEmpty())
        report.addNothing("detail");
    else
        report.add("detail", verdict.detail.view());
    report.addTime("at", at);
    report.add("serial", SerialText(serialNumber.bytes()));
    report.addTime("revocationTime", verdict.revocationTime);
    if (verdict.revocationReason)
        report.add("revocationReason", RevocationReasonName(*verdict.revocationReason));
    else
        report.addNothing("revocationReason");
    report.addTime("producedAt", verdict.producedAt);
    report.addTime("thisUpdate", verdict.thisUpdate);
    report.addTime("nextUpdate", verdict.nextUpdate);
    if (verdict.responder != nullptr)
        report.add("responder", NameText(verdict.responder->subject()).view());
    else
        report.addNothing("responder");
    report.addNumber("signatures", verdict.signatures);
}

std::string OcspVerdictText(const OcspVerdict& verdict, const Paint& paint)
{
    std::string word(OcspStatusWord(verdict.status));
    for (char& character : word)
        character = static_cast<char>(character - 'a' + 'A');
    const bool isGood = verdict.status == OcspStatus::good;
    std::string text = paint(isGood ? Color::good : Color::bad, word);
    std::string more(OcspFailureWord(verdict.failure));
    if (!verdict.detail.isEmpty())
        more += (more.empty() ? "" : ": ") + std::string(verdict.detail.view());
    if (isGood)
        more += (more.empty() ? "this update " : ", this update ") + ReadableText(verdict.thisUpdate);
    if (isGood && verdict.nextUpdate.isValid())
        more += ", until " + ReadableText(verdict.nextUpdate);
    return text + (more.empty() ? "" : "  " + OneLine(more)) + "\n";
}

int VerifyOcsp(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string file = arguments.operand(0);
    std::vector<std::string> files = {file};
    for (const Option& option : {certOption, requestOption, responderOption, responderCandidateOption})
        files.insert(files.end(), arguments.values(option.name).begin(), arguments.values(option.name).end());
    CertificatePtr issuer;
    OcspOptions options;
    element serialNumber;
    element message;
    int exit = ReadOcspIssuer(invocation, files, issuer);
    if (exit == exitDone)
        exit = ReadOcspOptions(invocation, options);
    if (exit == exitDone)
        exit = ReadAskedSerial(invocation, serialNumber);
    if (exit == exitDone)
        exit = ReadAnyMessage(invocation, file, message);
    if (exit != exitDone)
        return exit;
    CCryptoOCSP::COCSPResponse response;
    OcspVerdict verdict;
    StartReason();
    if (!message.isEmpty() && response.LoadResponse(message)) {
        verdict = VerifyOcspResponse(response, serialNumber, *issuer, options);
    } else {
        verdict.failure = OcspFailure::malformed;
        verdict.detail = CCryptoString(std::string_view(LastReason("it is not an OCSP response")));
    }
    Report report;
    DescribeOcspVerdict(verdict, options.at, serialNumber, report);
    const bool isFile = arguments.value(outputOption.name, "-") != "-";
    const Paint paint = isFile ? Paint() : invocation.console().outputPaint();
    exit = WriteText(invocation, arguments.has(jsonOption.name) ? report.json() + "\n" : OcspVerdictText(verdict, paint));
    return exit != exitDone ? exit : ExitCodeOfStatus(verdict.status);
}

} // namespace

const Command ocspVerifyCommand = {
    "ocsp", "verify", "says what an OCSP response proves", "RESPONSE", 1, 1, ocspVerifyDetails, ocspVerifyOptions, VerifyOcsp};

} // namespace ccrypto
