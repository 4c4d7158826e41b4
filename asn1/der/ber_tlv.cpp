#include "asn1/der/ber_tlv.h"

#include "asn1/der/der_analyzer.h"
#include "asn1/der/der_parser.h"
#include "asn1/tree/item_list.h"
#include "asn1/tree/node_pool.h"
#include "core/diagnostics/auto_logger.h"

#include <algorithm>

using namespace ccrypto;

namespace ccrypto {

namespace {

constexpr std::uint8_t moreTagOctets = 0x80;
constexpr std::uint8_t tagNumberGroup = 0x7F;
constexpr std::uint8_t indefiniteLength = 0x80;
/// Lower tag numbers have a tag of one octet.
constexpr std::uint8_t minTagNumberOfTwoOctets = 0x1F;

class DataObjectDecoder {
public:
    explicit DataObjectDecoder(std::span<const std::uint8_t> input) : input_(input), pool_(input.size() / bytesPerObject) {}

    /// The objects from `position` to `end`. \return false with the reason.
    bool decodeList(std::size_t position, std::size_t end, std::uint32_t depth, ItemList& list);

    const char* reason() const { return reason_; }
    std::size_t offset() const { return offset_; }

private:
    static constexpr std::size_t bytesPerObject = 8;

    bool decodeObject(std::size_t& position, std::size_t end, std::uint32_t depth, ItemList& list);
    bool readTag(std::size_t& position, std::size_t end, std::span<const std::uint8_t>& tag);
    bool readLength(std::size_t& position, std::size_t end, std::size_t& length);
    bool isErased(std::size_t position) const;
    bool fail(const char* reason, std::size_t offset)
    {
        reason_ = reason;
        offset_ = offset;
        return false;
    }

    std::span<const std::uint8_t> input_;
    NodePool pool_;
    const char* reason_ = "";
    std::size_t offset_ = 0;
};

bool DataObjectDecoder::isErased(std::size_t position) const
{
    return std::ranges::all_of(input_.subspan(position), [](std::uint8_t byte) { return byte == 0xFF; });
}

bool DataObjectDecoder::decodeList(std::size_t position, std::size_t end, std::uint32_t depth, ItemList& list)
{
    if (depth >= BerTlv::maxDepth)
        return fail("The data is nested more than 32 levels deep", position);
    while (position < end) {
        if (input_[position] == 0x00) {
            ++position;
            continue;
        }
        if (depth == 0 && input_[position] == 0xFF && isErased(position))
            return true;
        if (!decodeObject(position, end, depth, list))
            return false;
    }
    return true;
}

bool DataObjectDecoder::decodeObject(std::size_t& position, std::size_t end, std::uint32_t depth, ItemList& list)
{
    std::span<const std::uint8_t> tag;
    std::size_t length = 0;
    if (!readTag(position, end, tag) || !readLength(position, end, length))
        return false;
    elementNode& object = list.add(pool_.make(ElementType::bytes));
    object.token().append(tag.data(), static_cast<std::uint32_t>(tag.size()));

    const std::size_t start = position;
    position += length;
    ItemList content;
    if ((tag[0] & derConstructedBit) != 0 && !decodeList(start, position, depth + 1, content))
        return false;
    if (content.first != nullptr) {
        object.set(LinkKind::content, std::move(content.first));
        return true;
    }
    // Constructed objects without content, too: without a value the node would stand for its octets alone.
    const bool isPrimitive = (tag[0] & derConstructedBit) == 0;
    const auto valueLength = static_cast<std::uint32_t>(isPrimitive ? length : 0);
    const LinkKind slot = valueLength < CCryptoDERParser::shortValueLimit ? LinkKind::shortValue : LinkKind::content;
    object.set(slot, pool_.make(ElementType::bytes))->token().append(input_.data() + start, valueLength);
    return true;
}

bool DataObjectDecoder::readTag(std::size_t& position, std::size_t end, std::span<const std::uint8_t>& tag)
{
    const std::size_t start = position;
    const std::uint8_t first = input_[position++];
    if ((first & derTagNumberMask) == derTagNumberMask) {
        std::uint8_t octet = moreTagOctets;
        while ((octet & moreTagOctets) != 0) {
            if (position == end)
                return fail("The data ends inside a tag", start);
            if (position - start == BerTlv::maxTagOctets)
                return fail("A tag of more than three octets", start);
            octet = input_[position++];
        }
        const std::uint8_t second = input_[start + 1];
        const bool isShortest = (second & moreTagOctets) != 0 ? (second & tagNumberGroup) != 0 : second >= minTagNumberOfTwoOctets;
        if (!isShortest)
            return fail("A tag of more octets than it needs", start);
    }
    tag = input_.subspan(start, position - start);
    return true;
}

bool DataObjectDecoder::readLength(std::size_t& position, std::size_t end, std::size_t& length)
{
    const std::size_t start = position;
    if (position == end)
        return fail("The data ends after a tag", start);
    length = input_[position++];
    if (length == indefiniteLength)
        return fail("An indefinite length", start);
    if (length > indefiniteLength) {
        const std::size_t octets = length & ~std::size_t{indefiniteLength};
        if (octets > BerTlv::maxLengthOctets)
            return fail("A length of more than four octets", start);
        if (octets > end - position)
            return fail("The data ends inside a length", start);
        length = 0;
        for (std::size_t octet = 0; octet < octets; ++octet)
            length = length << 8 | input_[position++];
    }
    return length <= end - position || fail("A length exceeds what remains of the data", start);
}

} // namespace

bool IsDataObject(const elementNode& node)
{
    return (node.type() == ElementType::bytes || node.type() == ElementType::integer) && node.value() != nullptr;
}

ElementNodePtr DecodeBerTlv(std::span<const std::uint8_t> input)
{
    CCryptoAutoLogger logger("ccrypto::DecodeBerTlv");
    if (input.size() > BerTlv::maxSize)
        return logger.fail(ElementNodePtr(), "The data is longer than 1 MiB");
    DataObjectDecoder decoder(input);
    ItemList objects;
    if (!decoder.decodeList(0, input.size(), 0, objects))
        return logger.fail(ElementNodePtr(), "%s (offset %u)", decoder.reason(), static_cast<unsigned>(decoder.offset()));
    if (objects.first == nullptr)
        return logger.fail(ElementNodePtr(), "The data holds no data object");
    logger.setResult(true);
    return std::move(objects.first);
}

} // namespace ccrypto
