#pragma once

#include "pki/x509/x509_value.h"

#include <string>
#include <string_view>

namespace ccrypto {

/// Reads a name in the form in which names are printed: "CN=Signer, O=Example, C=FI", the last relative name first, values of one
/// relative name joined by "+", escapes of RFC 4514, 2.4. Types are the short names or dotted. Empty text is the empty name.
/// \return false with `problem`.
[[nodiscard]] bool ParseNameText(std::string_view text, CCrypto_X509_ValueList& name, std::string& problem);

} // namespace ccrypto
