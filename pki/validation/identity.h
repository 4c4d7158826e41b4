#pragma once

#include "pki/validation/verdict.h"
#include "pki/x509/extensions.h"

#include <string_view>

// Whether a certificate answers for a host, an address or a mailbox that was asked for (RFC 9525, RFC 5280, 4.2.1.6). Only its
// alternative names count, never the subject. A finding that is not passed has the reason `name`.

namespace ccrypto {

/// \param host a DNS name, international labels in their ASCII form, with or without the final dot. Case does not matter. A name
/// of the certificate may begin with "*.": the wildcard stands for one whole label, and at least two labels must follow it.
[[nodiscard]] Finding CheckHost(const ReadExtensions& extensions, std::string_view host);

/// \param address "192.0.2.1", or an address of RFC 4291, 2.2, such as "2001:db8::1" or "::ffff:192.0.2.1"; compared by octets.
[[nodiscard]] Finding CheckIpAddress(const ReadExtensions& extensions, std::string_view address);

/// \param address "local@host": the local part is compared exactly, the host without regard to case.
[[nodiscard]] Finding CheckEmail(const ReadExtensions& extensions, std::string_view address);

} // namespace ccrypto
