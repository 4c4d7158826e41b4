#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/pki/object_input.h"
#include "tools/cryptotool/pki/object_report.h"
#include "tools/cryptotool/pki/report_output.h"

namespace ccrypto {

namespace {

constexpr std::string_view certShowDetails =
    R"(Prints what the certificates in FILE say: names, validity, key, extensions and fingerprints, those of the whole certificate and
of its SubjectPublicKeyInfo. Nothing is verified: see "cryptotool cert verify". With --json, "certificates" is a list.
)";
constexpr Option certShowOptions[] = {jsonOption, outputOption};

std::string HeadingOf(std::size_t index, std::size_t count)
{
    return count > 1 ? "certificate " + std::to_string(index + 1) + " of " + std::to_string(count) : std::string();
}

int ShowCertificates(Invocation& invocation)
{
    const std::string file = invocation.arguments().operand(0);
    std::vector<DataBlock> blocks;
    int exit = ReadObjectsOrRefuse(invocation, file, ObjectKind::certificate, blocks);
    if (exit != exitDone)
        return exit;
    Report report;
    Report& list = report.addList("certificates");
    list.withoutName();
    for (std::size_t index = 0; index < blocks.size(); ++index) {
        StartReason();
        if (const CertificatePtr certificate = LoadCertificate(blocks[index].bytes.bytes()))
            DescribeCertificate(*certificate, list.addItem(HeadingOf(index, blocks.size())));
        else
            exit = invocation.refuse(file, BlockName(blocks, index) + LastReason("it is not a certificate"));
    }
    const int written = list.isEmpty() ? exit : WriteReport(invocation, report);
    return written != exitDone ? written : exit;
}

} // namespace

const Command certShowCommand = {"cert",          "show",          "prints what certificates say", "FILE", 1, 1, certShowDetails,
                                 certShowOptions, ShowCertificates};

} // namespace ccrypto
