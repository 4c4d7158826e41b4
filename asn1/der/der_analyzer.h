#pragma once

#include "core/text/element_type.h"

#include <cstdint>
#include <span>

namespace ccrypto {

/// Bits of an identifier octet (X.690, 8.1.2).
constexpr std::uint8_t derClassMask = 0xC0;
constexpr std::uint8_t derConstructedBit = 0x20;
constexpr std::uint8_t derTagNumberMask = 0x1F;

/// The type of a universal tag number; `none` for one without a type.
ElementType UniversalType(std::uint32_t tagNumber);

/// The identifier octet of an ASN.1 type: the tag number, or the class bits of the three tag classes. 0 for any other token.
std::uint8_t IdentifierOctet(ElementType type);

constexpr bool IsAsn1Type(ElementType type)
{
    return type >= ElementType::application && type <= ElementType::bmpString;
}
constexpr bool IsTagClass(ElementType type)
{
    return type >= ElementType::application && type <= ElementType::privateClass;
}
/// A type whose encoding is constructed whatever it holds (X.690, 8.9.1 and 8.11.1).
constexpr bool IsListType(ElementType type)
{
    return type == ElementType::sequence || type == ElementType::set;
}

/// The head of one element: what it is, and where its value lies.
struct DerHeader {
    std::uint8_t identifier = 0;
    bool indefinite = false;      ///< ends at end-of-contents octets
    bool canonical = true;        ///< the length is written as DER writes it (X.690, 10.1)
    std::uint32_t start = 0;      ///< offset of the identifier octet in the input
    std::uint32_t valueStart = 0; ///< offset of the first value octet
    std::uint32_t length = 0;     ///< of the value; all that remains of the level when indefinite

    bool constructed() const { return (identifier & derConstructedBit) != 0; }
    std::uint32_t tagNumber() const { return identifier & derTagNumberMask; }
    /// A tag class, a universal type, or `none` for a universal tag number without one.
    ElementType type() const;
};

} // namespace ccrypto

/// Reads the heads of elements in order from bytes it does not own. Bounds are checked here and nowhere else: a header
/// it gives lies inside the input with its whole value.
class CCryptoDERAnalyzer {
public:
    enum class Result {
        element,
        end,      ///< no input remains
        endOctet, ///< a 0x00 or 0xFF stands where an identifier should: end-of-contents octets, or padding
        failure,
    };

    /// \param lenient accepts an identifier at the very end as an element without a value.
    CCryptoDERAnalyzer(std::span<const std::uint8_t> input, bool lenient) : input_(input), lenient_(lenient) {}

    /// Reads the head of the element at `position` in a level that goes on to `end`. One whose length exceeds what remains fails
    /// after all of `header` was read.
    [[nodiscard]] Result read(std::uint32_t position, std::uint32_t end, ccrypto::DerHeader& header);

    std::span<const std::uint8_t> value(const ccrypto::DerHeader& header) const
    {
        return input_.subspan(header.valueStart, header.length);
    }
    std::span<const std::uint8_t> input() const { return input_; }
    /// Why the last read failed.
    const char* reason() const { return reason_; }

private:
    Result fail(const char* reason)
    {
        reason_ = reason;
        return Result::failure;
    }
    Result readLength(std::uint32_t end, ccrypto::DerHeader& header);

    std::span<const std::uint8_t> input_;
    const char* reason_ = "";
    bool lenient_;
};
