#pragma once

#include "tools/cryptotool/cli/command.h"

#include <string>

// What --help prints, all of it from the table of commands.

namespace ccrypto {

/// "cryptotool asn1 show"
std::string FullName(const Command& command);
std::string ProgramHelp();
std::string NounHelp(const Noun& noun);
std::string CommandHelp(const Command& command);

} // namespace ccrypto
