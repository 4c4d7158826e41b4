#pragma once

#include "asn1/tree/element_node.h"

#include <string_view>

namespace ccrypto {

/// The parsed form of a template that is a constant of the code. Each text is parsed at its first use and kept until the process
/// ends, so this is not for text from outside. Any thread may call it.
/// \return the first item; null, logged, for text that is not a template.
[[nodiscard]] const elementNode* ParsedTemplate(std::string_view text);

/// Parses a template that is put together at run time, such as a path. It is not kept, and "include" fails in it.
/// \return null, logged, for text that is not a template.
[[nodiscard]] ElementNodePtr ParseInlineTemplate(std::string_view text);

} // namespace ccrypto
