#include "pki/cms/ber_gathering.h"

#include "asn1/der/der_analyzer.h"
#include "asn1/der/der_cursor.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/cms/der_head.h"

#include <algorithm>
#include <vector>

namespace ccrypto {

namespace {

constexpr std::uint8_t constructedOctetString = 0x24;
constexpr std::uint8_t primitiveOctetString = 0x04;
constexpr std::uint8_t universalLists[] = {0x28, 0x30, 0x31};
constexpr std::uint8_t longLength = 0x80;
constexpr std::uint8_t signedDataOid[] = {0x06, 0x09, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x02};

/// What is written one after the other: the head of an element, or octets of the input.
struct OutputPart {
    std::uint8_t identifier = 0; ///< 0 for octets of the input
    std::uint32_t offset = 0;    ///< of the octets
    std::uint32_t length = 0;    ///< of the octets, or of the element's value
};

/// All that stand in DER, at whatever depth, as far as it can be read.
std::uint32_t CountElements(std::span<const std::uint8_t> der)
{
    std::uint32_t elements = 0;
    while (const DerItem item = DerCursor(der).read()) {
        ++elements;
        const bool isConstructed = (item.identifier & derConstructedBit) != 0;
        der = der.subspan(item.octets.size() - (isConstructed ? item.value.size() : 0));
    }
    return elements;
}

class BerGatherer {
public:
    explicit BerGatherer(std::span<const std::uint8_t> input) : input_(input) {}

    [[nodiscard]] bool read();
    [[nodiscard]] element write() const;
    [[nodiscard]] const char* reason() const { return reason_; }
    [[nodiscard]] std::uint32_t position() const { return position_; }

private:
    enum class Content {
        elements,
        pieces,   ///< of an OCTET STRING
        verbatim, ///< certificates or lists
    };
    struct Level {
        std::uint32_t end; ///< no octet of the level lies there or after
        bool isIndefinite;
        Content content;
        std::size_t head;         ///< among the parts; unused for pieces inside pieces
        std::uint32_t length = 0; ///< of the value as it is written
        std::uint32_t items = 0;
    };
    struct Head {
        std::uint8_t identifier = 0;
        bool isIndefinite = false;
        std::uint32_t length = 0;
    };

    bool readNext();
    bool readHead(Head& head);
    bool readVerbatim();
    bool open(const Head& head, std::uint32_t headSize);
    void close();
    void addOctets(std::uint32_t offset, std::uint32_t length);
    bool holdsCertificates(std::uint8_t identifier) const;
    bool count(std::uint32_t elements)
    {
        elements_ += elements;
        return elements_ <= maxMessageElements || fail("The message has more than 2,000,000 elements");
    }
    bool fail(const char* reason)
    {
        reason_ = reason;
        return false;
    }

