#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/secret_input.h"
#include "tools/cryptotool/output/output.h"
#include "tools/cryptotool/pki/object_input.h"
#include "tools/cryptotool/pki/report_output.h"
#include "tools/cryptotool/pki/validation_input.h"
#include "tools/cryptotool/pki/verdict_report.h"

namespace ccrypto {

namespace {

constexpr std::string_view certVerifyDetails =
    R"(Builds paths from the first certificate in CERT to an anchor, over the further ones in CERT and those of --untrusted, and validates
them: RFC 5280, section 6. Prints VALID, INVALID or UNDECIDED, and the path. Ends with

    0  valid
    1  invalid; or a file cannot be read, without a verdict
    2  misuse
    3  undecided: the status of a certificate is unknown or stale

With --json: "verdict", "reason", "certificate" (counted from 0, the subject), "detail", "at", "path", "policies" and "work".
Whatever does not parse besides the subject is ignored, with a warning.
)";
constexpr Option certNameOptions[] = {hostOption, ipOption, emailOption};
constexpr auto certVerifyOptions = JoinOptions(pathOptions, certNameOptions, profileOptions, verdictOptions);

/// The verdict on a subject that does not load.
PathVerdict VerdictWithoutSubject(const ValidationOptions& options, LoadFailure failure)
{
    PathVerdict verdict;
    verdict.verdict = Verdict::invalid;
    verdict.reason = failure == LoadFailure::unsupportedKey ? Reason::unsupportedAlgorithm : Reason::malformed;
    verdict.detail = CCryptoString(LastReason("it is not a certificate"));
    verdict.at = options.at;
    return verdict;
}

/// The first certificate of the file; the others become candidates. Null, with `failure`, when the first does not load.
/// \return exitDone, or the exit code after the reason was printed.
int ReadSubject(Invocation& invocation, const std::string& file, CertificatePool& pool, CertificatePtr& subject,
                LoadFailure& failure)
{
    std::vector<DataBlock> blocks;
    if (const int exit = ReadObjects(invocation, file, ObjectKind::certificate, blocks); exit != exitDone)
        return exit;
    for (std::size_t index = 1; index < blocks.size(); ++index) {
        StartReason();
        CertificatePtr candidate = LoadCertificate(blocks[index].bytes.bytes());
        if (candidate == nullptr)
            invocation.warn(file, BlockName(blocks, index) + "ignored: " + LastReason("it is not a certificate"));
        else if (pool.add(std::move(candidate), false) == nullptr)
            return invocation.refuse(file,
                                     "more than " + std::to_string(CertificatePool::maxCertificates) + " certificates are given");
    }
    StartReason();
    failure = LoadFailure::malformed;
    if (!blocks.empty())
        subject = LoadCertificate(blocks.front().bytes.bytes(), &failure);
    return exitDone;
}

int PrintVerdict(Invocation& invocation, const PathVerdict& verdict)
{
    Report report;
    DescribeVerdict(verdict, report);
    const bool isJson = invocation.arguments().has(jsonOption.name);
    const bool isFile = invocation.arguments().value(outputOption.name, "-") != "-";
    const Paint paint = isFile ? Paint() : invocation.console().outputPaint();
    const int written = WriteText(invocation, isJson ? report.json() + "\n" : VerdictText(verdict, paint));
    return written != exitDone ? written : ExitCodeOf(verdict.verdict);
}

int VerifyCertificate(Invocation& invocation)
{
    const std::string file = invocation.arguments().operand(0);
    std::vector<std::string> files = ValidationFiles(invocation);
    files.push_back(file);
    ValidationInput input;
    CertificatePtr subject;
    LoadFailure failure = LoadFailure::none;
    int exit = CheckOneStandardInput(invocation, files, {});
    if (exit == exitDone)
        exit = ReadValidationOptions(invocation, input.options);
    if (exit == exitDone)
        exit = ReadValidationFiles(invocation, input);
    if (exit == exitDone)
        exit = ReadSubject(invocation, file, input.pool, subject, failure);
    if (exit != exitDone)
        return exit;
    PathVerdict verdict = subject != nullptr ? ValidateCertificate(subject, input.pool, input.sources, input.options)
                                             : VerdictWithoutSubject(input.options, failure);
    verdict.detail += MissingAnchorText(invocation, verdict.reason);
    return PrintVerdict(invocation, verdict);
}

} // namespace

const Command certVerifyCommand = {
    "cert", "verify", "says whether a certificate is valid", "CERT", 1, 1, certVerifyDetails, certVerifyOptions, VerifyCertificate};

} // namespace ccrypto
