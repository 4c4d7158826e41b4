#pragma once

#include "pki/x509/certificate.h"
#include "pki/x509/crl.h"
#include "tools/cryptotool/pki/report.h"

#include <span>
#include <string>

namespace ccrypto {

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
