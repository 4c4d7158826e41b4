#include "pki/pkcs12/pkcs12.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/keys/key_input.h"
#include "tools/cryptotool/keys/key_output.h"
#include "tools/cryptotool/output/output.h"
#include "tools/cryptotool/pki/object_input.h"

#include <algorithm>
#include <limits>

namespace ccrypto {

namespace {

constexpr std::string_view p12ExportDetails =
    R"(Makes a PKCS#12 file of the certificates in the files CERT and, with --key, of the private key that belongs to one of them. Give
the whole chain: readers cannot ask for what is missing. It is encrypted with AES-256 and has a MAC with SHA-256. Only
its owner can read a file of -o (on Windows, those whom its directory grants access). Passwords without an option are
asked for, the new one twice: --password-file and --password-fd are for the key that is read, --new-password-file and
--new-password-fd for the file.
)";
constexpr Option keyOption = {OptionKind::text, 0, "key", "FILE", "the private key"};
constexpr Option nameOption = {OptionKind::text, 0, "name", "TEXT", "what readers call the key and its certificate"};
constexpr Option macOption = {OptionKind::choice, 0, "mac", "hmac|pbmac1",
                              "how the MAC is made (hmac); few programs read pbmac1 yet"};
/// The key, the certificates and the MAC take as many each, of what a file may take in all.
constexpr Option fileIterationsOption = {OptionKind::number, 0, "iterations", "N",
                                         "encryption with a password: iterations of PBKDF2, 1000 to 16000000 (600000)"};
constexpr Option p12ExportOptions[] = {
    keyOption,
    nameOption,
    macOption,
    keyCipherOption,
    fileIterationsOption,
    keySchemeOption,
    passwordSecret.file,
    passwordSecret.descriptor,
    newPasswordSecret.file,
    newPasswordSecret.descriptor,
    outputOption,
};

int ReadExportOptions(Invocation& invocation, SCryptoPKCS12Options& options)
{
    const Arguments& arguments = invocation.arguments();
    if (const int exit = ReadPasswordEncryption(invocation, options.encryption); exit != exitDone)
        return exit;
    options.macIterations = options.encryption.iterations;
    options.friendlyName = CCryptoString(std::string_view(arguments.value(nameOption.name)));
    if (arguments.value(macOption.name) == "pbmac1")
        options.mac = SCryptoPKCS12Options::Mac::pbmac1;
    if (!arguments.has(keySchemeOption.name))
        return exitDone;
    if (arguments.has(macOption.name))
        return invocation.misuse("--mac and --scheme are mutually exclusive");
    // Programs that read no newer scheme read no other hash.
    options.macHash = algorithm::sha1;
    return exitDone;
}

int ReadExportedKey(Invocation& invocation, const std::vector<CertificatePtr>& certificates, KeyInput& input)
{
    const std::string file = invocation.arguments().value(keyOption.name);
    if (const int exit = ReadKey(invocation, {file}, KeyHalf::privateHalf, input); exit != exitDone)
        return exit;
    const bool hasCertificate = std::ranges::any_of(
        certificates, [&](const CertificatePtr& certificate) { return IsSameKey(*certificate->publicKey(), *input.key); });
    return hasCertificate ? exitDone : invocation.refuse(file, "none of the certificates is that of the key");
}

int ExportStore(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    SCryptoPKCS12Options options;
    if (const int exit = ReadExportOptions(invocation, options); exit != exitDone)
        return exit;
    std::vector<std::string> files = arguments.operands();
    if (arguments.has(keyOption.name))
        files.push_back(arguments.value(keyOption.name));
    if (const int exit = CheckOneStandardInput(invocation, files, {passwordSecret, newPasswordSecret}); exit != exitDone)
        return exit;
    std::vector<CertificatePtr> certificates;
    for (const std::string& file : arguments.operands())
        if (const int exit = ReadCertificatesOrRefuse(invocation, file, certificates); exit != exitDone)
            return exit;
    KeyInput input;
    if (arguments.has(keyOption.name))
        if (const int exit = ReadExportedKey(invocation, certificates, input); exit != exitDone)
            return exit;
    element password;
    if (const int exit = ReadSecret(invocation, newPasswordSecret, Asking::twice, password); exit != exitDone)
        return exit;

    Output output(invocation.console(), arguments.value(outputOption.name), Output::Content::binary);
    output.keepPrivate();
    if (!output.open())
        return RefuseOutput(invocation, output);
    StartReason();
    const element file = CCryptoPKCS12::Save(input.key.get(), certificates, password.view(), options);
    if (file.isEmpty())
        return invocation.refuse(output.name(), LastReason("the file cannot be made"));
    return FinishOutput(invocation, output, output.write(file.bytes()));
}

} // namespace

const Command p12ExportCommand = {"p12",
                                  "export",
                                  "makes a PKCS#12 file of a key and certificates",
                                  "CERT...",
                                  1,
                                  std::numeric_limits<std::size_t>::max(),
                                  p12ExportDetails,
                                  p12ExportOptions,
                                  ExportStore};

} // namespace ccrypto
