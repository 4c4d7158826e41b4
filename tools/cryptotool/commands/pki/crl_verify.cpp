#include "pki/validation/list_verification.h"
#include "pki/x509/name.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/secret_input.h"
#include "tools/cryptotool/output/output.h"
#include "tools/cryptotool/pki/names.h"
#include "tools/cryptotool/pki/object_input.h"
#include "tools/cryptotool/pki/report_output.h"
#include "tools/cryptotool/pki/time_text.h"
#include "tools/cryptotool/pki/validation_input.h"
#include "tools/cryptotool/pki/verdict_report.h"
#include "tools/text/safe_text.h"

namespace ccrypto {

namespace {

constexpr std::string_view crlVerifyDetails =
    R"(Says whether the revocation list in CRL was signed by its issuer and is of the present time. With --trust, the issuer's certificate
must be valid, with a path to an anchor; it is --issuer, or is found by name among the anchors and candidates. With --issuer alone,
that certificate is taken as it is. Prints VALID, INVALID or UNDECIDED, and the path. Ends with

    0  valid
    1  invalid; or a file cannot be read, without a verdict
    2  misuse
    3  undecided: the list is too old

With --json: "verdict", "reason", "detail", "at", "issuer", "number", "thisUpdate", "nextUpdate", "entries" and "path". The reasons are
those of "cryptotool cert verify". Whether the issuer's certificate is revoked is not looked for.
)";
constexpr Option listIssuerOption = {OptionKind::text, 0, "issuer", "FILE", "the certificate that must have signed the list"};
constexpr Option listIssuerOptions[] = {trustOption, untrustedOption, listIssuerOption, timeOption, strictOption};
constexpr auto crlVerifyOptions = JoinOptions(listIssuerOptions, verdictOptions);

int CheckCrlVerifyOptions(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const bool hasAnchors = arguments.has(trustOption.name);
    if (!hasAnchors && !arguments.has(listIssuerOption.name))
        return invocation.misuse("--trust or --issuer is needed");
    for (const Option& option : {untrustedOption, strictOption})
        if (!hasAnchors && arguments.has(option.name))
            return invocation.misuse("--" + std::string(option.name) + " requires --trust");
    return exitDone;
}

/// The one list of the file; null when it does not load. \return exitDone, or the exit code after the reason was printed.
int ReadListToVerify(Invocation& invocation, const std::string& file, CrlPtr& list)
{
    std::vector<DataBlock> blocks;
    if (const int exit = ReadObjects(invocation, file, ObjectKind::list, blocks); exit != exitDone)
        return exit;
    if (const int exit = RefuseSeveral(invocation, file, ObjectKind::list, blocks); exit != exitDone)
        return exit;
    StartReason();
    auto loaded = std::make_shared<CCrypto_X509_CRL>();
    if (!blocks.empty() && loaded->LoadCRL(blocks.front().bytes))
        list = std::move(loaded);
    return exitDone;
}

std::string CrlNumberText(const CCrypto_X509_CRL& list)
{
    const ReadExtensions extensions = ReadAllExtensions(list.extensions(), ExtensionOwner::list);
    return extensions.crlNumber ? NumberText(extensions.crlNumber->bytes()) : std::string();
}

void AddTextOrNothing(Report& report, std::string_view name, std::string_view text)
{
    if (text.empty())
        report.addNothing(name);
    else
        report.add(name, text);
}

void DescribeListVerdict(const ListVerdict& verdict, const CrlPtr& list, const CCryptoDateTime& at, Report& report)
{
    report.add("verdict", VerdictWord(verdict.verdict));
    AddTextOrNothing(report, "reason", ReasonWord(verdict.reason));
    AddTextOrNothing(report, "detail", verdict.detail.view());
    report.addTime("at", at);
    AddTextOrNothing(report, "issuer", list != nullptr ? NameText(list->issuer()).view() : std::string_view());
    AddTextOrNothing(report, "number", list != nullptr ? CrlNumberText(*list) : std::string());
    report.addTime("thisUpdate", list != nullptr ? list->thisUpdate() : CCryptoDateTime());
    report.addTime("nextUpdate", list != nullptr ? list->nextUpdate() : CCryptoDateTime());
    report.addNumber("entries", list != nullptr ? list->entryCount() : 0);
    DescribePath(verdict.path, report);
}

std::string ListVerdictText(const ListVerdict& verdict, const CrlPtr& list, const Paint& paint)
{
    std::string text = VerdictHeading(verdict.verdict, paint);
    if (verdict.verdict == Verdict::valid) {
        const std::string number = CrlNumberText(*list);
        text += "  CRL" + (number.empty() ? "" : " " + number) + " of " + OneLine(NameText(list->issuer()).view());
        if (list->nextUpdate().isValid())
            text += ", until " + ReadableText(list->nextUpdate());
    } else {
        text += "  " + std::string(ReasonWord(verdict.reason));
        if (!verdict.detail.isEmpty())
            text += ": " + OneLine(verdict.detail.view());
    }
    return text + "\n" + PathText(verdict.path);
}

int VerifyRevocationList(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string file = arguments.operand(0);
    std::vector<std::string> files = ValidationFiles(invocation);
    files.push_back(file);
    if (arguments.has(listIssuerOption.name))
        files.push_back(arguments.value(listIssuerOption.name));
    ValidationInput input;
    CertificatePtr issuer;
    CrlPtr list;
    int exit = CheckCrlVerifyOptions(invocation);
    if (exit == exitDone)
        exit = CheckOneStandardInput(invocation, files, {});
    if (exit == exitDone)
        exit = ReadValidationOptions(invocation, input.options);
    if (exit == exitDone)
        exit = ReadValidationFiles(invocation, input);
    if (exit == exitDone && arguments.has(listIssuerOption.name))
        exit = ReadCertificate(invocation, arguments.value(listIssuerOption.name), issuer);
    if (exit == exitDone)
        exit = ReadListToVerify(invocation, file, list);
    if (exit != exitDone)
        return exit;
    ListVerdict verdict;
    if (list != nullptr) {
        verdict = VerifyList(list, issuer, input.pool, arguments.has(trustOption.name), input.options);
    } else {
        verdict.reason = Reason::malformed;
        verdict.detail = CCryptoString(std::string_view(LastReason("it is not a revocation list")));
    }
    Report report;
    DescribeListVerdict(verdict, list, input.options.at, report);
    const bool isFile = arguments.value(outputOption.name, "-") != "-";
    const Paint paint = isFile ? Paint() : invocation.console().outputPaint();
    exit = WriteText(invocation, arguments.has(jsonOption.name) ? report.json() + "\n" : ListVerdictText(verdict, list, paint));
    return exit != exitDone ? exit : ExitCodeOf(verdict.verdict);
}

} // namespace

const Command crlVerifyCommand = {"crl",
                                  "verify",
                                  "says whether a revocation list is its issuer's",
                                  "CRL",
                                  1,
                                  1,
                                  crlVerifyDetails,
                                  crlVerifyOptions,
                                  VerifyRevocationList};

} // namespace ccrypto
