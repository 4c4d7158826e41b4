#include "tools/cryptotool/pki/verdict_report.h"

#include "core/base/ascii.h"
#include "pki/x509/name.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/pki/names.h"
#include "tools/cryptotool/pki/object_report.h"
#include "tools/cryptotool/pki/time_text.h"
#include "tools/text/safe_text.h"

#include <algorithm>

namespace ccrypto {

namespace {

constexpr std::size_t maxSubjectColumn = 60;

std::string SubjectOf(const PathStep& step)
{
    return std::string(NameText(step.certificate->subject()).view());
}

void DescribeStep(const PathStep& step, Report& report)
{
    const StatusInformation& status = step.status;
    report.add("subject", SubjectOf(step));
    report.add("serial", SerialText(step.certificate->serialNumber().bytes()));
    report.add("sha256", Fingerprint(step.certificate->der().bytes()));
    report.add("status", StatusWord(status.status));
    if (status.source == StatusInformation::Source::none)
        report.addNothing("source");
    else
        report.add("source", status.source == StatusInformation::Source::crl ? "crl" : "ocsp");
    report.addTime("thisUpdate", status.thisUpdate);
    report.addTime("nextUpdate", status.nextUpdate);
}

/// The columns of a text that is printed: continuation bytes of UTF-8 have none.
std::size_t WidthOf(std::string_view text)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char character) { return (static_cast<unsigned char>(character) & 0xC0) != 0x80; }));
}

Color ColorOf(Verdict verdict)
{
    if (verdict == Verdict::undecided)
        return Color::warning;
    return verdict == Verdict::valid ? Color::good : Color::bad;
}

} // namespace

const char* VerdictWord(Verdict verdict)
{
    if (verdict == Verdict::undecided)
        return "undecided";
    return verdict == Verdict::valid ? "valid" : "invalid";
}

int ExitCodeOf(Verdict verdict)
{
    if (verdict == Verdict::undecided)
        return exitUndecided;
    return verdict == Verdict::valid ? exitDone : exitRefused;
}

void DescribePath(const std::vector<PathStep>& path, Report& report)
{
    Report& list = report.addList("path");
    for (const PathStep& step : path)
        DescribeStep(step, list.addItem({}));
}

void DescribeVerdict(const PathVerdict& verdict, Report& report)
{
    report.add("verdict", VerdictWord(verdict.verdict));
    if (verdict.verdict == Verdict::valid) {
        report.addNothing("reason");
        report.addNothing("certificate");
        report.addNothing("detail");
    } else {
        report.add("reason", ReasonWord(verdict.reason));
        report.addNumber("certificate", verdict.certificate);
        report.add("detail", verdict.detail.view());
    }
    report.addTime("at", verdict.at);
    DescribePath(verdict.path, report);
    Report& policies = report.addList("policies");
    for (const Oid& policy : verdict.policies)
        policies.add({}, OidText(policy));
    Report& work = report.addGroup("work");
    work.addNumber("steps", verdict.work.steps);
    work.addNumber("signatures", verdict.work.signatures);
}

std::string VerdictHeading(Verdict verdict, const Paint& paint)
{
    std::string word = VerdictWord(verdict);
    for (char& character : word)
        character = static_cast<char>(character - 'a' + 'A');
    return paint(ColorOf(verdict), word);
}

std::string ReasonText(const PathVerdict& verdict)
{
    if (verdict.verdict == Verdict::valid)
        return {};
    std::string text = "  " + std::string(ReasonWord(verdict.reason)) + ", certificate " + std::to_string(verdict.certificate);
    return verdict.detail.isEmpty() ? text : text + ": " + OneLine(verdict.detail.view());
}

std::string StatusText(const StatusInformation& status)
{
    std::string text(StatusWord(status.status));
    std::string detail(status.detail.view());
    if (status.nextUpdate.isValid())
        detail += (detail.empty() ? "until " : ", until ") + ReadableText(status.nextUpdate);
    return detail.empty() ? text : text + " (" + OneLine(detail) + ")";
}

std::string PathText(const std::vector<PathStep>& path)
{
    std::size_t width = 0;
    for (const PathStep& step : path)
        width = std::max(width, WidthOf(OneLine(SubjectOf(step))));
    width = std::min(width, maxSubjectColumn);
    std::string text;
    for (std::size_t index = 0; index < path.size(); ++index) {
        const std::string subject = OneLine(SubjectOf(path[index]));
        const std::string number = std::to_string(index);
        text.append(number.size() < 3 ? 3 - number.size() : 0, ' ').append(number).append("  ").append(subject);
        text.append(WidthOf(subject) < width ? width - WidthOf(subject) : 0, ' ').append("    ");
        text.append(StatusText(path[index].status)).append("\n");
    }
    return text;
}

std::string VerdictText(const PathVerdict& verdict, const Paint& paint)
{
    return VerdictHeading(verdict.verdict, paint) + ReasonText(verdict) + "\n" + PathText(verdict.path);
}

} // namespace ccrypto
