#pragma once

#include "asn1/der/pem.h"
#include "core/text/element.h"
#include "tools/cryptotool/cli/console.h"

#include <string>
#include <string_view>
#include <vector>

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

/// Whether the only control characters are those of plain text: DER has others within its first bytes.
bool IsText(std::string_view bytes);
/// Text of UTF-8 without the mark that some programs put in front of it.
std::string_view WithoutByteOrderMark(std::string_view text);

/// The DER of an input: every block of PEM, the bytes of base64 or hexadecimal text, or the bytes unchanged. \return false with
/// `reason`.
bool ReadBlocks(Console& console, const std::string& name, std::vector<DataBlock>& blocks, std::string& reason);

/// The same for bytes at hand, which are taken over.
bool SplitBlocks(element bytes, std::vector<DataBlock>& blocks, std::string& reason);

} // namespace ccrypto
