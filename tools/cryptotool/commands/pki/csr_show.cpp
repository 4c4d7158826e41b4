#include "pki/x509/name.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/pki/names.h"
#include "tools/cryptotool/pki/object_input.h"
#include "tools/cryptotool/pki/object_report.h"
#include "tools/cryptotool/pki/report_output.h"

namespace ccrypto {

namespace {

constexpr std::string_view csrShowDetails =
    R"(Prints what the certificate requests (PKCS#10) in FILE ask for: the name, the key and the extensions. Nothing is verified: see
"cryptotool csr verify". With --json, "certificateRequests" is a list.
)";
constexpr std::string_view csrVerifyDetails =
    R"(Verifies that the owner of the key in the certificate request in FILE signed it. Prints OK and ends with 0, or prints FAILED and
ends with 1. With --json: "verified" and "subject".
)";
constexpr Option csrShowOptions[] = {jsonOption, outputOption};
constexpr Option csrVerifyOptions[] = {jsonOption, outputOption};

bool AddRequest(const element& der, Report& requests, const std::string& heading)
{
    CCryptoCertificateRequest request;
    if (!request.LoadRequest(der))
        return false;
    Report& report = requests.addItem(heading);
    report.addNumber("version", request.version());
    report.add("subject", NameText(request.subject()).view());
    report.add("key", KeyText(*request.publicKey()));
    report.add("signatureAlgorithm", AlgorithmText(request.signatureAlgorithm()));
    std::vector<std::string> attributes;
    for (const Oid& attribute : request.attributes())
        attributes.push_back(ShortNameOf(attribute));
    report.addTexts("attributes", attributes);
    DescribeExtensions(request.extensions(), report);
    report.add("sha256", Fingerprint(request.der().bytes()));
    report.add("publicKeySha256", Fingerprint(request.publicKeyInfo().bytes()));
    return true;
}

int ShowRequests(Invocation& invocation)
{
    return ShowObjects(invocation, ObjectKind::request, "certificateRequests", AddRequest);
}

int VerifyRequest(Invocation& invocation)
{
    RequestPtr request;
    if (const int exit = ReadRequest(invocation, invocation.arguments().operand(0), request); exit != exitDone)
        return exit;
    const bool isGood = request->verifySignature() == SignatureResult::good;
    Report report;
    report.addTruth("verified", isGood);
    report.add("subject", NameText(request->subject()).view());
    const bool isJson = invocation.arguments().has(jsonOption.name);
    const int exit = WriteText(invocation, isJson ? report.json() + "\n" : std::string(isGood ? "OK\n" : "FAILED\n"));
    return exit == exitDone && !isGood ? exitRefused : exit;
}

} // namespace

const Command csrShowCommand = {
    "csr", "show", "prints what certificate requests ask for", "FILE", 1, 1, csrShowDetails, csrShowOptions, ShowRequests};
const Command csrVerifyCommand = {
    "csr",        "verify", "verifies the signature of a certificate request", "FILE", 1, 1, csrVerifyDetails, csrVerifyOptions,
    VerifyRequest};

} // namespace ccrypto
