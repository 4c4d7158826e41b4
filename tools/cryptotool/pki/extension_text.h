#pragma once

#include "pki/x509/x509_value.h"

#include <string>
#include <vector>

namespace ccrypto {

/// What an extension of a certificate, a list or a list's entry says, in lines: "CA, at most 0 intermediates". Hexadecimal digits
/// after "#" for one that is not known or does not have its structure.
[[nodiscard]] std::vector<std::string> ExtensionLines(const CCrypto_X509_Value& extension);

} // namespace ccrypto
