#include "asn1/der/der_cursor.h"

#include "asn1/der/der_analyzer.h"

namespace ccrypto {

namespace {

constexpr std::uint8_t longLength = 0x80;
constexpr std::size_t maxLengthOctets = 4;

/// The octets that identifier and length take, and the length, of the element that `level` begins with; no octets for none.
struct Head {
    std::size_t octets = 0;
    std::size_t length = 0;
};

Head ReadHead(std::span<const std::uint8_t> level)
{
    if (level.size() < 2 || level[0] == 0 || (level[0] & derTagNumberMask) == derTagNumberMask)
        return {};
    if (level[1] < longLength)
        return {2, level[1]};
    const std::size_t count = level[1] - longLength;
    if (count == 0 || count > maxLengthOctets || level.size() < 2 + count || level[2] == 0)
        return {};
    std::size_t length = 0;
    for (std::size_t index = 0; index < count; ++index)
        length = length << 8 | level[2 + index];
    return length < longLength ? Head() : Head{2 + count, length};
}

} // namespace

DerItem DerCursor::readOther()
{
    const Head head = ReadHead(rest_);
    if (head.octets == 0 || head.length > rest_.size() - head.octets)
        return {};
    return take(head.octets, head.length);
}

std::optional<std::span<const std::uint8_t>> OnlyValue(std::span<const std::uint8_t> octets, std::uint8_t identifier)
{
    DerCursor cursor(octets);
    const DerItem item = cursor.read(identifier);
    if (!item || !cursor.atEnd())
        return std::nullopt;
    return item.value;
}

} // namespace ccrypto
