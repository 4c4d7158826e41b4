#pragma once

#include "asn1/element_node.h"

#include <string_view>

/// The parsed form of a template. Each text is parsed once a process, at first use, by whichever thread comes first.
/// \return the first item, which lives as long as the process; null, logged, for text that is no template.
const elementNode* ParsedTemplate(std::string_view text);
