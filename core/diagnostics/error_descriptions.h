#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace ccrypto {

using ErrorDescriptions = std::map<std::uint32_t, std::string>;

/// Reads the document that CCryptoErrorHandler::LoadXmlErrorsDesriptions describes: an element "settings" with the items in it;
/// items whose names do not begin with "ErrorCode_" are passed over. Comments and processing instructions may stand anywhere, the
/// five named character references and the numeric ones in texts; document types and CDATA sections are refused. Nesting is bounded
/// at 16, and each text at 255 bytes.
/// \return false, logged, when the document is not well-formed or is of another kind.
bool ParseErrorDescriptions(std::string_view document, ErrorDescriptions& descriptions);

/// Gives back what was loaded, so that a library that is unloaded leaves nothing behind.
void ForgetErrorDescriptions();

/// The text loaded for `code`; empty when there is none.
std::string ErrorDescription(std::uint32_t code);

} // namespace ccrypto
