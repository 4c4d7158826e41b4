#pragma once

#include "core/text/element.h"
#include "core/text/string.h"

#include <string>
#include <string_view>
#include <vector>

namespace ccrypto {

/// One piece of an input: DER, and what stood around it.
struct DataBlock {
    std::string label; ///< of a PEM block, "CERTIFICATE"; empty for DER and base64
    element bytes;
};

/// "PEM block 2 (CERTIFICATE)", counted from 1.
std::string PemBlockName(std::size_t number, std::string_view label);

/// Whether a line of the text begins a PEM block (RFC 7468).
bool HasPemBlock(std::string_view text);

/// Takes every block out of the text; text between them is ignored, as are headers of a block. \return false, logged, at a block
/// that is damaged, after those before it, and for text without one.
[[nodiscard]] bool ReadPem(std::string_view text, std::vector<DataBlock>& blocks);

/// One block, its base64 in lines of 64.
CCryptoString WritePem(std::string_view label, const element& bytes);
/// Whether a label can stand in a PEM block: printable ASCII, no "-" at either end or twice in a row.
bool IsPemLabel(std::string_view label);

/// Whether there is nothing but base64 digits, padding and blanks.
bool IsBase64Text(std::string_view text);

/// Base64 text (RFC 4648, 4) with blanks in any place, the padding there in full or not at all. \return false, logged, otherwise.
[[nodiscard]] bool DecodeBase64(std::string_view text, element& bytes);

} // namespace ccrypto
