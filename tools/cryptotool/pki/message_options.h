#pragma once

#include "core/text/element.h"
#include "tools/cryptotool/cli/command.h"
#include "tools/cryptotool/cli/invocation.h"

namespace ccrypto {

constexpr Option messageEncodingOption = {OptionKind::choice, 0, "outform", "der|pem", "DER, which is binary (der), or PEM"};

/// Writes a CMS message to where the options say. \return exitDone, or the exit code after the reason was printed.
int WriteMessage(Invocation& invocation, const element& message);

/// Writes bytes to a file, for its owner alone when they are `isSecret`. \return as above.
int WriteBytes(Invocation& invocation, const std::string& file, std::span<const std::uint8_t> bytes, bool isSecret);

} // namespace ccrypto
