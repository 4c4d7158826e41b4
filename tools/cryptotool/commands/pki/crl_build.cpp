#include "core/base/ascii.h"
#include "pki/x509/certificate_builder.h"
#include "pki/x509/extension_builder.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/pki/issuing_options.h"
#include "tools/cryptotool/pki/names.h"
#include "tools/cryptotool/pki/time_text.h"
#include "tools/cryptotool/pki/validation_input.h"

#include <algorithm>
#include <cstdio>
#include <optional>

namespace ccrypto {

namespace {

constexpr std::uint64_t usualDaysOfList = 30;

constexpr std::string_view crlBuildDetails =
    R"(Issues a revocation list. SERIAL is in hexadecimal digits, REASON a name of RFC 5280, 5.3.1, such as keyCompromise, and TIME when
the certificate was revoked (now). --previous takes over the entries of an earlier list.
)";
constexpr Option thisUpdateOption = {OptionKind::text, 0, "this-update", "TIME", "2026-11-23T12:00:00Z (now)"};
constexpr Option nextUpdateOption = {OptionKind::text, 0, "next-update", "TIME", "in place of --days"};
constexpr Option revokeOption = {OptionKind::text, 0, "revoke", "SERIAL[,REASON[,TIME]]", "revoke this certificate", true};
constexpr Option crlBuildOptions[] = {
    issuerOption,
    issuerKeyOption,
    revokeOption,
    {OptionKind::text, 0, "previous", "FILE", "a revocation list whose entries stay"},
    {OptionKind::number, 0, "number", "N", "the number of the list (1)"},
    {OptionKind::number, 0, "delta", "N", "only what changed since the list with the number N"},
    thisUpdateOption,
    nextUpdateOption,
    {OptionKind::number, 0, "days", "N", "the next list comes in N days (30)"},
    extensionOption,
    signatureHashOption,
    passwordSecret.file,
    passwordSecret.descriptor,
    keyEncodingOption,
    outputOption,
};

/// The octets of an INTEGER.
element IntegerOf(std::uint64_t number)
{
    element octets;
    char digits[32];
    std::snprintf(digits, sizeof digits, "%llx", static_cast<unsigned long long>(number));
    return ParseSerial(digits, octets) ? octets : element();
}

std::optional<RevocationReason> ReasonOf(std::string_view name)
{
    for (std::uint8_t number = 0; number <= static_cast<std::uint8_t>(RevocationReason::aaCompromise); ++number)
        if (number != 7 && SameInAnyCase(name, RevocationReasonName(static_cast<RevocationReason>(number))))
            return static_cast<RevocationReason>(number);
    return std::nullopt;
}

/// "SERIAL,REASON,TIME", of which the first is needed.
bool ParseRevocation(std::string_view text, const CCryptoDateTime& now, RevokedEntry& entry)
{
    const std::size_t first = std::min(text.find(','), text.size());
    const std::size_t second = std::min(text.find(',', first + 1), text.size());
    entry.revocationDate = now;
    if (!ParseSerial(text.substr(0, first), entry.serialNumber))
        return false;
    if (first < text.size() && second > first + 1) {
        entry.reason = ReasonOf(text.substr(first + 1, second - first - 1));
        if (!entry.reason)
            return false;
    }
    if (second < text.size()) {
        entry.revocationDate = ParseRfc3339(text.substr(second + 1)).value_or(CCryptoDateTime());
        if (!entry.revocationDate.isValid())
            return false;
    }
    return true;
}

int ReadTimes(Invocation& invocation, RevocationListFields& fields)
{
    const Arguments& arguments = invocation.arguments();
    if (arguments.has("days") && arguments.has(nextUpdateOption.name))
        return invocation.misuse("--days and --next-update are mutually exclusive");
    int exit = ReadTimeOption(invocation, thisUpdateOption, fields.thisUpdate);
    if (exit == exitDone)
        exit = ReadTimeOption(invocation, nextUpdateOption, fields.nextUpdate);
    if (exit == exitDone && !arguments.has(nextUpdateOption.name))
        fields.nextUpdate = DaysLater(fields.thisUpdate, arguments.number("days", usualDaysOfList));
    return exit != exitDone || fields.nextUpdate.isValid() ? exit : invocation.misuse("--days is too long");
}

int ReadEntries(Invocation& invocation, RevocationListFields& fields)
{
    const Arguments& arguments = invocation.arguments();
    for (const std::string& file : arguments.values("previous")) {
        CrlPtr previous;
        if (const int exit = ReadList(invocation, file, previous); exit != exitDone)
            return exit;
        for (std::uint32_t index = 0; index < previous->entryCount(); ++index) {
            std::optional<RevokedEntry> entry = previous->entry(index);
            if (!entry)
                return invocation.refuse(file, "entry " + std::to_string(index) + " is malformed");
            fields.entries.push_back(std::move(*entry));
        }
    }
    for (const std::string& text : arguments.values(revokeOption.name))
        if (!ParseRevocation(text, fields.thisUpdate, fields.entries.emplace_back()))
            return invocation.misuse("--revoke needs SERIAL[,REASON[,TIME]], not " + text);
    return exitDone;
}

int AddListExtensions(Invocation& invocation, const IssuerInput& issuer, CCrypto_X509_ValueList& extensions)
{
    const Arguments& arguments = invocation.arguments();
    const ReadExtensions read = ReadAllExtensions(issuer.certificate->extensions(), ExtensionOwner::certificate);
    extensions.add(BuildAuthorityKeyIdentifier(read.subjectKeyIdentifier.value_or(KeyIdentifierOf(*issuer.key))));
    extensions.add(BuildCrlNumber(IntegerOf(arguments.number("number", 1))));
    if (arguments.has("delta"))
        extensions.add(BuildDeltaCrlIndicator(IntegerOf(arguments.number("delta", 0))));
    return ReadPlainExtensions(invocation, extensions);
}

int BuildList(Invocation& invocation)
{
    RevocationListFields fields;
    IssuerInput issuer;
    int exit = ReadTimes(invocation, fields);
    if (exit == exitDone)
        exit = ReadIssuer(invocation, invocation.arguments().values("previous"), issuer);
    if (exit == exitDone)
        exit = ReadEntries(invocation, fields);
    if (exit == exitDone)
        exit = AddListExtensions(invocation, issuer, fields.extensions);
    if (exit != exitDone)
        return exit;
    fields.issuer = issuer.certificate->subject().GetDerEncodedElement();
    StartReason();
    const element der = IssueRevocationList(fields, *issuer.key, SignatureHash(invocation.arguments()));
    if (der.isEmpty())
        return invocation.refuse(invocation.arguments().value(issuerOption.name), LastReason("no revocation list can be issued"));
    return WriteObject(invocation, "X509 CRL", der);
}

} // namespace

const Command crlBuildCommand = {"crl", "build", "issues a revocation list", "", 0, 0, crlBuildDetails, crlBuildOptions, BuildList};

} // namespace ccrypto