    std::span<const std::uint8_t> input_;
    std::uint32_t position_ = 0;
    std::uint32_t elements_ = 0;
    bool isSame_ = true; ///< what is written is the input
    bool isSignedData_ = false;
    std::vector<Level> levels_;
    std::vector<OutputPart> parts_;
    const char* reason_ = "";
};

bool BerGatherer::read()
{
    if (input_.size() > maxMessageSize)
        return fail("The message is longer than 256 MiB");
    // A level around the message, which is its only item.
    levels_.push_back({static_cast<std::uint32_t>(input_.size()), false, Content::elements, 0});
    do {
        if (!readNext())
            return false;
    } while (levels_.size() > 1);
    const auto rest = input_.subspan(position_);
    if (!std::ranges::all_of(rest, [](std::uint8_t octet) { return octet == 0; }))
        return fail("Octets follow the end of the message");
    isSame_ &= rest.empty();
    return true;
}

bool BerGatherer::readNext()
{
    Level& level = levels_.back();
    if (level.isIndefinite && level.end - position_ >= 2 && input_[position_] == 0 && input_[position_ + 1] == 0) {
        position_ += 2;
        close();
        return true;
    }
    if (position_ == level.end) {
        if (level.isIndefinite || levels_.size() == 1)
            return fail("The message ends early");
        close();
        return true;
    }
    if (level.content == Content::verbatim)
        return readVerbatim();

    const std::uint32_t start = position_;
    Head head;
    if (!readHead(head))
        return false;
    const bool isConstructed = (head.identifier & derConstructedBit) != 0;
    if (level.content != Content::pieces && !count(1))
        return false;
    if (level.content == Content::pieces && (head.identifier & ~derConstructedBit) != primitiveOctetString)
        return fail("A piece of an OCTET STRING is not one");
    if (isConstructed)
        return open(head, position_ - start);
    ++level.items;
    // ContentInfo begins with the type of its content.
    if (levels_.size() == 2 && level.items == 1)
        isSignedData_ = std::ranges::equal(input_.subspan(start, position_ - start + head.length), signedDataOid);
    if (level.content == Content::pieces) {
        addOctets(position_, head.length);
    } else if (position_ - start == DerHeadSize(head.length)) {
        addOctets(start, position_ - start + head.length);
    } else {
        isSame_ = false;
        parts_.push_back({head.identifier, 0, head.length});
        level.length += DerHeadSize(head.length);
        addOctets(position_, head.length);
    }
    position_ += head.length;
    return true;
}

/// Identifier and length; the value lies within the level.
bool BerGatherer::readHead(Head& head)
{
    const std::uint32_t end = levels_.back().end;
    if (end - position_ < 2)
        return fail("The message ends early");
    head.identifier = input_[position_++];
    if (head.identifier == 0)
        return fail("The end of contents stands where an element should");
    if ((head.identifier & derTagNumberMask) == derTagNumberMask)
        return fail("A tag number is above 30");
    const std::uint8_t first = input_[position_++];
    head.length = first;
    if (first == longLength) {
        head.isIndefinite = true;
        head.length = end - position_;
        return (head.identifier & derConstructedBit) != 0 || fail("A primitive element has an indefinite length");
    }
    if (first > longLength) {
        std::uint64_t length = 0;
        for (std::uint32_t count = first - longLength; count != 0; --count) {
            if (position_ == end || length > maxMessageSize)
                return fail("A length is longer than the message");
            length = length << 8 | input_[position_++];
        }
        if (length > maxMessageSize)
            return fail("A length is longer than the message");
        head.length = static_cast<std::uint32_t>(length);
    }
    return head.length <= end - position_ || fail("A length is longer than the message");
}

bool BerGatherer::readVerbatim()
{
    const Level& level = levels_.back();
    const DerItem item = DerCursor(input_.subspan(position_, level.end - position_)).read();
    if (!item)
        return fail("A certificate or list in the message is not DER");
    if (!count(CountElements(item.octets)))
        return false;
    const auto length = static_cast<std::uint32_t>(item.octets.size());
    addOctets(position_, length);
    position_ += length;
    return true;
}

/// Of SignedData (RFC 5652, 5.1), after its version, algorithms and content: [0] and [1].
bool BerGatherer::holdsCertificates(std::uint8_t identifier) const
{
    constexpr std::size_t levelsAround = 4; // the message, ContentInfo, its content, SignedData
    constexpr std::uint32_t itemsBefore = 3;
    return isSignedData_ && levels_.size() == levelsAround && levels_.back().items >= itemsBefore &&
           (identifier == 0xA0 || identifier == 0xA1);
}

bool BerGatherer::open(const Head& head, std::uint32_t headSize)
{
    if (levels_.size() > maxMessageDepth)
        return fail("The message is nested more than 128 levels deep");
    const bool isString = head.identifier == constructedOctetString;
    const bool isUniversal = (head.identifier & derClassMask) == 0;
    if (isUniversal && !isString && std::ranges::find(universalLists, head.identifier) == std::end(universalLists))
        return fail("A string other than an OCTET STRING is cut into pieces");
    Content content = isString ? Content::pieces : Content::elements;
    if (holdsCertificates(head.identifier))
        content = Content::verbatim;
    ++levels_.back().items;
    if (levels_.back().content != Content::pieces)
        parts_.push_back({isString ? primitiveOctetString : head.identifier, 0, 0});
    levels_.push_back({position_ + head.length, head.isIndefinite, content, parts_.size() - 1});
    isSame_ &= !head.isIndefinite && !isString && headSize == DerHeadSize(head.length);
    return true;
}

void BerGatherer::close()
{
    const Level closed = levels_.back();
    levels_.pop_back();
    Level& around = levels_.back();
    around.length += closed.length;
    if (around.content == Content::pieces)
        return;
    parts_[closed.head].length = closed.length;
    around.length += DerHeadSize(closed.length);
}

void BerGatherer::addOctets(std::uint32_t offset, std::uint32_t length)
{
    levels_.back().length += length;
    if (length == 0)
        return;
    if (!parts_.empty() && parts_.back().identifier == 0 && parts_.back().offset + parts_.back().length == offset)
        parts_.back().length += length;
    else
        parts_.push_back({0, offset, length});
}

element BerGatherer::write() const
{
    if (isSame_)
        return {input_.data(), static_cast<std::uint32_t>(input_.size())};
    element output;
    output.reserve(levels_.back().length);
    for (const OutputPart& part : parts_) {
        if (part.identifier == 0)
            output.append(input_.data() + part.offset, part.length);
        else
            AppendDerHead(output, part.identifier, part.length);
    }
    return output;
}

} // namespace

element GatherBer(std::span<const std::uint8_t> message)
{
    CCryptoAutoLogger logger("GatherBer");
    BerGatherer gatherer(message);
    if (!gatherer.read())
        return logger.fail(element(), "%s (offset %u)", gatherer.reason(), gatherer.position());
    logger.setResult(true);
    return gatherer.write();
}

} // namespace ccrypto
