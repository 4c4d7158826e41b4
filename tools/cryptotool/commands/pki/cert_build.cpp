#include "pki/x509/certificate_builder.h"
#include "pki/x509/extension_builder.h"
#include "pki/x509/name.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/keys/key_input.h"
#include "tools/cryptotool/pki/issuing_options.h"
#include "tools/cryptotool/pki/names.h"
#include "tools/cryptotool/pki/time_text.h"
#include "tools/cryptotool/pki/validation_input.h"

namespace ccrypto {

namespace {

constexpr std::uint64_t usualDays = 365;

constexpr std::string_view certBuildDetails =
    R"(Issues a certificate. Without --ca, FILE is a private key, which signs its own certificate. With --ca and --ca-key, FILE is a
certificate request (PKCS#10), whose own signature must be good, and the subject is the request's unless --subject is given.
Extensions of the request are used only with --copy-extensions; those that options ask for take their place.

Key identifiers are added. There is no check that the issuer may issue this: a test authority wants wrong certificates, too. NAME is
written as names are printed, with the last relative name first: "CN=Signer, O=Example, C=FI".
)";

constexpr Option notBeforeOption = {OptionKind::text, 0, "not-before", "TIME", "2026-11-23T12:00:00Z (now)"};
constexpr Option notAfterOption = {OptionKind::text, 0, "not-after", "TIME", "in place of --days"};
constexpr Option certBuildOptions[] = {
    issuerOption,
    issuerKeyOption,
    subjectOption,
    notBeforeOption,
    notAfterOption,
    {OptionKind::number, 0, "days", "N", "valid for N days (365)"},
    {OptionKind::text, 0, "serial", "HEX", "the serial number (random)"},
    isCaOption,
    pathLengthOption,
    setKeyUsageOption,
    setPurposeOption,
    alternativeNameOption,
    setPolicyOption,
    crlUrlOption,
    ocspUrlOption,
    issuerUrlOption,
    extensionOption,
    {OptionKind::flag, 0, "copy-extensions", "", "with --ca: use the extensions of the request"},
    signatureHashOption,
    passwordSecret.file,
    passwordSecret.descriptor,
    keyEncodingOption,
    outputOption,
};

/// Who issues, to whom.
struct Issuing {
    IssuerInput issuer;
    RequestPtr request; ///< null for a certificate that its own key signs
    CertificateFields fields;
};

int ReadValidity(Invocation& invocation, CertificateFields& fields)
{
    const Arguments& arguments = invocation.arguments();
    if (arguments.has("days") && arguments.has(notAfterOption.name))
        return invocation.misuse("--days and --not-after are mutually exclusive");
    int exit = ReadTimeOption(invocation, notBeforeOption, fields.validFrom);
    if (exit == exitDone)
        exit = ReadTimeOption(invocation, notAfterOption, fields.validTo);
    if (exit != exitDone || arguments.has(notAfterOption.name))
        return exit;
    fields.validTo = DaysLater(fields.validFrom, arguments.number("days", usualDays));
    return fields.validTo.isValid() ? exitDone : invocation.misuse("--days is too long");
}

int ReadSerialOption(Invocation& invocation, element& serialNumber)
{
    const std::string text = invocation.arguments().value("serial");
    if (invocation.arguments().has("serial"))
        return ParseSerial(text, serialNumber) ? exitDone : invocation.misuse("not a serial number: " + text);
    serialNumber = NewSerialNumber();
    return serialNumber.isEmpty() ? invocation.refuse({}, LastReason("no random bytes are available")) : exitDone;
}

/// The key that signs its own certificate, or the request and its issuer. \return the exit code.
int ReadParties(Invocation& invocation, Issuing& issuing)
{
    const Arguments& arguments = invocation.arguments();
    const std::string file = arguments.operand(0);
    const bool isIssued = arguments.has(issuerOption.name) || arguments.has(issuerKeyOption.name);
    if (arguments.has("copy-extensions") && !isIssued)
        return invocation.misuse("--copy-extensions requires --ca");
    if (!isIssued) {
        KeyInput input;
        const int exit = ReadKey(invocation, {file}, KeyHalf::privateHalf, input);
        issuing.issuer.key = std::move(input.key);
        return exit;
    }
    int exit = ReadIssuer(invocation, {file}, issuing.issuer);
    if (exit == exitDone)
        exit = ReadRequest(invocation, file, issuing.request);
    if (exit == exitDone && issuing.request->verifySignature() != SignatureResult::good)
        exit = invocation.refuse(file, "the signature of the request is not good");
    return exit;
}

/// Those of the request that no option asks for.
void CopyExtensions(const CCryptoCertificateRequest& request, CCrypto_X509_ValueList& extensions)
{
    for (const auto& extension : request.extensions().values())
        if (extensions.find(extension->oid()) == nullptr)
            extensions.add(BuildExtension(extension->oid(), extension->content(), extension->isCritical()));
}

void AddUnlessThere(CCrypto_X509_ValueList& extensions, ExtensionPtr extension)
{
    if (extension != nullptr && extensions.find(extension->oid()) == nullptr)
        extensions.add(std::move(extension));
}

int FillFields(Invocation& invocation, Issuing& issuing)
{
    CertificateFields& fields = issuing.fields;
    CCrypto_X509_ValueList subject;
    int exit = ReadSubjectOption(invocation, issuing.request == nullptr, subject);
    if (exit == exitDone)
        exit = ReadCertificateExtensions(invocation, fields.extensions);
    if (exit != exitDone)
        return exit;
    const bool isNamed = invocation.arguments().has(subjectOption.name);
    fields.subject = isNamed ? subject.GetDerEncodedElement() : issuing.request->subject().GetDerEncodedElement();
    const CertificatePtr& issuer = issuing.issuer.certificate;
    fields.issuer = issuer != nullptr ? issuer->subject().GetDerEncodedElement() : fields.subject;
    const ICryptoKeyPair& key = issuing.request != nullptr ? *issuing.request->publicKey() : *issuing.issuer.key;
    fields.publicKeyInfo = issuing.request != nullptr ? issuing.request->publicKeyInfo() : key.publicKeyInfo();
    if (invocation.arguments().has("copy-extensions"))
        CopyExtensions(*issuing.request, fields.extensions);
    AddUnlessThere(fields.extensions, BuildSubjectKeyIdentifier(KeyIdentifierOf(key)));
    if (issuer != nullptr) {
        const ReadExtensions read = ReadAllExtensions(issuer->extensions(), ExtensionOwner::certificate);
        AddUnlessThere(fields.extensions,
                       BuildAuthorityKeyIdentifier(read.subjectKeyIdentifier.value_or(KeyIdentifierOf(*issuing.issuer.key))));
    }
    return exitDone;
}

int BuildCertificate(Invocation& invocation)
{
    Issuing issuing;
    int exit = ReadValidity(invocation, issuing.fields);
    if (exit == exitDone)
        exit = ReadSerialOption(invocation, issuing.fields.serialNumber);
    if (exit == exitDone)
        exit = ReadParties(invocation, issuing);
    if (exit == exitDone)
        exit = FillFields(invocation, issuing);
    if (exit != exitDone)
        return exit;
    StartReason();
    const element der = IssueCertificate(issuing.fields, *issuing.issuer.key, SignatureHash(invocation.arguments()));
    if (der.isEmpty())
        return invocation.refuse(invocation.arguments().operand(0), LastReason("no certificate can be issued"));
    return WriteObject(invocation, "CERTIFICATE", der);
}

} // namespace

const Command certBuildCommand = {"cert", "build",          "issues a certificate", "FILE",          1,
                                  1,      certBuildDetails, certBuildOptions,       BuildCertificate};

} // namespace ccrypto
