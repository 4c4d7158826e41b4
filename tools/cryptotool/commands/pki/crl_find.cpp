#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/pki/names.h"
#include "tools/cryptotool/pki/object_input.h"
#include "tools/cryptotool/pki/object_report.h"
#include "tools/cryptotool/pki/report_output.h"

namespace ccrypto {

namespace {

constexpr std::string_view crlFindDetails =
    R"(Looks for a certificate in the revocation list in FILE: SERIAL is its serial number in hexadecimal digits, as "cryptotool cert show"
prints it. Prints the entries, and ends with 1 when there is one and with 0 when there is none, so
that 0 is the good answer. The signature of the list is not verified: see "cryptotool cert verify".
)";
constexpr Option crlFindOptions[] = {
    {OptionKind::text, 0, "cert", "FILE", "look for the certificate in FILE, in place of SERIAL"},
    jsonOption,
    outputOption,
};

int ReadSerial(Invocation& invocation, element& serialNumber)
{
    const Arguments& arguments = invocation.arguments();
    const bool hasFile = arguments.has("cert");
    if (hasFile == (arguments.operands().size() > 1))
        return invocation.misuse("one of SERIAL and --cert is needed");
    if (!hasFile)
        return ParseSerial(arguments.operand(1), serialNumber) ? exitDone
                                                               : invocation.misuse("not a serial number: " + arguments.operand(1));
    CertificatePtr certificate;
    const int exit = ReadCertificate(invocation, arguments.value("cert"), certificate);
    if (exit == exitDone)
        serialNumber = certificate->serialNumber();
    return exit;
}

int FindInList(Invocation& invocation)
{
    element serialNumber;
    CrlPtr list;
    int exit = ReadSerial(invocation, serialNumber);
    if (exit == exitDone)
        exit = ReadList(invocation, invocation.arguments().operand(0), list);
    if (exit != exitDone)
        return exit;
    const std::vector<RevokedEntry> entries = list->find(serialNumber.bytes());
    Report report;
    report.add("serialNumber", SerialText(serialNumber.bytes())).inJsonOnly();
    report.addTruth("listed", !entries.empty());
    Report& revoked = report.addList("revoked");
    revoked.withoutName();
    for (const RevokedEntry& entry : entries)
        DescribeEntry(entry, revoked.addItem({}));
    exit = WriteReport(invocation, report);
    return exit == exitDone && !entries.empty() ? exitRefused : exit;
}

} // namespace

const Command crlFindCommand = {
    "crl",          "find",    "looks for a certificate in a revocation list", "FILE [SERIAL]", 1, 2, crlFindDetails,
    crlFindOptions, FindInList};

} // namespace ccrypto
