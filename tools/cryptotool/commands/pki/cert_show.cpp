#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/pki/object_report.h"

namespace ccrypto {

namespace {

constexpr std::string_view certShowDetails =
    R"(Prints what the certificates in FILE say: names, validity, key, extensions and fingerprints, those of the whole certificate and
of its SubjectPublicKeyInfo. Nothing is verified: see "cryptotool cert verify". With --json, "certificates" is a list.
)";
constexpr Option certShowOptions[] = {jsonOption, outputOption};

bool AddCertificate(const element& der, Report& list, const std::string& heading)
{
    const CertificatePtr certificate = LoadCertificate(der.bytes());
    if (certificate != nullptr)
        DescribeCertificate(*certificate, list.addItem(heading));
    return certificate != nullptr;
}

int ShowCertificates(Invocation& invocation)
{
    return ShowObjects(invocation, ObjectKind::certificate, "certificates", AddCertificate);
}

} // namespace

const Command certShowCommand = {"cert",          "show",          "prints what certificates say", "FILE", 1, 1, certShowDetails,
                                 certShowOptions, ShowCertificates};

} // namespace ccrypto
