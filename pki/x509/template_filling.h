#pragma once

#include "core/text/element.h"

#include <cstdint>
#include <initializer_list>
#include <span>

namespace ccrypto {

/// What is put in the place of one name of a template.
struct TemplateFilling {
    const char* name;
    element value; ///< octets stand for themselves; for an empty value the innermost item with OPTIONAL around the name is left out
};

/// The DER of a template, a constant, with its names filled in. Nothing of a value is ever read as template text. \return empty,
/// logged, for a name that the template does not have and for what cannot be written.
[[nodiscard]] element FillTemplate(const char* templateText, std::initializer_list<TemplateFilling> fillings);

/// The SEQUENCE (DER) of elements, one after the other; of none, an empty element.
[[nodiscard]] element SequenceOfItems(const element& items);

/// The octets within the first element of `der`.
[[nodiscard]] element ContentOf(const element& der);

[[nodiscard]] inline element OctetsOfSpan(std::span<const std::uint8_t> octets)
{
    return {octets.data(), static_cast<std::uint32_t>(octets.size())};
}

} // namespace ccrypto
