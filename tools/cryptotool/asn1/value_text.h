#pragma once

#include "asn1/tree/element_node.h"
#include "core/text/element_type.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// Values of elements as a person reads them: numbers in decimal, text in quotes, other bytes in hexadecimal after "#".

namespace ccrypto {

/// How much of a value is shown, in bytes of it.
constexpr std::size_t shortText = 96;
constexpr std::size_t shortHex = 32;
constexpr std::size_t everything = static_cast<std::size_t>(-1);

/// The value octets of a primitive element of this type on one line; a longer value than `maxText` of text, or `maxHex` of other
/// bytes, ends in "..." and its length. Object identifiers are not handled.
std::string ValueText(ElementType type, std::span<const std::uint8_t> value, std::size_t maxText = everything,
                      std::size_t maxHex = everything);

/// The dotted text of an object identifier as X.690, 8.19 has it, where the trees of the library take the first two arcs from the
/// first octet alone: "2.999.1". Empty for octets that are not an object identifier, or have an arc of 2^64 or more.
std::string StandardDotted(std::span<const std::uint8_t> octets);

/// "2.5.4.3 commonName (CN)"; the name is left out where there is none.
std::string NamedOid(std::string_view dotted);

/// The octets in DER of a node that is a bare value; of an object identifier its encoding, not its dotted text.
element OctetsOfNode(const elementNode& node);

/// A node that is nothing but a value, read in the light of the element it stands in; or template text on several lines.
/// \param withSiblings whether the nodes after it belong to what is shown.
std::string NodeText(const elementNode& node, bool withSiblings);

} // namespace ccrypto
