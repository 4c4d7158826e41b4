#pragma once

#include "asn1/der/der_analyzer.h"
#include "asn1/tree/element_node.h"

#include <cstdint>
#include <span>

/// How bytes are decoded.
struct DerOptions {
    bool lenient = false;            ///< accept unknown tags, and keep what is decoded of a broken constructed element
    bool insideOctetStrings = false; ///< an OCTET STRING that holds DER becomes a tree
    bool insideBitStrings = false;   ///< the same for a BIT STRING
};

/// Decodes DER, and BER as far as lengths go (X.690), into the tree that a template of the same data would give.
///
/// Each element is a node of its type. Tag numbers, the unused bits of a BIT STRING and "CONSTRUCTED", where the content does not
/// tell, stand in its bracket list; a value shorter than 40 bytes stands in the short-value slot, a longer one and the children in
/// the content slot. Encoding the tree gives the same bytes for every DER input. Time and memory grow with the length of the input
/// alone.
class CCryptoDERParser {
public:
    static constexpr std::uint32_t deepestLevel = 128;
    static constexpr std::uint32_t shortValueLimit = 40;

    explicit CCryptoDERParser(const DerOptions& options = {}) : options_(options) {}

    /// \return the first element with the others as its siblings; null, logged, when the bytes do not decode or hold no element.
    ElementNodePtr Decode(std::span<const std::uint8_t> input);

    /// Why the last Decode failed, and at which offset.
    const char* reason() const { return reason_; }
    std::uint32_t reasonOffset() const { return reasonOffset_; }

private:
    class Decoder;

    DerOptions options_;
    const char* reason_ = "";
    std::uint32_t reasonOffset_ = 0;
};
