#pragma once

#include "asn1/der/der_analyzer.h"
#include "asn1/der/der_parser.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

namespace ccrypto {

/// One line of an outline.
struct OutlineElement {
    enum class Kind {
        element,
        endOfContents, ///< the two octets that end an element of indefinite length
        notDecoded,    ///< octets that are not an element: padding, or what lenient reading ignored
    };

    Kind kind = Kind::element;
    std::uint32_t depth = 0;
    DerHeader header;
    bool isOpen = false;                 ///< elements follow from inside this one
    std::span<const std::uint8_t> value; ///< as much of it as there is
    /// The octets of the object identifier before the OCTET STRING that this element is inside of, as in an Extension of RFC 5280;
    /// empty elsewhere.
    std::span<const std::uint8_t> extension;

    std::uint32_t headerLength() const { return header.valueStart - header.start; }
    /// The data ends before the value does.
    bool isCut() const { return value.size() < header.length; }
    /// "SEQUENCE", "CONTEXT_SPECIFIC"; "UNIVERSAL" for a tag number without a type.
    std::string_view typeName() const;
    std::string_view className() const;
};

/// Goes through decoded data and the bytes it came from side by side, in the order of the bytes.
/// \param decoded null for data that does not decode: then the elements that are whole are decoded with `options`, and of the ones
///        that reach beyond the end of the data, each inside the one before, the header is visited.
/// \param levels how many levels are shown, 0 for all.
void WalkOutline(std::span<const std::uint8_t> input, const elementNode* decoded, const DerOptions& options, std::uint32_t levels,
                 const std::function<void(const OutlineElement&)>& visit);

} // namespace ccrypto
