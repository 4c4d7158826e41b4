#pragma once

#include "asn1/parser/parser.h"
#include "asn1/types/asn1_collections.h"
#include "core/text/element.h"

#include <string_view>

namespace ccrypto {

/// Moves `tree` into the placeholder's place, where CCryptoParser::fill_tree copies. \return false, logged, for null and for a
/// template without the placeholder.
[[nodiscard]] bool FillTree(CCryptoParser& parser, std::string_view name, ElementNodePtr tree);

/// The items inside one element of DER.
[[nodiscard]] bool FillContentOf(CCryptoParser& parser, std::string_view name, const element& der);

/// The members of a collection, without what is around them.
[[nodiscard]] bool FillMembers(CCryptoParser& parser, std::string_view name, CCryptoASN1Collection& collection);

} // namespace ccrypto
