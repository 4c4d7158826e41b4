#pragma once

#include "asn1/parser/parser.h"
#include "tools/cryptotool/cli/console.h"

#include <string>
#include <string_view>
#include <vector>

namespace ccrypto {

/// Why a value of the command line cannot be used.
struct FillProblem {
    std::string file; ///< the file the value names, where it is at fault
    std::string reason;
};

/// Gives every placeholder of a name its value, as written after "NAME=":
///
/// - "#00ff" is bytes, "@file" the bytes of a file, "der:@file" the elements of one (DER, PEM or base64), "text:..." text
/// unchanged;
/// - anything else is a number where the template asks for one, in an INTEGER, an ENUMERATED and a bracket list; in a BOOLEAN it
///   is "TRUE" or "FALSE"; and text everywhere else.
///
/// \return false with `problem`.
bool FillPlaceholders(CCryptoParser& tree, std::string_view name, std::string_view value, Console& console, FillProblem& problem);

/// The file that such a value names, "-" for standard input; empty where it names none.
std::string_view FileOfValue(std::string_view value);

/// The names of placeholders that still stand where something is asked for, each once. Those inside OPTIONAL items do not count.
std::vector<std::string> UnfilledNames(const CCryptoParser& tree);

} // namespace ccrypto
