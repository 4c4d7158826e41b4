#pragma once

#include "core/text/element.h"

#include <string>
#include <string_view>

namespace ccrypto {

enum class TextDecoding {
    none,    ///< the text is neither
    decoded, ///< the bytes are there
    broken,  ///< base64 or hexadecimal, but not well-formed
};

/// Decodes text in base64, or in hexadecimal: digits in either case, with blanks, line ends, colons, commas and "0x" between bytes.
/// Text of hexadecimal digits and blanks alone may be base64 too; it is taken as hexadecimal unless only base64 gives whole DER
/// elements. \param reason for `broken`.
[[nodiscard]] TextDecoding DecodeText(std::string_view text, element& bytes, std::string& reason);

} // namespace ccrypto
