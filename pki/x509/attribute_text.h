#pragma once

#include "core/text/element_type.h"
#include "core/text/string.h"

#include <cstdint>
#include <optional>
#include <span>

namespace ccrypto {

/// The characters of a value of a string type as UTF-8: ASCII of PrintableString, NumericString, IA5String and VisibleString,
/// UTF-8, two-byte characters with surrogate pairs of BMPString, four-byte ones of UniversalString, and Latin-1 of TeletexString,
/// which is what its writers mean. \return none for another type, and for octets that are no text of their type.
[[nodiscard]] std::optional<CCryptoString> AttributeText(ElementType type, std::span<const std::uint8_t> octets);

/// The text in the form in which it is compared: the mapping, folding and blanks of RFC 4518, 2.2 and 2.6, without normalisation.
///
/// - Left out: controls, soft hyphens, joiners, zero-width spaces, variation selectors, direction marks, tags, byte order marks.
/// - Blanks: tabs, line ends and all separators of Unicode become one blank where several stand together, none at either end.
/// - Case is folded in the Latin letters of Latin-1, Latin Extended-A and Latin Extended Additional, in Greek, Cyrillic, Armenian
///   and full-width Latin; sharp s becomes "ss". Other letters are compared as they are.
/// - Characters and their compositions (NFKC) are not made equal.
[[nodiscard]] CCryptoString PreparedText(const CCryptoString& text);

} // namespace ccrypto
