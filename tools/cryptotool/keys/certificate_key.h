#pragma once

#include "core/text/element.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace ccrypto {

/// Whether the label of a PEM block says that it is a key, in whatever format: "RSA PRIVATE KEY".
bool IsKeyLabel(std::string_view label);

/// The SubjectPublicKeyInfo, DER, of an X.509 certificate (RFC 5280, 4.1) in DER, or of the first one in PEM that has no key of its
/// own. Nothing else of the certificate is looked at. \return empty for what is not a certificate.
element PublicKeyOfCertificate(std::span<const std::uint8_t> bytes);

} // namespace ccrypto
