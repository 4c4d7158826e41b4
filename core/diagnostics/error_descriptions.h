#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace ccrypto {

using ErrorDescriptions = std::map<std::uint32_t, std::string>;

/// Reads the document that CCryptoErrorHandler::LoadXmlErrorsDesriptions describes: an element "settings" with items in it, of
/// which those whose names do not begin with "ErrorCode_" are ignored. Comments and processing instructions may stand anywhere, the
/// five named character references and the numeric ones in texts; document types and CDATA sections are refused. Elements are
/// nested at most 16 deep, and a text has at most 255 bytes. The XML reader of asn1 lies above this module, and its trees, entities
/// and attributes are more than this document needs. \return false, logged, when the document is not well-formed or is of another
/// kind.
[[nodiscard]] bool ParseErrorDescriptions(std::string_view document, ErrorDescriptions& descriptions);

/// Gives back what was loaded, so that a library that is unloaded leaves nothing allocated.
void ForgetErrorDescriptions();

/// The text loaded for `code`; empty when there is none.
[[nodiscard]] std::string ErrorDescription(std::uint32_t code);

} // namespace ccrypto
