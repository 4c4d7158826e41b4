#pragma once

#include "asn1/parser/parser.h"
#include "tools/cryptotool/cli/command.h"
#include "tools/cryptotool/cli/console.h"

#include <string>

namespace ccrypto {

constexpr Option fromOption = {OptionKind::choice, 0, "from", "template|json|xml",
                               "what TEMPLATE-FILE is; detected by its first character otherwise"};

/// Reads a template: its text, or its JSON or XML form.
/// \param form "template", "json" or "xml"; empty to detect it: JSON begins with "{" or "[", XML with "<". Files that template
/// text includes are looked for in its own folder. \return false with `reason`; also for a document that describes no ASN.1.
bool ReadTemplate(Console& console, const std::string& name, std::string form, CCryptoParser& tree, std::string& reason);

} // namespace ccrypto
