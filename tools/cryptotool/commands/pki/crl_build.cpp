#include "core/base/ascii.h"
#include "pki/x509/certificate_builder.h"
#include "pki/x509/extension_builder.h"
#include "pki/x509/name.h"
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
constexpr Option previousOption = {OptionKind::text, 0, "previous", "FILE", "a revocation list whose entries stay"};
constexpr Option crlBuildOptions[] = {
    issuerOption,
    issuerKeyOption,
    revokeOption,
    previousOption,
    {OptionKind::number, 0, "number", "N", "the number of the list (1, or the next after --previous)"},
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

constexpr std::uint8_t unusedReason = 7; ///< RFC 5280, 5.3.1

std::optional<RevocationReason> ReasonOf(std::string_view name)
{
    for (std::uint8_t number = 0; number <= static_cast<std::uint8_t>(RevocationReason::aaCompromise); ++number)
        if (number != unusedReason && SameInAnyCase(name, RevocationReasonName(static_cast<RevocationReason>(number))))
            return static_cast<RevocationReason>(number);
    return std::nullopt;
}

std::string ReasonNames()
{
    std::string names;
    for (std::uint8_t number = 0; number <= static_cast<std::uint8_t>(RevocationReason::aaCompromise); ++number)
        if (number != unusedReason)
            names.append(names.empty() ? "" : ", ").append(RevocationReasonName(static_cast<RevocationReason>(number)));
    return names;
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

/// The list of --previous, of the same issuer; null when there is none.
int ReadPrevious(Invocation& invocation, const CCrypto_X509_Certificate& issuer, CrlPtr& previous)
{
    if (!invocation.arguments().has(previousOption.name))
        return exitDone;
    const std::string file = invocation.arguments().value(previousOption.name);
    if (const int exit = ReadList(invocation, file, previous); exit != exitDone)
        return exit;
    const auto name = ComparableName::Read(previous->issuer().GetDerEncodedElement().bytes());
    const bool isSame = name && name == ComparableName::Read(issuer.subject().GetDerEncodedElement().bytes());
    return isSame ? exitDone
                  : invocation.refuse(file, "it is a list of another issuer: " + std::string(NameText(previous->issuer()).view()));
}

/// The fields refer to the previous list, which may be null.
int ReadEntries(Invocation& invocation, const CCrypto_X509_CRL* previous, RevocationListFields& fields)
{
    for (std::uint32_t index = 0; previous != nullptr && index < previous->entryCount(); ++index)
        if (std::optional<RevokedEntry> entry = previous->entry(index))
            fields.entries.push_back(std::move(*entry));
    const Arguments& arguments = invocation.arguments();
    for (const std::string& text : arguments.values(revokeOption.name))
        if (!ParseRevocation(text, fields.thisUpdate, fields.entries.emplace_back()))
            return invocation.misuse("--revoke needs SERIAL[,REASON[,TIME]], not " + text + "; reasons are " + ReasonNames());
    return exitDone;
}

/// One more than that of the previous list; 1 without one.
element NextNumber(const CCrypto_X509_CRL* previous)
{
    const std::optional<element> number =
        previous != nullptr ? ReadAllExtensions(previous->extensions(), ExtensionOwner::list).crlNumber : std::nullopt;
    element next = number.value_or(element("", 1));
    std::uint32_t index = next.length();
    while (index != 0 && ++next.data()[index - 1] == 0)
        --index;
    return next;
}

int AddListExtensions(Invocation& invocation, const IssuerInput& issuer, const CCrypto_X509_CRL* previous,
                      CCrypto_X509_ValueList& extensions)
{
    const Arguments& arguments = invocation.arguments();
    const ReadExtensions read = ReadAllExtensions(issuer.certificate->extensions(), ExtensionOwner::certificate);
    extensions.add(BuildAuthorityKeyIdentifier(read.subjectKeyIdentifier.value_or(KeyIdentifierOf(*issuer.key))));
    const bool isGiven = arguments.has("number");
    extensions.add(BuildCrlNumber(isGiven ? IntegerOf(arguments.number("number", 1)) : NextNumber(previous)));
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
        exit = ReadIssuer(invocation, invocation.arguments().values(previousOption.name), issuer);
    CrlPtr previous;
    if (exit == exitDone)
        exit = ReadPrevious(invocation, *issuer.certificate, previous);
    if (exit == exitDone)
        exit = ReadEntries(invocation, previous.get(), fields);
    if (exit == exitDone)
        exit = AddListExtensions(invocation, issuer, previous.get(), fields.extensions);
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
