#pragma once

#include "asn1/parser/parser.h"
#include "core/text/element.h"

#include <string_view>

namespace ccrypto {

/// Moves `tree` into the placeholder's place, where CCryptoParser::fill_tree copies. \return false, logged, for null and for a
/// template without the placeholder.
[[nodiscard]] bool FillTree(CCryptoParser& parser, std::string_view name, ElementNodePtr tree);

/// The items inside one element of DER.
[[nodiscard]] bool FillContentOf(CCryptoParser& parser, std::string_view name, const element& der);

/// The element that the octets are.
[[nodiscard]] bool FillDer(CCryptoParser& parser, std::string_view name, const element& der);

/// A template to be filled.
[[nodiscard]] CCryptoParser TemplateToFill(const char* templateText);

} // namespace ccrypto
