#include "pki/cms/document.h"
#include "pki/cms/enveloped_data.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/file_input.h"
#include "tools/cryptotool/pki/issuing_options.h"
#include "tools/cryptotool/pki/message_options.h"
#include "tools/cryptotool/pki/ocsp_input.h"

#include <algorithm>

namespace ccrypto {

namespace {

constexpr std::string_view cmsEncryptDetails =
    R"(Encrypts FILE, or standard input, for the owners of certificates and writes a CMS message (enveloped data; RFC 5652, 6) as DER. The
certificates have RSA keys; nothing else of them is verified. Anybody can write such a message: it says nothing of its sender.
)";
constexpr std::string_view cmsDecryptDetails =
    R"(Opens the CMS message (enveloped data) in MESSAGE with the certificate of one of its recipients and its private key. Whatever is wrong
with the message, one text says so.
)";

constexpr Option recipientOption = {OptionKind::text, 0, "recipient", "FILE", "the certificate of a recipient"};
constexpr Option recipientKeyOption = {OptionKind::text, 0, "key", "FILE", "its private key"};
constexpr Option cmsEncryptOptions[] = {
    {OptionKind::text, 0, "recipient", "FILE", "certificates of recipients, all of FILE", true},
    {OptionKind::choice, 0, "cipher", "aes-128-cbc|aes-192-cbc|aes-256-cbc", "the cipher of the content (aes-256-cbc)"},
    {OptionKind::choice, 0, "oaep", "sha1|sha256|sha384|sha512", "encrypt its key with OAEP and this hash, not with PKCS#1 v1.5"},
    messageEncodingOption,
    outputOption,
};
constexpr Option cmsDecryptOptions[] = {
    recipientOption, recipientKeyOption, passwordSecret.file, passwordSecret.descriptor, outputOption,
};

EnvelopeOptions EnvelopeOf(const Arguments& arguments)
{
    EnvelopeOptions options;
    const std::string cipher = arguments.value("cipher");
    if (cipher == "aes-128-cbc")
        options.cipher = algorithm::aes128Cbc;
    else if (cipher == "aes-192-cbc")
        options.cipher = algorithm::aes192Cbc;
    const std::string hash = arguments.value("oaep", "sha256");
    if (arguments.has("oaep"))
        options.keyPadding = SCryptoPadding::Scheme::masked;
    if (hash == "sha1")
        options.maskingHash = algorithm::sha1;
    else if (hash == "sha384")
        options.maskingHash = algorithm::sha384;
    else if (hash == "sha512")
        options.maskingHash = algorithm::sha512;
    return options;
}

/// Adds all of the file. \return exitDone, or the exit code after the reason was printed.
int ReadRecipients(Invocation& invocation, const std::string& file, std::vector<CertificatePtr>& recipients)
{
    const std::size_t before = recipients.size();
    if (const int exit = ReadCertificatesOrRefuse(invocation, file, recipients); exit != exitDone)
        return exit;
    const bool areRsaKeys = std::all_of(recipients.begin() + static_cast<std::ptrdiff_t>(before), recipients.end(),
                                        [](const CertificatePtr& recipient) {
                                            const auto& key = recipient->publicKey();
                                            return key != nullptr && key->algorithmId() == algorithm::rsaEncryption;
                                        });
    return areRsaKeys ? exitDone : invocation.refuse(file, "its key is not RSA; messages are encrypted for RSA keys only");
}

int EncryptMessage(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string file = arguments.fileOperand(0);
    if (!arguments.has(recipientOption.name))
        return invocation.misuse("--recipient is needed");
    std::vector<std::string> files = arguments.values(recipientOption.name);
    files.push_back(file);
    int exit = CheckOneStandardInput(invocation, files, {});
    std::vector<CertificatePtr> recipients;
    for (const std::string& recipient : arguments.values(recipientOption.name))
        if (exit == exitDone)
            exit = ReadRecipients(invocation, recipient, recipients);
    if (exit != exitDone)
        return exit;
    element content;
    std::string reason;
    if (!ReadWhole(invocation.console(), file, content, reason))
        return invocation.refuse(file, reason);
    StartReason();
    const element message = EncryptForRecipients(content.bytes(), recipients, EnvelopeOf(arguments));
    return message.isEmpty() ? invocation.refuse(file, LastReason("it cannot be encrypted")) : WriteMessage(invocation, message);
}

int DecryptMessage(Invocation& invocation)
{
    const std::string file = invocation.arguments().operand(0);
    IssuerInput recipient;
    element message;
    element content;
    int exit = ReadCertificateAndKey(invocation, recipientOption, recipientKeyOption, {file}, recipient);
    if (exit == exitDone)
        exit = ReadMessage(invocation, file, message);
    if (exit != exitDone)
        return exit;
    StartReason();
    if (!DecryptAsRecipient(message.bytes(), *recipient.certificate, *recipient.key, content))
        return invocation.refuse(file, LastReason("it cannot be decrypted"));
    return WriteBytes(invocation, invocation.arguments().value(outputOption.name), content.bytes(), true);
}

} // namespace

const Command cmsEncryptCommand = {
    "cms", "encrypt", "encrypts a file for recipients", "[FILE]", 0, 1, cmsEncryptDetails, cmsEncryptOptions, EncryptMessage};
const Command cmsDecryptCommand = {
    "cms", "decrypt", "opens an encrypted message", "MESSAGE", 1, 1, cmsDecryptDetails, cmsDecryptOptions, DecryptMessage};

} // namespace ccrypto
