#include "pki/cms/document.h"
#include "pki/cms/signed_data_verification.h"
#include "pki/x509/name.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/file_input.h"
#include "tools/cryptotool/input/secret_input.h"
#include "tools/cryptotool/output/output.h"
#include "tools/cryptotool/pki/message_options.h"
#include "tools/cryptotool/pki/ocsp_input.h"
#include "tools/cryptotool/pki/report_output.h"
#include "tools/cryptotool/pki/time_text.h"
#include "tools/cryptotool/pki/validation_input.h"
#include "tools/cryptotool/pki/verdict_report.h"
#include "tools/text/safe_text.h"

#include <optional>

namespace ccrypto {

namespace {

constexpr std::string_view cmsVerifyDetails =
    R"(Verifies every signer of the CMS message in MESSAGE: signature, attributes, and the path from the certificate to an anchor, as
"cryptotool cert verify" does. Certificates, lists and OCSP responses in the message are used besides those of options: a revocation
that they prove always counts, whatever --status is. Prints a line for each signer that begins with VALID, INVALID or UNDECIDED. Ends with

    0  every signer is valid, and there is one
    1  invalid; or a file cannot be read, without a verdict
    2  misuse
    3  undecided: the status of a certificate is unknown or stale

The content of a detached signature is that of --content. The time of a signature is the signer's own word: certificates are judged
at --at. With --json: "verdict", "reason", "detail", "at" and "signers".
)";
constexpr Option contentOption = {OptionKind::text, 0, "content", "FILE", "what was signed, when the message does not hold it"};
constexpr Option extractOption = {OptionKind::text, 0, "extract", "FILE", "write the content to FILE when the verdict is valid"};
constexpr Option messageOptions[] = {
    contentOption,
    extractOption,
    {OptionKind::flag, 0, "cades", "", "demand a signed attribute that says which certificate is the signer's"},
};
constexpr Option cmsNameOptions[] = {emailOption};
constexpr auto cmsVerifyOptions = JoinOptions(messageOptions, pathOptions, cmsNameOptions, profileOptions, verdictOptions);

const char* OrderWord(AttributeOrder order)
{
    if (order == AttributeOrder::none)
        return "none";
    return order == AttributeOrder::encoded ? "encoded" : "sorted";
}

void AddTextOrNothing(Report& report, std::string_view name, std::string_view text)
{
    if (text.empty())
        report.addNothing(name);
    else
        report.add(name, text);
}

void DescribeSigner(const SignerVerdict& signer, Report& report)
{
    report.add("verdict", VerdictWord(signer.verdict));
    AddTextOrNothing(report, "reason", ReasonWord(signer.reason));
    AddTextOrNothing(report, "detail", signer.detail.view());
    AddTextOrNothing(report, "subject", signer.certificate != nullptr ? NameText(signer.certificate->subject()).view() : "");
    AddTextOrNothing(report, "digest", signer.digestName);
    AddTextOrNothing(report, "key", signer.keyText.view());
    report.addTime("signingTime", signer.signingTime);
    report.add("signedAttributes", OrderWord(signer.order));
    report.addTruth("namesCertificate", signer.namesCertificate);
    DescribePath(signer.path.path, report);
}

/// "VALID  CN=Signer, C=FI; SHA-256, RSA 2048; 2026-11-23 12:00:00Z by its own word" and the path below.
std::string SignerText(const SignerVerdict& signer, const Paint& paint)
{
    std::string text = VerdictHeading(signer.verdict, paint) + "  ";
    if (signer.verdict != Verdict::valid)
        text += std::string(ReasonWord(signer.reason)) + (signer.detail.isEmpty() ? "" : ": " + OneLine(signer.detail.view())) +
                (signer.certificate != nullptr ? "; " : "");
    if (signer.certificate != nullptr)
        text += OneLine(NameText(signer.certificate->subject()).view());
    if (*signer.digestName != '\0')
        text += std::string("; ") + signer.digestName;
    if (!signer.keyText.isEmpty())
        text += ", " + OneLine(signer.keyText.view());
    if (signer.signingTime.isValid())
        text += "; " + ReadableText(signer.signingTime) + " by its own word";
    return text + "\n" + PathText(signer.path.path);
}

std::string MessageText(const SignedDataVerdict& verdict, const Paint& paint)
{
    std::string text;
    for (const SignerVerdict& signer : verdict.signers)
        text += SignerText(signer, paint);
    if (verdict.signers.empty())
        text = VerdictHeading(verdict.verdict, paint) + "  " + std::string(ReasonWord(verdict.reason)) + ": " +
               OneLine(verdict.detail.view()) + "\n";
    return text;
}

std::string MessageJson(const SignedDataVerdict& verdict, const CCryptoDateTime& at)
{
    Report report;
    report.add("verdict", VerdictWord(verdict.verdict));
    AddTextOrNothing(report, "reason", ReasonWord(verdict.reason));
    AddTextOrNothing(report, "detail", verdict.detail.view());
    report.addTime("at", at);
    Report& signers = report.addList("signers");
    for (const SignerVerdict& signer : verdict.signers)
        DescribeSigner(signer, signers.addItem({}));
    return report.json() + "\n";
}

/// The files that the options of trust name. \return exitDone, or the exit code after the reason was printed.
int ReadTrust(Invocation& invocation, SignedDataTrust& trust)
{
    int exit = exitDone;
    for (const std::string& file : invocation.arguments().values(trustOption.name))
        if (exit == exitDone)
            exit = ReadCertificates(invocation, file, trust.anchors);
    for (const std::string& file : invocation.arguments().values(untrustedOption.name))
        if (exit == exitDone)
            exit = ReadCertificates(invocation, file, trust.candidates);
    return exit == exitDone ? ReadStatusFiles(invocation, trust.status) : exit;
}

/// The verdict on a message that is not signed data.
SignedDataVerdict VerdictWithoutSigners(const std::string& detail)
{
    SignedDataVerdict verdict;
    verdict.reason = Reason::malformed;
    verdict.detail = CCryptoString(std::string_view(detail));
    return verdict;
}

/// Adds to the details which option would have given what was missing.
void NameMissingOptions(const Invocation& invocation, bool hasContent, SignedDataVerdict& verdict)
{
    const auto name = [&](Reason reason, CCryptoString& detail) {
        const bool isContent = !hasContent && reason == Reason::malformed && detail.view() == contentIsDetached;
        detail += isContent ? "; --content was not given" : MissingAnchorText(invocation, reason);
    };
    if (!verdict.signers.empty())
        name(verdict.reason, verdict.detail);
    for (SignerVerdict& signer : verdict.signers)
        name(signer.reason, signer.detail);
}

int FinishVerification(Invocation& invocation, const SignedDataVerdict& verdict, const CCryptoDateTime& at,
                       std::span<const std::uint8_t> content)
{
    const Arguments& arguments = invocation.arguments();
    const bool isFile = arguments.value(outputOption.name, "-") != "-";
    const Paint paint = isFile ? Paint() : invocation.console().outputPaint();
    int exit = exitDone;
    if (verdict.verdict == Verdict::valid && arguments.has(extractOption.name))
        exit = WriteBytes(invocation, arguments.value(extractOption.name), content, false);
    if (exit == exitDone)
        exit = WriteText(invocation, arguments.has(jsonOption.name) ? MessageJson(verdict, at) : MessageText(verdict, paint));
    return exit != exitDone ? exit : ExitCodeOf(verdict.verdict);
}

int VerifyMessage(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string file = arguments.operand(0);
    std::vector<std::string> files = ValidationFiles(invocation);
    files.push_back(file);
    files.insert(files.end(), arguments.values(contentOption.name).begin(), arguments.values(contentOption.name).end());
    SignedDataOptions options;
    options.requiresSigningCertificate = arguments.has("cades");
    SignedDataTrust trust;
    element message;
    element detached;
    std::string reason;
    if (arguments.has(extractOption.name) && arguments.value(extractOption.name) == arguments.value(outputOption.name, "-"))
        return invocation.misuse("--extract and the report are written to the same place: give another --output");
    int exit = CheckOneStandardInput(invocation, files, {});
    if (exit == exitDone)
        exit = ReadValidationOptions(invocation, options.validation);
    if (exit == exitDone)
        exit = ReadTrust(invocation, trust);
    if (exit == exitDone)
        exit = ReadAnyMessage(invocation, file, message);
    if (exit != exitDone)
        return exit;
    std::optional<SignedContent> content;
    if (arguments.has(contentOption.name)) {
        if (!ReadWhole(invocation.console(), arguments.value(contentOption.name), detached, reason))
            return invocation.refuse(arguments.value(contentOption.name), reason);
        content.emplace(detached.bytes());
    }
    StartReason();
    CCryptoPKCS7Document document;
    if (message.isEmpty() || !document.Parse(message.bytes()))
        return FinishVerification(invocation, VerdictWithoutSigners(LastReason("it is not a CMS message")), options.validation.at,
                                  {});
    if (document.signedData() == nullptr)
        return FinishVerification(invocation, VerdictWithoutSigners("it is not a signed message"), options.validation.at, {});
    const CCryptoPKCS7SignedDataObject& data = *document.signedData();
    SignedDataVerdict verdict = VerifySignedData(data, content ? &*content : nullptr, trust, options);
    NameMissingOptions(invocation, content || data.hasContent, verdict);
    return FinishVerification(invocation, verdict, options.validation.at,
                              data.hasContent ? data.content.bytes() : detached.bytes());
}

} // namespace

const Command cmsVerifyCommand = {
    "cms", "verify", "verifies the signatures of a message", "MESSAGE", 1, 1, cmsVerifyDetails, cmsVerifyOptions, VerifyMessage};

} // namespace ccrypto
