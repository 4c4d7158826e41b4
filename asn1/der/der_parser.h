#pragma once

#include "asn1/der/der_analyzer.h"
#include "asn1/tree/element_node.h"

#include <cstdint>
#include <span>

namespace ccrypto {

/// How bytes are decoded.
struct DerOptions {
    bool lenient = false;            ///< accept unknown tags, and keep what is decoded of a broken constructed element
    bool insideOctetStrings = false; ///< an OCTET STRING that holds DER becomes a tree
    bool insideBitStrings = false;   ///< the same for a BIT STRING
};

} // namespace ccrypto

/// Decodes DER, and BER as far as lengths go (X.690), into the tree that a template of the same data would give.
///
/// Each element is a node of its type. Tag numbers, the unused bits of a BIT STRING and "CONSTRUCTED", where the content does not
/// imply it, are in its bracket list; a value shorter than 40 bytes is in the short-value slot, a longer one and the children are
/// in the content slot. Encoding the tree gives the same bytes for every DER input. Time and memory grow with the length of the
/// input alone.
///
/// Identifiers are one octet: the octets 7F, BF and DF alone are tags with the number 31, which cannot be written. 00 or FF in the
/// place of an identifier ends a level, whatever follows there; an indefinite length may end with the input; a NULL may have a
/// value, which is not written. isDer() says whether nothing of that kind was met.
class CCryptoDERParser {
public:
    static constexpr std::uint32_t maxLevel = 128;
    static constexpr std::uint32_t shortValueLimit = 40;

    explicit CCryptoDERParser(const ccrypto::DerOptions& options = {}) : options_(options) {}

    /// \return the first element with the others as its siblings; null, logged, when the bytes do not decode or hold no element.
    [[nodiscard]] ccrypto::ElementNodePtr Decode(std::span<const std::uint8_t> input);

    /// Whether the tree decoded last encodes to the same octets; false after a failure. Data to be signed or compared is taken from
    /// the input where it is false.
    [[nodiscard]] bool isDer() const { return isDer_; }

    /// Whether the tree decoded last leaves out octets other than 00 and FF, which are padding, after the end of a level.
    [[nodiscard]] bool leavesOctets() const { return leavesOctets_; }

    /// Why the last Decode failed, and at which offset.
    const char* reason() const { return reason_; }
    std::uint32_t reasonOffset() const { return reasonOffset_; }

private:
    class Decoder;

    ccrypto::DerOptions options_;
    const char* reason_ = "";
    std::uint32_t reasonOffset_ = 0;
    bool isDer_ = false;
    bool leavesOctets_ = false;
};
