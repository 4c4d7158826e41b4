#pragma once

#include "pki/x509/certificate.h"
#include "pki/x509/crl.h"
#include "tools/cryptotool/pki/object_input.h"
#include "tools/cryptotool/pki/report.h"

#include <functional>
#include <span>
#include <string>

namespace ccrypto {

/// Adds an object to the list, an item under the heading. \return false, logged, for octets that are none.
using AddObject = std::function<bool(const element& der, Report& list, const std::string& heading)>;
/// Prints all objects of a kind in the file that the first operand names. \param name of their list in JSON. \return the exit code.
[[nodiscard]] int ShowObjects(Invocation& invocation, ObjectKind kind, std::string_view name, const AddObject& add);

/// Everything that a certificate says.
void DescribeCertificate(const CCrypto_X509_Certificate& certificate, Report& report);
/// What a list says but for its entries.
void DescribeList(const CCrypto_X509_CRL& list, Report& report);
void DescribeEntry(const RevokedEntry& entry, Report& report);
/// As the member "extensions".
void DescribeExtensions(const CCrypto_X509_ValueList& extensions, Report& report);
/// "RSA 2048", "EC prime256v1", "ED25519".
[[nodiscard]] std::string KeyText(const ICryptoKeyPair& key);
/// "sha256WithRSAEncryption".
[[nodiscard]] std::string AlgorithmText(const CCryptoAlgorithmIdentifier& algorithm);
/// SHA-256 in hexadecimal digits.
[[nodiscard]] std::string Fingerprint(std::span<const std::uint8_t> octets);

} // namespace ccrypto
