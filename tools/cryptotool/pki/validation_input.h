#pragma once

#include "pki/validation/path_validation.h"
#include "tools/cryptotool/cli/command.h"
#include "tools/cryptotool/cli/invocation.h"

#include <string>
#include <vector>

// What "cert verify" and "cms verify" are asked: anchors, candidates, status, and what the certificate must allow.

namespace ccrypto {

constexpr Option trustOption = {OptionKind::text, 0, "trust", "FILE", "anchors; any certificate may be one", true};
constexpr Option untrustedOption = {OptionKind::text, 0, "untrusted", "FILE", "candidates between the subject and an anchor", true};
constexpr Option crlOption = {OptionKind::text, 0, "crl", "FILE", "revocation lists", true};
constexpr Option ocspOption = {OptionKind::text, 0, "ocsp", "FILE", "OCSP responses", true};
constexpr Option statusOption = {OptionKind::choice, 0, "status", "none|leaf|chain",
                                 "whose status is required (chain with --crl or --ocsp, else none)"};
constexpr Option timeOption = {OptionKind::text, 0, "at", "TIME", "validate at 2026-11-23T12:00:00Z, fraction allowed (now)"};
constexpr Option policyOption = {OptionKind::text, 0, "policy", "OID", "accept this policy (any)", true};
constexpr Option explicitPolicyOption = {OptionKind::flag, 0, "explicit-policy", "", "demand an accepted policy"};
constexpr Option inhibitAnyPolicyOption = {OptionKind::flag, 0, "inhibit-any-policy", "", "anyPolicy is not processed"};
constexpr Option inhibitMappingOption = {OptionKind::flag, 0, "inhibit-mapping", "", "policies are not mapped"};
constexpr Option purposeOption = {
    OptionKind::text, 0, "eku", "NAME|OID", "demand this extended key usage: serverAuth, emailProtection, ...", true};
constexpr Option keyUsageOption = {
    OptionKind::text, 0, "key-usage", "NAME", "demand this key usage: digitalSignature, nonRepudiation, ...", true};
constexpr Option hostOption = {OptionKind::text, 0, "host", "NAME", "demand this DNS name in the alternative names"};
constexpr Option ipOption = {OptionKind::text, 0, "ip", "ADDRESS", "demand this IP address in the alternative names"};
constexpr Option emailOption = {OptionKind::text, 0, "email", "ADDRESS", "demand this e-mail address in the alternative names"};
constexpr Option maxDepthOption = {OptionKind::number, 0, "max-depth", "N",
                                   "at most N intermediates, self-issued ones not counted"};
constexpr Option strictOption = {OptionKind::flag, 0, "strict", "", "demand the profile of RFC 5280, section 4"};
constexpr Option allowWeakOption = {OptionKind::flag, 0, "allow-weak", "", "accept SHA-1 and RSA keys below 2048 bits; MD5 never"};
constexpr Option clockSkewOption = {OptionKind::number, 0, "clock-skew", "SECONDS",
                                    "how far the clocks of those who publish status may be off (300)"};
constexpr Option maxAgeOption = {OptionKind::number, 0, "max-age", "SECONDS",
                                 "use status that names no next update for so long after it was published (86400)"};

// What the commands that print a verdict have in common.
constexpr Option pathOptions[] = {
    trustOption,          untrustedOption,      crlOption,
    ocspOption,           statusOption,         timeOption,
    policyOption,         explicitPolicyOption, inhibitAnyPolicyOption,
    inhibitMappingOption, purposeOption,        keyUsageOption,
};
constexpr Option profileOptions[] = {maxDepthOption, strictOption};
constexpr Option verdictOptions[] = {allowWeakOption, clockSkewOption, maxAgeOption, jsonOption, outputOption};

/// Everything that a validation needs besides the subject.
struct ValidationInput {
    ValidationOptions options;
    CertificatePool pool;
    StatusSources sources;
};

/// The options that an invocation has and knows; those that its command does not have count as not given. Files are not read.
/// \return exitDone or exitUsage.
int ReadValidationOptions(Invocation& invocation, ValidationOptions& options);
/// The time of timeOption, or the present. \return exitDone or exitUsage.
int ReadTimeOption(Invocation& invocation, const Option& option, CCryptoDateTime& time);

/// What to add to the detail of a verdict for this reason: that no option gave an anchor; empty where this explains nothing.
const char* MissingAnchorText(const Invocation& invocation, Reason reason);

/// The files of anchors, candidates and status that the invocation names.
std::vector<std::string> ValidationFiles(const Invocation& invocation);
/// Reads those. What does not parse is ignored, with a warning. \return exitDone, or the exit code after the reason was printed,
/// when a file cannot be read.
int ReadValidationFiles(Invocation& invocation, ValidationInput& input);

/// Reads the files of status that the invocation names. \return as above.
int ReadStatusFiles(Invocation& invocation, StatusSources& sources);

/// Reads a file of OCSP responses. Other blocks are ignored, with a warning. \return as above.
int ReadResponses(Invocation& invocation, const std::string& file,
                  std::vector<std::shared_ptr<const CCryptoOCSP::COCSPResponse>>& responses);

} // namespace ccrypto
