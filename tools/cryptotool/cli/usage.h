#pragma once

#include "tools/cryptotool/cli/command.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace ccrypto {

// What --help prints, all of it from the table of commands, in lines of at most helpWidth characters.

constexpr std::size_t helpWidth = 100;

/// "cryptotool asn1 show"
std::string FullName(const Command& command);
std::string ProgramHelp();
std::string NounHelp(const Noun& noun);
std::string CommandHelp(const Command& command);

/// "-o, --output FILE"
std::string OptionWords(const Option& option);
/// What it does, and whether it may be given more than once.
std::string OptionText(const Option& option);

/// Fills lines of at most `width` characters with the words of `text`; a line that begins with a blank stays unchanged, and an
/// empty one ends a paragraph. Each line ends with "\n".
std::string Filled(std::string_view text, std::size_t width);

} // namespace ccrypto
