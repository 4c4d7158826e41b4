#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ccrypto {

struct Command;
struct Option;

/// Scripts by which a shell completes the words of a command line, made from the table of commands.
std::string BashCompletion();
std::string ZshCompletion();

/// "asn1 show"
std::string WordsOf(const Command& command);
/// The nouns that have verbs, and the commands without, each once, in the order of --help.
std::vector<std::string_view> FirstWords();
/// The verbs of a noun.
std::vector<std::string_view> VerbsOf(std::string_view noun);
/// Whether the value of an option names a file.
bool TakesFile(const Option& option);

} // namespace ccrypto
