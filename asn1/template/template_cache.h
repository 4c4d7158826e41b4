#pragma once

#include "asn1/tree/element_node.h"

#include <string_view>

namespace ccrypto {

/// The parsed form of a template that is a constant of the code. Each text is parsed once a process, at first use, by whichever
/// thread comes first, and kept: a text that comes from elsewhere does not belong here.
/// \return the first item, which lives as long as the process; null, logged, for text that is no template.
const elementNode* ParsedTemplate(std::string_view text);

/// A template out of text that is put together at run time, such as a path: it is not kept, and "include" fails in it.
/// \return null, logged, for text that is no template.
ElementNodePtr ParseInlineTemplate(std::string_view text);

} // namespace ccrypto
