#pragma once

#include "core/text/element.h"
#include "core/text/string.h"

#include <array>
#include <compare>
#include <cstdint>
#include <span>
#include <string_view>

class elementNode;

namespace ccrypto {

/// An object identifier by its content octets (X.690, 8.19), which are compared: unlike dotted text they are unique for each
/// identifier.
class Oid {
public:
    /// None; equal to no identifier that was read.
    Oid() = default;
    explicit Oid(std::span<const std::uint8_t> octets);
    /// \return none, logged, for text that is no identifier.
    [[nodiscard]] static Oid FromDotted(std::string_view dotted);
    /// \return none for a node that is not an OBJECT IDENTIFIER, and for null.
    [[nodiscard]] static Oid OfNode(const elementNode* node);

    [[nodiscard]] bool isNone() const { return octets_.isEmpty(); }
    [[nodiscard]] std::span<const std::uint8_t> octets() const { return octets_.bytes(); }
    /// Hexadecimal digits when the octets have no dotted form; empty for none.
    [[nodiscard]] CCryptoString dotted() const;

    bool operator==(const Oid& other) const;
    bool operator==(std::span<const std::uint8_t> octets) const;
    std::strong_ordering operator<=>(const Oid& other) const;

private:
    element octets_;
};

} // namespace ccrypto
