#include "asn1/der/der_analyzer.h"

#include <array>

using namespace ccrypto;

namespace {

constexpr std::uint32_t tagNumberCount = 31;
constexpr std::uint32_t maxLengthOctets = 4;

constexpr ElementType none = ElementType::none;

/// Universal tag numbers 0 to 30 (X.680, 8.4).
constexpr ElementType universalTypes[tagNumberCount] = {
    none,
    ElementType::boolean,
    ElementType::asn1Integer,
    ElementType::bitString,
    ElementType::octetString,
    ElementType::asn1Null,
    ElementType::objectIdentifier,
    ElementType::objectDescriptor,
    ElementType::external,
    ElementType::real,
    ElementType::enumerated,
    none,
    ElementType::utf8String,
    none,
    none,
    none,
    ElementType::sequence,
    ElementType::set,
    ElementType::numericString,
    ElementType::printableString,
    ElementType::teletexString,
    ElementType::videotexString,
    ElementType::ia5String,
    ElementType::utcTime,
    ElementType::generalizedType,
    ElementType::graphicsString,
    ElementType::visibleString,
    ElementType::generalString,
    ElementType::universalString,
    none,
    ElementType::bmpString,
};

constexpr std::uint8_t applicationClass = 0x40;
constexpr std::uint8_t contextSpecificClass = 0x80;
constexpr std::uint8_t privateClass = 0xC0;

/// By type, from `application` on.
constexpr auto identifierOctets = [] {
    constexpr auto first = static_cast<std::uint32_t>(ElementType::application);
    std::array<std::uint8_t, static_cast<std::uint32_t>(ElementType::bmpString) - first + 1> octets{};
    octets[0] = applicationClass;
    octets[static_cast<std::uint32_t>(ElementType::contextSpecific) - first] = contextSpecificClass;
    octets[static_cast<std::uint32_t>(ElementType::privateClass) - first] = privateClass;
    for (std::uint8_t tagNumber = 0; tagNumber < tagNumberCount; ++tagNumber) {
        if (universalTypes[tagNumber] != none)
            octets[static_cast<std::uint32_t>(universalTypes[tagNumber]) - first] = tagNumber;
    }
    return octets;
}();

} // namespace

namespace ccrypto {

ElementType UniversalType(std::uint32_t tagNumber)
{
    return tagNumber < tagNumberCount ? universalTypes[tagNumber] : none;
}

std::uint8_t IdentifierOctet(ElementType type)
{
    const std::uint32_t index = static_cast<std::uint32_t>(type) - static_cast<std::uint32_t>(ElementType::application);
    return index < identifierOctets.size() ? identifierOctets[index] : std::uint8_t{0};
}

ElementType DerHeader::type() const
{
    switch (identifier & derClassMask) {
    case applicationClass:
        return ElementType::application;
    case contextSpecificClass:
        return ElementType::contextSpecific;
    case privateClass:
        return ElementType::privateClass;
    default:
        return UniversalType(tagNumber());
    }
}

} // namespace ccrypto

CCryptoDERAnalyzer::Result CCryptoDERAnalyzer::read(std::uint32_t position, std::uint32_t end, DerHeader& header)
{
    if (position >= end)
        return Result::end;
    header.identifier = input_[position];
    header.start = position;
    header.valueStart = position + 1;
    header.length = 0;
    header.indefinite = false;
    header.canonical = true;
    if (header.identifier == 0x00 || header.identifier == 0xFF)
        return Result::endOctet;
    if (header.valueStart == end) {
        header.canonical = false;
        return lenient_ ? Result::element : fail("The data ends after an identifier");
    }
    return readLength(end, header);
}

CCryptoDERAnalyzer::Result CCryptoDERAnalyzer::readLength(std::uint32_t end, DerHeader& header)
{
    const std::uint8_t first = input_[header.valueStart++];
    if (first < 0x80) {
        header.length = first;
    } else if (first == 0x80) {
        header.indefinite = true;
        header.canonical = false;
        header.length = end - header.valueStart;
    } else {
        const std::uint32_t octets = first & 0x7F;
        if (octets > maxLengthOctets)
            return fail("A length of more than four octets");
        if (octets > end - header.valueStart)
            return fail("The data ends inside a length");
        for (std::uint32_t octet = 0; octet < octets; ++octet)
            header.length = header.length << 8 | input_[header.valueStart++];
        header.canonical = header.length >= 0x80 && header.length >> (8 * (octets - 1)) != 0;
    }
    return header.length <= end - header.valueStart ? Result::element : fail("A length exceeds what remains of the data");
}
