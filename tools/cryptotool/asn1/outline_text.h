#pragma once

#include "tools/cryptotool/asn1/outline.h"
#include "tools/cryptotool/cli/color.h"

#include <cstdint>
#include <string>

namespace ccrypto {

/// The heading of a list of elements, with its line end.
std::string OutlineHeading();
/// One element on a line of its own: offset, header length, length ("inf" for an indefinite one), "cons" or "prim", type and value,
/// and what the value means: the name of an object identifier, a readable time, the address of a GeneralName.
std::string OutlineLine(const OutlineElement& line, const Paint& paint);
/// The same as a JSON object without a line end.
std::string OutlineJson(const OutlineElement& line);

} // namespace ccrypto
