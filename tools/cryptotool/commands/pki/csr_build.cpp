#include "pki/x509/certificate_request.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/keys/key_input.h"
#include "tools/cryptotool/pki/issuing_options.h"

namespace ccrypto {

namespace {

constexpr std::string_view csrBuildDetails =
    R"(Makes a certificate request (PKCS#10) for the private key in KEY and signs it with that key. The issuer
decides whether it takes over the extensions. NAME is written as names are printed, with the last relative name first: "CN=Signer, O=Example, C=FI".
)";
constexpr Option csrBuildOptions[] = {
    subjectOption,   isCaOption,      pathLengthOption,    setKeyUsageOption,   setPurposeOption,          alternativeNameOption,
    setPolicyOption, extensionOption, signatureHashOption, passwordSecret.file, passwordSecret.descriptor, keyEncodingOption,
    outputOption,
};

int BuildRequest(Invocation& invocation)
{
    const std::string file = invocation.arguments().operand(0);
    CCrypto_X509_ValueList subject;
    CCrypto_X509_ValueList extensions;
    KeyInput input;
    int exit = ReadSubjectOption(invocation, true, subject);
    if (exit == exitDone)
        exit = ReadCertificateExtensions(invocation, extensions);
    if (exit == exitDone)
        exit = ReadKey(invocation, {file}, KeyHalf::privateHalf, input);
    if (exit != exitDone)
        return exit;
    StartReason();
    const element der =
        CCryptoCertificateRequest::BuildRequest(*input.key, SignatureHash(invocation.arguments()), subject, extensions);
    if (der.isEmpty())
        return invocation.refuse(file, LastReason("no request can be made"));
    return WriteObject(invocation, "CERTIFICATE REQUEST", der);
}

} // namespace

const Command csrBuildCommand = {"csr",           "build",     "makes a certificate request", "KEY", 1, 1, csrBuildDetails,
                                 csrBuildOptions, BuildRequest};

} // namespace ccrypto
