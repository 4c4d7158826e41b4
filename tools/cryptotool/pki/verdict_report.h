#pragma once

#include "pki/validation/verdict.h"
#include "tools/cryptotool/cli/color.h"
#include "tools/cryptotool/pki/report.h"

#include <string>
#include <vector>

namespace ccrypto {

/// "valid", "invalid", "undecided".
[[nodiscard]] const char* VerdictWord(Verdict verdict);
/// exitDone, exitRefused or exitUndecided.
[[nodiscard]] int ExitCodeOf(Verdict verdict);

/// Members "verdict", "reason", "certificate", "detail", "at", "path", "policies" and "work".
void DescribeVerdict(const PathVerdict& verdict, Report& report);
/// The member "path".
void DescribePath(const std::vector<PathStep>& path, Report& report);
/// The verdict in capital letters on a line, with the reason after it, and a line for each certificate of the path.
[[nodiscard]] std::string VerdictText(const PathVerdict& verdict, const Paint& paint);
/// A line for each certificate: its number, its subject and its status.
[[nodiscard]] std::string PathText(const std::vector<PathStep>& path);
/// "VALID", "INVALID" or "UNDECIDED", painted.
[[nodiscard]] std::string VerdictHeading(Verdict verdict, const Paint& paint);
/// "good (CRL 7, until 2026-12-01 00:00:00Z)".
[[nodiscard]] std::string StatusText(const StatusInformation& status);
/// "  revoked, certificate 0: keyCompromise since ..."; empty when valid.
[[nodiscard]] std::string ReasonText(const PathVerdict& verdict);

} // namespace ccrypto
