#pragma once

#include "core/base/algorithm.h"
#include "pki/keys/key_pair.h"
#include "pki/x509/x509_value.h"
#include "tools/cryptotool/cli/command.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/keys/key_output.h"
#include "tools/cryptotool/pki/object_input.h"

#include <memory>
#include <string>

// What "cert build", "csr build", "crl build" and "ocsp respond" are told.

namespace ccrypto {

constexpr Option issuerOption = {OptionKind::text, 0, "ca", "FILE", "the issuer's certificate"};
constexpr Option issuerKeyOption = {OptionKind::text, 0, "ca-key", "FILE", "the issuer's private key"};
constexpr Option signatureHashOption = {OptionKind::choice, 0, "hash", "sha224|sha256|sha384|sha512",
                                        "the hash function of the signature (sha256)"};
constexpr Option subjectOption = {OptionKind::text, 0, "subject", "NAME", "\"CN=Signer, O=Example, C=FI\", as names are printed"};
constexpr Option alternativeNameOption = {
    OptionKind::text, 0, "san", "KIND:NAME", "an alternative name: email:, DNS:, IP:, URI: or UPN:", true};
constexpr Option isCaOption = {OptionKind::flag, 0, "is-ca", "",
                               "basic constraints of a CA, and key usage keyCertSign and cRLSign if no other is given"};
constexpr Option pathLengthOption = {OptionKind::number, 0, "path-length", "N", "with --is-ca: at most N intermediates"};
constexpr Option setKeyUsageOption = {OptionKind::text, 0, "key-usage", "NAME", "digitalSignature, nonRepudiation, ...", true};
constexpr Option setPurposeOption = {
    OptionKind::text, 0, "eku", "NAME|OID", "an extended key usage: serverAuth, emailProtection, OCSPSigning, ...", true};
constexpr Option setPolicyOption = {OptionKind::text, 0, "policy", "OID", "a certificate policy", true};
constexpr Option crlUrlOption = {OptionKind::text, 0, "crl-url", "URL", "where the revocation list is", true};
constexpr Option ocspUrlOption = {OptionKind::text, 0, "ocsp-url", "URL", "where the OCSP responder is", true};
constexpr Option issuerUrlOption = {OptionKind::text, 0, "issuer-url", "URL", "where the issuer's certificate is", true};
constexpr Option extensionOption = {OptionKind::text,
                                    0,
                                    "extension",
                                    "[critical,]OID=VALUE",
                                    "any extension, as DER: VALUE is #HEX or @FILE; see \"cryptotool asn1 build\"",
                                    true};

/// The hash that signatureHashOption names.
[[nodiscard]] algorithm::Id SignatureHash(const Arguments& arguments);

/// The name that subjectOption gives; `isNeeded` without it is misuse. \return exitDone or exitUsage.
int ReadSubjectOption(Invocation& invocation, bool isNeeded, CCrypto_X509_ValueList& subject);

/// Adds the extensions of a certificate that the options ask for. \return exitDone, or the exit code after the reason was printed.
int ReadCertificateExtensions(Invocation& invocation, CCrypto_X509_ValueList& extensions);
/// Those of extensionOption alone. \return as above.
int ReadPlainExtensions(Invocation& invocation, CCrypto_X509_ValueList& extensions);

/// An issuer with its key.
struct IssuerInput {
    CertificatePtr certificate;
    std::unique_ptr<ICryptoKeyPair> key;
};
/// Reads issuerOption and issuerKeyOption, whose keys must be the same. `otherFiles` are read besides. \return exitDone, or the
/// exit code after the reason was printed.
int ReadIssuer(Invocation& invocation, const std::vector<std::string>& otherFiles, IssuerInput& issuer);
/// The same for any two options of a certificate and its private key.
int ReadCertificateAndKey(Invocation& invocation, const Option& certificate, const Option& key,
                          const std::vector<std::string>& otherFiles, IssuerInput& owner);
/// The same, but the file of the certificate may hold further ones, which go to `others`.
int ReadChainAndKey(Invocation& invocation, const Option& certificate, const Option& key,
                    const std::vector<std::string>& otherFiles, IssuerInput& owner, std::vector<CertificatePtr>& others);

/// Writes an object as PEM with this label, or as DER, as keyEncodingOption and outputOption say. \return the exit code.
int WriteObject(Invocation& invocation, const char* label, const element& der);

} // namespace ccrypto
